// Surfaces: which of their faces carry their tag in the end, and why the others do not.
#include "account/account.h"
#include "account/records.h"

#include "abaqus/abqfind.h"
#include "deck/text.h"

#include <algorithm>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

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

// A row of a surface, with its table.
struct RowOfTable {
    const SurfaceRow *row;
    const deck::SurfaceTable *table;
    bool operator<(const RowOfTable &other) const {
        return row->line < other.row->line;
    }
    // What it names; empty where that is a number.
    std::string Name() const {
        return row->member < 0 ? table->names[static_cast<std::size_t>(-1 - row->member)] : "";
    }
};

// The surface's rows in the deck's own file, by line.
std::vector<RowOfTable> RowsOf(const Account &account, const MeshSurface &surface) {
    std::vector<RowOfTable> rows;
    for (const deck::Origin &origin : surface.origins) {
        const deck::SurfaceTable &table = account.deck.scopes[static_cast<std::size_t>(origin.scope)].surfaces;
        for (const int s : table.surfaces[static_cast<std::size_t>(origin.index)].sections) {
            const deck::SurfaceSection &section = table.sections[static_cast<std::size_t>(s)];
            for (std::size_t r = section.firstRow; r < section.firstRow + section.rowCount && section.file == 0; ++r) {
                rows.push_back({&table.rows[r], &table});
            }
        }
    }
    std::stable_sort(rows.begin(), rows.end());
    return rows;
}

