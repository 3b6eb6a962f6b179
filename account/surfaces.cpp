// Surfaces: which of their faces carry their tag in the end, and why the others do not.
#include "account/account.h"
#include "account/records.h"

#include "abaqus/abqfind.h"

#include <algorithm>
#include <map>

namespace account {

namespace {

using deck::Face;
using deck::Label;
using deck::MeshSurface;
using deck::SurfaceRow;

struct HeldSurface {
    std::vector<const ABQSurface *> records;
    std::vector<int> cards;
    bool whole = true;
};

HeldSurface FindRecords(const Account &account, const MeshSurface &surface, const ByLine<ABQSurface> &byLine) {
    HeldSurface held;
    for (const deck::Origin &origin : surface.origins) {
        const deck::SurfaceTable &table = account.deck.scopes[static_cast<std::size_t>(origin.scope)].surfaces;
        for (const int s : table.surfaces[static_cast<std::size_t>(origin.index)].sections) {
            const int card = table.sections[static_cast<std::size_t>(s)].card;
            const CardUse &use = account.cards[static_cast<std::size_t>(card)];
            const ABQSurface *record = use.state == CardState::held ? byLine.Find(use.readLine) : nullptr;
            held.whole = held.whole && record != nullptr && !use.flawed;
            if (record != nullptr && (held.cards.empty() || held.cards.back() != card)) {
                held.records.push_back(record);
                held.cards.push_back(card);
            }
        }
    }
    return held;
}

// The row of the surface at that line, with its table; null when it has none.
const SurfaceRow *RowAt(const Account &account, const MeshSurface &surface, int line,
                        const deck::SurfaceTable **table) {
    for (const deck::Origin &origin : surface.origins) {
        *table = &account.deck.scopes[static_cast<std::size_t>(origin.scope)].surfaces;
        for (const int s : (*table)->surfaces[static_cast<std::size_t>(origin.index)].sections) {
            const deck::SurfaceSection &section = (*table)->sections[static_cast<std::size_t>(s)];
            const auto first = (*table)->rows.begin() + static_cast<std::ptrdiff_t>(section.firstRow);
            const auto last = first + static_cast<std::ptrdiff_t>(section.rowCount);
            const auto found =
                std::lower_bound(first, last, line, [](const SurfaceRow &row, int at) { return row.line < at; });
            if (found != last && found->line == line && section.file == 0) {
                return &*found;
            }
        }
    }
    return nullptr;
}

// Tag of the element's face as the reader has it; -1 when it has no such element or face.
int TagOfFace(Account *account, int number, int side) {
    const ABQPlace place = ABQFind(&account->cells.finder, number);
    if (place.block == -1) {
        return -1;
    }
    const ABQCellBlock *block = account->cells.blocks[static_cast<std::size_t>(place.block)];
    if (side < 0 || side >= ABQNumFaces(block->type)) {
        return -1;
    }
    return block->i2FaceTag == nullptr ? 0 : block->i2FaceTag[side][place.row];
}

struct Fate {
    std::map<int, long long> taken;      // by the tag of the surface that has them
    std::map<int, long long> lostByLine; // by the row that names them
    std::map<int, long long> shellSides;
    long long held = 0; // they carry the surface's tag
};

Fate FateOf(Account *account, const MeshSurface &surface, const HeldSurface &held) {
    Fate fate;
    const auto mine = [&](int tag) {
        return std::any_of(held.records.begin(), held.records.end(),
                           [&](const ABQSurface *record) { return record->tag == tag; });
    };
    for (const Face &face : surface.faces) {
        const int tag =
            TagOfFace(account, account->mesh.elementNumber[static_cast<std::size_t>(face.element)], face.side);
        const bool itsOwn = tag > 0 && mine(tag);
        fate.held += itsOwn ? 1 : 0;
        if (itsOwn || !HoldsElement(*account, face.element) ||
            std::binary_search(account->lostRows.begin(), account->lostRows.end(), face.line)) {
            continue;
        }
        if (face.side < 0) {
            ++fate.shellSides[face.line];
        } else if (tag > 0) {
            ++fate.taken[tag];
        } else {
            ++fate.lostByLine[face.line];
        }
    }
    return fate;
}

const char *LabelWord(Label label) {
    static constexpr const char *kWords[] = {"S1", "S2", "S3", "S4", "S5",   "S6",
                                             "E1", "E2", "E3", "E4", "SPOS", "SNEG"};
    return label >= Label::s1 && label <= Label::sneg ? kWords[static_cast<int>(label)] : "the element";
}

// Whether the element set is known to the reader by a section of its own: true also when one was refused, which has
// been told.
bool HasOwnSection(const Account &account, const std::string &name) {
    for (const deck::Scope &scope : account.deck.scopes) {
        const int at = FindSet(scope.elementSets, name);
        if (at == -1) {
            continue;
        }
        for (const int s : scope.elementSets.sets[static_cast<std::size_t>(at)].sections) {
            if (scope.elementSets.sections[static_cast<std::size_t>(s)].source != deck::SetSource::elements) {
                return true;
            }
        }
    }
    return false;
}

// Faces that a row means and that have no tag.
void TellLostFaces(Account *account, const MeshSurface &surface, int line, long long count) {
    const deck::SurfaceTable *table = nullptr;
    const SurfaceRow *row = RowAt(*account, surface, line, &table);
    if (row == nullptr) {
        return; // it stands in an included file
    }
    const deck::Place place = PlaceOfLine(line);
    const std::string name = row->member < 0 ? table->names[static_cast<std::size_t>(-1 - row->member)] : "";
    if (row->label == Label::none) {
        Add(account, Code::noLabel, place, {surface.plain}, count);
    } else if (name.find('.') != std::string::npos && FindSet(account->deck.scopes[0].elementSets, name) == -1) {
        Add(account, Code::instanceMember, place, {name}, count);
    } else if (!name.empty() && !HasOwnSection(*account, name)) {
        Add(account, Code::sectionSet, place, {surface.plain, name}, count);
    } else if (name.empty()) {
        Add(account, Code::differs, place, {std::to_string(count) + " faces of surface " + surface.plain + " are lost"},
            count);
    }
}

// Whether the element set that lost rows name is held as it is meant; else what became of it has been told.
bool IsWhole(const Account &account, const std::string &name) {
    for (const deck::Scope &scope : account.deck.scopes) {
        const int at = FindSet(scope.elementSets, name);
        if (at == -1) {
            continue;
        }
        const deck::Set &set = scope.elementSets.sets[static_cast<std::size_t>(at)];
        for (const int s : set.sections) {
            const deck::SetSection &section = scope.elementSets.sections[static_cast<std::size_t>(s)];
            const CardUse &use = account.cards[static_cast<std::size_t>(section.card)];
            if (use.state != CardState::held || use.flawed || set.sections.size() > 1) {
                return false;
            }
        }
    }
    return true;
}

// The reader's surfaces by their tag.
struct TaggedSurfaces {
    std::vector<const ABQSurface *> surfaces;
    std::vector<long long> counts; // faces that carry the tag

