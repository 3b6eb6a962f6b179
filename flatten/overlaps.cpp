// Dividing items among those who claim them.
#include "flatten/overlaps.h"

#include "flatten/names.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <utility>

namespace flatten {

namespace {

constexpr int kNobody = -1;

// Claims in the order in which they take their items.
std::vector<int> Priorities(const std::vector<Claim> &claims, bool smallest) {
    std::vector<int> order(claims.size());
    std::iota(order.begin(), order.end(), 0);
    if (smallest) {
        std::stable_sort(order.begin(), order.end(), [&](int a, int b) {
            return claims[static_cast<std::size_t>(a)].size < claims[static_cast<std::size_t>(b)].size;
        });
    }
    return order;
}

void GiveToOne(Making *m, Code code, int nItems, bool smallest, std::vector<Claim> *claims) {
    std::vector<int> owner(static_cast<std::size_t>(nItems), kNobody);
    std::map<std::pair<int, int>, long long> taken; // by the claim that loses items and the one that has them
    for (const int c : Priorities(*claims, smallest)) {
        std::vector<int> &items = (*claims)[static_cast<std::size_t>(c)].items;
        std::size_t kept = 0;
        for (const int item : items) {
            int &who = owner[static_cast<std::size_t>(item)];
            if (who == kNobody) {
                who = c;
                items[kept++] = item;
            } else {
                ++taken[{c, who}];
            }
        }
        items.resize(kept);
    }
    for (const auto &[pair, count] : taken) {
        const Claim &loser = (*claims)[static_cast<std::size_t>(pair.first)];
        m->Find(code, loser.place, {loser.name, (*claims)[static_cast<std::size_t>(pair.second)].name}, count);
    }
}

// The part of several claims, as a claim.
Claim PartOf(const std::vector<Claim> &claims, const std::vector<int> &who) {
    Claim part = claims[static_cast<std::size_t>(who[0])];
    part.items.clear();
    for (std::size_t i = 1; i < who.size(); ++i) {
        part.name += "+" + claims[static_cast<std::size_t>(who[i])].name;
        part.plain += "+" + claims[static_cast<std::size_t>(who[i])].plain;
        part.kind = "";
    }
    return part;
}

void Divide(Making *m, int nItems, std::vector<Claim> *claims) {
    const Holders holders(nItems, *claims);
    std::map<std::vector<int>, std::vector<int>> parts; // items by who holds them: A, A+B, B
    for (std::size_t c = 0; c < claims->size(); ++c) {
        if ((*claims)[c].items.empty()) {
            parts[{static_cast<int>(c)}];
        }
    }
    for (int i = 0; i < nItems; ++i) {
        std::vector<int> who = holders.Of(static_cast<std::size_t>(i));
        if (!who.empty()) {
            parts[std::move(who)].push_back(i);
        }
    }
    std::vector<Claim> divided;
    for (auto &[who, items] : parts) {
        divided.push_back(PartOf(*claims, who));
        divided.back().items = std::move(items);
        if (who.size() > 1) {
            m->Find(Code::overlapDivided, divided.back().place, {divided.back().name},
                    static_cast<long long>(divided.back().items.size()));
        }
    }
    claims->swap(divided);
}

} // namespace

Holders::Holders(int nItems, const std::vector<Claim> &all) : first_(static_cast<std::size_t>(nItems) + 1, 0) {
    for (const Claim &claim : all) {
        for (const int item : claim.items) {
            ++first_[static_cast<std::size_t>(item) + 1];
        }
    }
    std::partial_sum(first_.begin(), first_.end(), first_.begin());
    claims_.resize(first_.back());
    std::vector<std::size_t> next = first_;
    for (std::size_t c = 0; c < all.size(); ++c) {
        for (const int item : all[c].items) {
            claims_[next[static_cast<std::size_t>(item)]++] = static_cast<int>(c);
        }
    }
}

std::vector<int> Holders::Of(std::size_t item) const {
    return {claims_.begin() + static_cast<std::ptrdiff_t>(first_[item]),
            claims_.begin() + static_cast<std::ptrdiff_t>(first_[item + 1])};
}

void ResolveOverlaps(Making *m, Code code, int nItems, std::vector<Claim> *claims) {
    if (m->options.overlaps == Overlaps::split) {
        Divide(m, nItems, claims);
    } else {
        GiveToOne(m, code, nItems, m->options.overlaps == Overlaps::smallest, claims);
    }
}

std::string NameOne(Making *m, Names *names, const Claim &claim, unsigned where) {
    std::string name = names->Give(PlainName(claim.name, where));
    if (name != claim.name) {
        m->Find(Code::nameReplaced, claim.place, {claim.name, name});
    }
    if (m->wantsChanges && claim.kind[0] != '\0' && name != claim.plain) {
        m->flat.changes.push_back({claim.kind, claim.instance, claim.plain, name});
    }
    return name;
}

std::vector<std::string> NameClaims(Making *m, const std::vector<Claim> &claims, unsigned where) {
    Names names;
    std::vector<std::string> given;
    given.reserve(claims.size());
    for (const Claim &claim : claims) {
        given.push_back(NameOne(m, &names, claim, where));
    }
    return given;
}

} // namespace flatten