// The first of the rows that stands on the line, or null: it stands in an included file.
const RowOfTable *RowAt(const std::vector<RowOfTable> &rows, int line) {
    const auto found = std::lower_bound(rows.begin(), rows.end(), line,
                                        [](const RowOfTable &row, int at) { return row.row->line < at; });
    return found != rows.end() && found->row->line == line ? &*found : nullptr;
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
    std::vector<int> tags;
    for (const ABQSurface *record : held.records) {
        tags.push_back(record->tag);
    }
    std::sort(tags.begin(), tags.end());
    for (const Face &face : surface.faces) {
        const int tag =
            TagOfFace(account, account->mesh.elementNumber[static_cast<std::size_t>(face.element)], face.side);
        const bool itsOwn = tag > 0 && std::binary_search(tags.begin(), tags.end(), tag);
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

// What is known of the element sets of one name, in all scopes.
struct NamedSets {
    bool own =
        false; // the reader knows one by a section of its own: or would, were that not refused, which has been told
    bool whole = true; // all are held as they are meant; else what became of them has been told
};

using SetsByName = std::unordered_map<std::string, NamedSets>;

SetsByName NameSets(const Account &account) {
    SetsByName byName;
    for (const deck::Scope &scope : account.deck.scopes) {
        for (const deck::Set &set : scope.elementSets.sets) {
            NamedSets &named = byName[set.name];
            named.whole = named.whole && set.sections.size() <= 1;
            for (const int s : set.sections) {
                const deck::SetSection &section = scope.elementSets.sections[static_cast<std::size_t>(s)];
                const CardUse &use = account.cards[static_cast<std::size_t>(section.card)];
                named.own = named.own || section.source != deck::SetSource::elements;
                named.whole = named.whole && use.state == CardState::held && !use.flawed;
            }
        }
    }
    return byName;
}

NamedSets FindNamed(const SetsByName &byName, const std::string &name) {
    const auto found = byName.find(name);
    return found == byName.end() ? NamedSets{} : found->second;
}

// Faces that a row means and that have no tag.
void TellLostFaces(Account *account, const MeshSurface &surface, const RowOfTable &row, bool hasOwnSection,
                   long long count) {
    const deck::Place place = PlaceOfLine(row.row->line);
    const std::string name = row.Name();
    if (row.row->label == Label::none) {
        Add(account, Code::noLabel, place, {deck::Clip(surface.plain)}, count);
    } else if (name.find('.') != std::string::npos && FindSet(account->deck.scopes[0].elementSets, name) == -1) {
        Add(account, Code::instanceMember, place, {deck::Clip(name)}, count);
    } else if (!name.empty() && !hasOwnSection) {
        Add(account, Code::sectionSet, place, {deck::Clip(surface.plain), deck::Clip(name)}, count);
    } else if (name.empty()) {
        Add(account, Code::differs, place,
            {std::to_string(count) + " faces of surface " + deck::Clip(surface.plain) + " are lost"}, count);
    }
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
bool AreSetsWhole(const Account &account, const MeshSurface &surface, const SetsByName &sets) {
    for (const deck::Origin &origin : surface.origins) {
        const deck::SurfaceTable &table = account.deck.scopes[static_cast<std::size_t>(origin.scope)].surfaces;
        for (const int s : table.surfaces[static_cast<std::size_t>(origin.index)].sections) {
            const deck::SurfaceSection &section = table.sections[static_cast<std::size_t>(s)];
            for (std::size_t r = section.firstRow; r < section.firstRow + section.rowCount; ++r) {
                const int member = table.rows[r].member;
                if (member < 0 && !FindNamed(sets, table.names[static_cast<std::size_t>(-1 - member)]).whole) {
                    return false;
                }
            }
        }
    }
    return true;
}

// Faces that carry the surface's tag though the deck does not mean them, where nothing that has been told explains it.
void TellStrangers(Account *account, const MeshSurface &surface, const HeldSurface &held, long long nHeld,
                   const TaggedSurfaces &tagged, const SetsByName &sets) {
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
    if (nTagged > nHeld && !explained && AreSetsWhole(*account, surface, sets)) {
        Add(account, Code::differs, PlaceOf(*account, held.cards.front()),
            {"the translator puts more faces into surface " + deck::Clip(surface.plain) + " than the deck does"},
            nTagged - nHeld);
    }
}

void TellFate(Account *account, const MeshSurface &surface, const HeldSurface &held, const TaggedSurfaces &tagged,
              const SetsByName &sets) {
    const Fate fate = FateOf(account, surface, held);
    TellStrangers(account, surface, held, fate.held, tagged, sets);
    for (const auto &[tag, count] : fate.taken) {
        Add(account, Code::overlapFaces, PlaceOf(*account, held.cards.back()),
            {deck::Clip(surface.plain), tagged.surfaces[static_cast<std::size_t>(tag)]->name}, count);
    }
    if (fate.shellSides.empty() && fate.lostByLine.empty()) {
        return;
    }
    const std::vector<RowOfTable> rows = RowsOf(*account, surface);
    for (const auto &[line, count] : fate.shellSides) {
        const RowOfTable *row = RowAt(rows, line);
        Add(account, Code::shellSide, PlaceOfLine(line), {row != nullptr ? LabelWord(row->row->label) : "a row"},
            count);
    }
    for (const auto &[line, count] : fate.lostByLine) {
        const RowOfTable *row = RowAt(rows, line);
        if (row == nullptr) {
            continue;
        }
        const NamedSets named = FindNamed(sets, row->Name());
        if (row->row->member < 0 && row->row->label != Label::none && named.own && named.whole) {
            Add(account, Code::differs, PlaceOfLine(line),
                {std::to_string(count) + " faces of surface " + deck::Clip(surface.plain) + " are lost"}, count);
        } else {
            TellLostFaces(account, surface, *row, named.own, count);
        }
    }
}

} // namespace

void AccountSurfaces(Account *account) {
    const ByLine<ABQSurface> byLine(ABQDeck()->surfaces);
    const TaggedSurfaces tagged(byLine);
    const SetsByName sets = NameSets(*account);
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
            Add(account, Code::emptySurface, PlaceOf(*account, held.cards.front()), {deck::Clip(surface.plain)});
        }
        TellFate(account, surface, held, tagged, sets);
    }
}

} // namespace account