    explicit TaggedSurfaces(const ByLine<ABQSurface> &byLine)
        : surfaces(byLine.all().size() + 1, nullptr), counts(byLine.all().size() + 1, 0) {
        for (const ABQSurface *record : byLine.all()) {
            surfaces[static_cast<std::size_t>(record->tag)] = record;
        }
        for (const ABQCellBlock *block = ABQDeck()->cellBlocks; block != nullptr; block = block->next) {
            for (int f = 0; block->i2FaceTag != nullptr && f < ABQNumFaces(block->type); ++f) {
                for (int e = 0; e < block->count; ++e) {
                    ++counts[static_cast<std::size_t>(block->i2FaceTag[f][e])];
                }
            }
        }
    }
};

// Whether the element sets that the surface's rows name are held as they are meant.
bool AreSetsWhole(const Account &account, const MeshSurface &surface) {
    for (const deck::Origin &origin : surface.origins) {
        const deck::SurfaceTable &table = account.deck.scopes[static_cast<std::size_t>(origin.scope)].surfaces;
        for (const int s : table.surfaces[static_cast<std::size_t>(origin.index)].sections) {
            const deck::SurfaceSection &section = table.sections[static_cast<std::size_t>(s)];
            for (std::size_t r = section.firstRow; r < section.firstRow + section.rowCount; ++r) {
                const int member = table.rows[r].member;
                if (member < 0 && !IsWhole(account, table.names[static_cast<std::size_t>(-1 - member)])) {
                    return false;
                }
            }
        }
    }
    return true;
}

// Faces that carry the surface's tag though the deck does not mean them, where nothing that has been told explains it.
void TellStrangers(Account *account, const MeshSurface &surface, const HeldSurface &held, long long nHeld,
                   const TaggedSurfaces &tagged) {
    long long nTagged = 0;
    for (const ABQSurface *record : held.records) {
        nTagged += tagged.counts[static_cast<std::size_t>(record->tag)];
    }
    const int first = PlaceOf(*account, held.cards.front()).line;
    const int last = LastLineOf(*account, held.cards.back());
    const bool explained = !held.whole || account->mayBeMissing || account->rowsTakenIn ||
                           !account->clashingElements.empty() ||
                           DeckSays(*account, deck::Code::missingMember, first, last) ||
                           DeckSays(*account, deck::Code::unknownLabel, first, last) ||
                           DeckSays(*account, deck::Code::badNumber, first, last);
    if (nTagged > nHeld && !explained && AreSetsWhole(*account, surface)) {
        Add(account, Code::differs, PlaceOf(*account, held.cards.front()),
            {"the translator puts more faces into surface " + surface.plain + " than the deck does"}, nTagged - nHeld);
    }
}

void TellFate(Account *account, const MeshSurface &surface, const HeldSurface &held, const TaggedSurfaces &tagged) {
    const Fate fate = FateOf(account, surface, held);
    TellStrangers(account, surface, held, fate.held, tagged);
    for (const auto &[tag, count] : fate.taken) {
        Add(account, Code::overlapFaces, PlaceOf(*account, held.cards.back()),
            {surface.plain, tagged.surfaces[static_cast<std::size_t>(tag)]->name}, count);
    }
    for (const auto &[line, count] : fate.shellSides) {
        const deck::SurfaceTable *table = nullptr;
        const SurfaceRow *row = RowAt(*account, surface, line, &table);
        Add(account, Code::shellSide, PlaceOfLine(line), {row != nullptr ? LabelWord(row->label) : "a row"}, count);
    }
    for (const auto &[line, count] : fate.lostByLine) {
        const deck::SurfaceTable *table = nullptr;
        const SurfaceRow *row = RowAt(*account, surface, line, &table);
        const bool byName = row != nullptr && row->member < 0;
        const std::string name = byName ? table->names[static_cast<std::size_t>(-1 - row->member)] : "";
        if (byName && row->label != Label::none && HasOwnSection(*account, name) && IsWhole(*account, name)) {
            Add(account, Code::differs, PlaceOfLine(line),
                {std::to_string(count) + " faces of surface " + surface.plain + " are lost"}, count);
        } else {
            TellLostFaces(account, surface, line, count);
        }
    }
}

} // namespace

void AccountSurfaces(Account *account) {
    const ByLine<ABQSurface> byLine(ABQDeck()->surfaces);
    const TaggedSurfaces tagged(byLine);
    for (const MeshSurface &surface : account->mesh.surfaces) {
        if (account->placedHeld[static_cast<std::size_t>(surface.placed)] == 0) {
            continue;
        }
        const HeldSurface held = FindRecords(*account, surface, byLine);
        if (held.records.empty()) {
            continue;
        }
        const int first = PlaceOf(*account, held.cards.front()).line;
        const int last = LastLineOf(*account, held.cards.back());
        if (surface.faces.empty() && held.whole && !DeckSays(*account, deck::Code::missingMember, first, last) &&
            !DeckSays(*account, deck::Code::unknownLabel, first, last)) {
            Add(account, Code::emptySurface, PlaceOf(*account, held.cards.front()), {surface.plain});
        }
        TellFate(account, surface, held, tagged);
    }
}

} // namespace account
