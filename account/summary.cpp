// The two summaries of a report.
#include "account/summary.h"

#include "account/records.h"

#include "abaqus/abqdeck.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace account {

namespace {

// Sets that only the ELSET of *ELEMENT lines or a generator makes are groups, not sets.
bool HasOwnSection(const Account &account, const deck::MeshSet &set) {
    for (const deck::Origin &origin : set.origins) {
        const deck::SetTable &table = account.deck.scopes[static_cast<std::size_t>(origin.scope)].elementSets;
        for (const int s : table.sets[static_cast<std::size_t>(origin.index)].sections) {
            const deck::SetSource source = table.sections[static_cast<std::size_t>(s)].source;
            if (source != deck::SetSource::elements && source != deck::SetSource::generated) {
                return true;
            }
        }
    }
    return false;
}

std::vector<Count> CountGroups(const Account &account) {
    const deck::Mesh &mesh = account.mesh;
    std::vector<Count> groups;
    for (const deck::CellGroup &group : mesh.groups) {
        groups.push_back({group.name, "", 0});
    }
    std::set<std::pair<int, int>> named; // groups and their types
    for (const deck::ElementRun &run : mesh.elementRuns) {
        int lastGroup = -1;
        for (std::size_t e = run.first; e < run.first + run.count; ++e) {
            const int group = mesh.group[e];
            if (group < 0) {
                continue;
            }
            Count &count = groups[static_cast<std::size_t>(group)];
            ++count.count;
            if (group != lastGroup && named.emplace(group, run.type).second) {
                count.type +=
                    (count.type.empty() ? "" : "+") + account.deck.types[static_cast<std::size_t>(run.type)].name;
            }
            lastGroup = group;
        }
    }
    return groups;
}

// Nodes that elements use, by the tag that they carry. The others go, and their tag with them.
std::vector<long long> CountTaggedNodes(const Account &account, std::size_t nTags) {
    std::vector<long long> counts(nTags + 1, 0);
    if (nTags == 0) {
        return counts;
    }
    const HeldNodes &nodes = *account.heldNodes;
    std::vector<char> used(nodes.numbers().size(), 0);
    for (const ABQCellBlock *block = ABQDeck()->cellBlocks; block != nullptr; block = block->next) {
        for (int k = 0; k < block->nNodes && block->count > 0; ++k) {
            for (int e = 0; e < block->count; ++e) {
                const int at = nodes.PositionOf(block->i2Conn[k][e]);
                if (at != -1) {
                    used[static_cast<std::size_t>(at)] = 1;
                }
            }
        }
    }
    for (std::size_t i = 0; i < used.size(); ++i) {
        if (used[i] != 0) {
            ++counts[static_cast<std::size_t>(nodes.TagOf(nodes.numbers()[i]))];
        }
    }
    return counts;
}

std::vector<long long> CountTaggedFaces(const ABQModel &model, std::size_t nTags) {
    std::vector<long long> counts(nTags + 1, 0);
    for (const ABQCellBlock *block = model.cellBlocks; block != nullptr; block = block->next) {
        for (int f = 0; block->i2FaceTag != nullptr && f < ABQNumFaces(block->type); ++f) {
            for (int e = 0; e < block->count; ++e) {
                ++counts[static_cast<std::size_t>(block->i2FaceTag[f][e])];
            }
        }
    }
    return counts;
}

// Numbers that an element set lists, each once; they ascend since the deck was resolved.
long long CountListed(const ABQSet &set) {
    long long count = 0;
    for (int i = 0; i < set.count; ++i) {
        count += i == 0 || set.numbers[i] != set.numbers[i - 1] ? 1 : 0;
    }
    return count;
}

// The reader's cell blocks do not keep the name of their type; the keyword lines of held sections have it.
std::map<long long, std::string> TypesByLine(const Account &account) {
    std::map<long long, std::string> types;
    for (std::size_t c = 0; c < account.cards.size(); ++c) {
        if (account.deck.cards[c].keyword == deck::Keyword::element && account.cards[c].state == CardState::held) {
            const deck::Parameter *type = FindParameter(account.deck.cards[c], "TYPE");
            types[account.cards[c].readLine] = type != nullptr ? type->value : "";
        }
    }
    return types;
}

} // namespace

Summary SumUpMeaning(const Account &account) {
    const deck::Mesh &mesh = account.mesh;
    Summary summary;
    summary.dimension = mesh.dimension;
    summary.nodes = static_cast<long long>(mesh.nodeNumber.size());
    summary.elements = static_cast<long long>(mesh.elementNumber.size());
    for (const deck::MeshSet &set : mesh.nodeSets) {
        summary.nodeSets.push_back({set.name, "", static_cast<long long>(set.members.size())});
    }
    for (const deck::MeshSet &set : mesh.elementSets) {
        if (HasOwnSection(account, set)) {
            summary.elementSets.push_back({set.name, "", static_cast<long long>(set.members.size())});
        }
    }
    for (const deck::MeshSurface &surface : mesh.surfaces) {
        const std::size_t members = surface.ofNodes ? surface.nodes.size() : surface.faces.size();
        (surface.ofNodes ? summary.nodeSets : summary.surfaces)
            .push_back({surface.name, "", static_cast<long long>(members)});
    }
    summary.cellGroups = CountGroups(account);
    return summary;
}

Summary SumUpReading(const Account &account) {
    const ABQModel &model = *ABQDeck();
    Summary summary;
    summary.dimension = model.nDim;
    for (const ABQNodeBlock *block = model.nodeBlocks; block != nullptr; block = block->next) {
        summary.nodes += block->count;
    }
    const ByLine<ABQSet> nodeSets(model.nodeSets);
    const std::vector<long long> members = CountTaggedNodes(account, nodeSets.all().size());
    for (const ABQSet *set : nodeSets.all()) {
        summary.nodeSets.push_back({set->name, "", members[static_cast<std::size_t>(set->tag)]});
    }
    const ByLine<ABQSet> cellSets(model.cellSets);
    for (const ABQSet *set : cellSets.all()) {
        summary.elementSets.push_back({set->name, "", CountListed(*set)});
    }
    const ByLine<ABQSurface> surfaces(model.surfaces);
    const std::vector<long long> faces = CountTaggedFaces(model, surfaces.all().size());
    for (const ABQSurface *surface : surfaces.all()) {
        summary.surfaces.push_back({surface->name, "", faces[static_cast<std::size_t>(surface->tag)]});
    }
    std::map<long long, std::string> types = TypesByLine(account);
    const ByLine<ABQCellBlock> blocks(model.cellBlocks);
    for (const ABQCellBlock *block : blocks.all()) {
        summary.elements += block->count;
        summary.cellGroups.push_back({block->name, types[block->nLine], block->count});
    }
    return summary;
}

} // namespace account
