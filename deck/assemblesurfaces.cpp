// Surfaces: rows to faces, free faces of rows without label, and combined surfaces.
#include "deck/assembling.h"

#include <algorithm>
#include <array>
#include <set>
#include <utility>

namespace deck {

namespace {

// The corners of a face, ascending, -1 behind them: the same for every element that has it.
using FaceKey = std::array<int, kMostFaceCorners>;

// Faces of the elements that rows without label name, and how many elements of the mesh have each.
struct FaceCounts {
    std::vector<FaceKey> keys; // ascending, each once
    std::vector<int> counts;

    int Of(const FaceKey &key) const {
        const auto at = std::lower_bound(keys.begin(), keys.end(), key);
        return at == keys.end() || *at != key ? 0 : counts[static_cast<std::size_t>(at - keys.begin())];
    }
};

const ElementRun &RunOf(const Mesh &mesh, int element) {
    return mesh.elementRuns[static_cast<std::size_t>(RunOfElement(mesh, element))];
}

const ElementType &TypeOf(const Assembling &a, const ElementRun &run) {
    return a.deck->types[static_cast<std::size_t>(run.type)].type;
}

FaceKey KeyOf(const Mesh &mesh, const ElementRun &run, Shape shape, int element, int side) {
    const FaceRow &row = FaceOf(shape, side);
    const int *nodes = NodesOfElement(mesh, run, element);
    FaceKey key;
    key.fill(-1);
    for (std::size_t i = 0; i < static_cast<std::size_t>(row.nCorners); ++i) {
        const int node = nodes[row.corner[i]];
        std::size_t at = i;
        for (; at > 0 && key[at - 1] > node; --at) {
            key[at] = key[at - 1];
        }
        key[at] = node;
    }
    return key;
}

// Faces of solids, edges of plane elements; a shell's edges are no faces to be free.
int FreeSidesOf(const ElementType &type) {
    return type.shell ? 0 : FacesOf(type.shape);
}

void AddKeys(const Assembling &a, int element, std::vector<FaceKey> *keys) {
    const ElementRun &run = RunOf(*a.mesh, element);
    const ElementType &type = TypeOf(a, run);
    for (int side = 0; side < FreeSidesOf(type); ++side) {
        keys->push_back(KeyOf(*a.mesh, run, type.shape, element, side));
    }
}

// The side that a label names on an element of that type. False where it names none.
bool SideOf(const ElementType &type, Label label, int *side) {
    const int at = static_cast<int>(label);
    if (label == Label::spos || label == Label::sneg) {
        *side = label == Label::spos ? kSidePositive : kSideNegative;
        return type.shell;
    }
    if (label >= Label::e1 && label <= Label::e4) {
        *side = at - static_cast<int>(Label::e1);
        return type.shell && *side < FacesOf(type.shape);
    }
    *side = at;
    // The translator's own shells are plane triangles to it, with S labels on their edges.
    const bool takesS = !type.shell || type.kind == TypeClass::cell;
    return label >= Label::s1 && label <= Label::s6 && takesS && *side < FacesOf(type.shape);
}

// What a row of a surface of elements means: some elements, of its own or of a set.
struct RowMeaning {
    const int *elements = nullptr;
    std::size_t count = 0;
    int one = -1;
    int set = -1;     // position of a set
    std::string word; // as written
};

bool MeanRow(const Assembling &a, const MeshSurface &surface, const SurfaceTable &table, const SurfaceRow &row,
             RowMeaning *meaning) {
    *meaning = RowMeaning{};
    int placed = surface.placed;
    int number = row.member;
    if (row.member < 0) {
        meaning->word = table.names[static_cast<std::size_t>(-1 - row.member)];
        const Named named = FindNamed(a, placed, &PlacedNames::elementSets, meaning->word);
        if (named.index >= 0) {
            const std::vector<int> &members = a.mesh->elementSets[static_cast<std::size_t>(named.index)].members;
            meaning->elements = members.data();
            meaning->count = members.size();
            meaning->set = named.index;
            return true;
        }
        placed = named.placed;
        number = named.number;
    } else {
        meaning->word = std::to_string(number);
    }
    meaning->one = placed < 0 ? -1 : FindElement(a, placed, number);
    meaning->elements = &meaning->one;
    meaning->count = 1;
    return meaning->one >= 0;
}

// Calls f(table, section, row) for each row of the surface's sections.
template <class F> void ForRows(const Assembling &a, const MeshSurface &surface, F f) {
    for (const Origin &origin : surface.origins) {
        const SurfaceTable &table = a.deck->scopes[static_cast<std::size_t>(origin.scope)].surfaces;
        for (const int at : table.surfaces[static_cast<std::size_t>(origin.index)].sections) {
            const SurfaceSection &section = table.sections[static_cast<std::size_t>(at)];
            for (std::size_t row = section.firstRow; row < section.firstRow + section.rowCount; ++row) {
                f(table, section, table.rows[row]);
            }
        }
    }
}

// Elements that rows without label name.
std::vector<char> UnlabelledElements(const Assembling &a) {
    std::vector<char> wanted;
    std::vector<char> seen(a.mesh->elementSets.size(), 0);
    for (const MeshSurface &surface : a.mesh->surfaces) {
        ForRows(a, surface, [&](const SurfaceTable &table, const SurfaceSection &section, const SurfaceRow &row) {
            RowMeaning meaning;
            if (section.kind != SurfaceKind::element || row.label != Label::none ||
                !MeanRow(a, surface, table, row, &meaning)) {
                return;
            }
            if (meaning.set >= 0 && std::exchange(seen[static_cast<std::size_t>(meaning.set)], 1) != 0) {
                return;
            }
            wanted.resize(a.mesh->elementNumber.size(), 0);
            for (std::size_t i = 0; i < meaning.count; ++i) {
                wanted[static_cast<std::size_t>(meaning.elements[i])] = 1;
            }
        });
    }
    return wanted;
}

FaceCounts CountFaces(const Assembling &a) {
    FaceCounts faces;
    const std::vector<char> wanted = UnlabelledElements(a);
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        if (wanted[i] != 0) {
            AddKeys(a, static_cast<int>(i), &faces.keys);
        }
    }
    std::sort(faces.keys.begin(), faces.keys.end());
    faces.keys.erase(std::unique(faces.keys.begin(), faces.keys.end()), faces.keys.end());
    faces.counts.resize(faces.keys.size(), 0);
    std::vector<FaceKey> keys;
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        keys.clear();
        AddKeys(a, static_cast<int>(i), &keys);
        for (const FaceKey &key : keys) {
            const auto at = std::lower_bound(faces.keys.begin(), faces.keys.end(), key);
            if (at != faces.keys.end() && *at == key) {
                ++faces.counts[static_cast<std::size_t>(at - faces.keys.begin())];
            }
        }
    }
    return faces;
}

// Faces that only one of these elements has.
long long CountFreeAmong(const Assembling &a, const RowMeaning &meaning) {
    std::vector<FaceKey> keys;
    for (std::size_t i = 0; i < meaning.count; ++i) {
        AddKeys(a, meaning.elements[i], &keys);
    }
    std::sort(keys.begin(), keys.end());
    long long n = 0;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        const bool before = i > 0 && keys[i - 1] == keys[i];
        const bool behind = i + 1 < keys.size() && keys[i + 1] == keys[i];
        n += before || behind ? 0 : 1;
    }
    return n;
}

void AddFreeFaces(Assembling *a, const FaceCounts &counts, const RowMeaning &meaning, const Place &place,
                  MeshSurface *surface) {
    long long nFree = 0;
    for (std::size_t i = 0; i < meaning.count; ++i) {
        const int element = meaning.elements[i];
        const ElementRun &run = RunOf(*a->mesh, element);
        const ElementType &type = TypeOf(*a, run);
        if (type.shell) {
            surface->faces.push_back({element, kSideBoth, place.line});
        }
        for (int side = 0; side < FreeSidesOf(type); ++side) {
            if (counts.Of(KeyOf(*a->mesh, run, type.shape, element, side)) == 1) {
                surface->faces.push_back({element, side, place.line});
                ++nFree;
            }
        }
    }
    const long long among = CountFreeAmong(*a, meaning);
    if (among > nFree) {
        a->Find(Code::noLabel, place, {Clip(meaning.word), Clip(surface->plain)}, among - nFree);
    }
}

// Sets and labels that rows of a surface have named.
using Seen = std::set<std::pair<int, int>>;

void AddElementRow(Assembling *a, const FaceCounts &counts, const SurfaceTable &table, const SurfaceRow &row,
                   const Place &place, Seen *seen, MeshSurface *surface) {
    RowMeaning meaning;
    if (!MeanRow(*a, *surface, table, row, &meaning)) {
        a->Find(Code::missingMember, place, {Clip(meaning.word), Clip(surface->plain)});
        return;
    }
    constexpr std::size_t kFreeFace = 8; // looking for free faces takes as long as so many named ones
    if (!a->MayTake(row.label == Label::none ? kFreeFace * meaning.count : meaning.count, place, surface->plain) ||
        (meaning.set >= 0 && !seen->emplace(meaning.set, static_cast<int>(row.label)).second)) {
        return; // the same set and label again bring nothing
    }
    if (row.label == Label::none) {
        AddFreeFaces(a, counts, meaning, place, surface);
        return;
    }
    const std::size_t before = surface->faces.size();
    int side = 0;
    for (std::size_t i = 0; i < meaning.count; ++i) {
        if (SideOf(TypeOf(*a, RunOf(*a->mesh, meaning.elements[i])), row.label, &side)) {
            surface->faces.push_back({meaning.elements[i], side, row.line});
        }
    }
    if (surface->faces.size() == before && meaning.count > 0) { // elements of other types in the set have none
        constexpr const char *kWords[] = {"S1", "S2", "S3", "S4", "S5", "S6", "E1", "E2", "E3", "E4", "SPOS", "SNEG"};
        const std::string label = row.labelWord >= 0 ? table.names[static_cast<std::size_t>(row.labelWord)]
                                                     : kWords[static_cast<std::size_t>(row.label)];
        a->Find(Code::unknownLabel, place, {label, Clip(surface->plain)});
    }
}

bool IsBefore(const Face &p, const Face &q) {
    return p.element != q.element ? p.element < q.element : p.side < q.side;
}

bool IsSame(const Face &p, const Face &q) {
    return p.element == q.element && p.side == q.side;
}

// Each face once, where it stands first.
void KeepFirst(std::vector<Face> *faces) {
    const auto notBefore = [](const Face &p, const Face &q) { return !IsBefore(p, q); };
    if (std::adjacent_find(faces->begin(), faces->end(), notBefore) == faces->end()) {
        return;
    }
    std::vector<std::size_t> order(faces->size());
    for (std::size_t i = 0; i < order.size(); ++i) {
        order[i] = i;
    }
    std::sort(order.begin(), order.end(), [&](std::size_t i, std::size_t j) {
        const Face &p = (*faces)[i];
        const Face &q = (*faces)[j];
        return IsSame(p, q) ? i < j : IsBefore(p, q);
    });
    std::vector<char> again(faces->size(), 0);
    for (std::size_t i = 1; i < order.size(); ++i) {
        again[order[i]] = IsSame((*faces)[order[i - 1]], (*faces)[order[i]]) ? 1 : 0;
    }
    std::size_t to = 0;
    for (std::size_t i = 0; i < faces->size(); ++i) {
        if (again[i] == 0) {
            (*faces)[to++] = (*faces)[i];
        }
    }
    faces->resize(to);
}

// The surface's rows; those of combined ones are left for later.
void FillSurface(Assembling *a, const FaceCounts &counts, MeshSurface *surface) {
    Seen seen;
    ForRows(*a, *surface, [&](const SurfaceTable &table, const SurfaceSection &section, const SurfaceRow &row) {
        if (section.kind == SurfaceKind::element) {
            AddElementRow(a, counts, table, row, {section.file, row.line, 1}, &seen, surface);
        }
    });
    KeepFirst(&surface->faces);
}

// Of the first list those faces that are in the second, or that are not.
void KeepIf(std::vector<Face> *faces, std::vector<Face> others, bool in) {
    std::sort(others.begin(), others.end(), IsBefore);
    faces->erase(std::remove_if(faces->begin(), faces->end(),
                                [&](const Face &f) {
                                    return std::binary_search(others.begin(), others.end(), f, IsBefore) != in;
                                }),
                 faces->end());
}

// A surface that a combined one names.
struct Part {
    int surface;
    Combine combine;
};

std::vector<Part> PartsOf(Assembling *a, const MeshSurface &surface) {
    std::vector<Part> parts;
    std::set<int> seen;
    ForRows(*a, surface, [&](const SurfaceTable &table, const SurfaceSection &section, const SurfaceRow &row) {
        if (section.kind != SurfaceKind::combined) {
            return;
        }
        const std::string &name = table.names[static_cast<std::size_t>(-1 - row.member)];
        const Named named = FindNamed(*a, surface.placed, &PlacedNames::surfaces, name);
        if (named.index < 0) {
            a->Find(Code::missingMember, {section.file, row.line, 1}, {Clip(name), Clip(surface.plain)});
        } else if (seen.insert(named.index).second || section.combine != Combine::unite) {
            parts.push_back({named.index, section.combine});
        }
    });
    return parts;
}

// The keyword that first defines the surface.
Place PlaceOf(const Assembling &a, const MeshSurface &surface) {
    const SurfaceTable &table = a.deck->scopes[static_cast<std::size_t>(surface.origins[0].scope)].surfaces;
    const Surface &written = table.surfaces[static_cast<std::size_t>(surface.origins[0].index)];
    const SurfaceSection &section = table.sections[static_cast<std::size_t>(written.sections[0])];
    return a.deck->cards[static_cast<std::size_t>(section.card)].place;
}

void CombineParts(Assembling *a, const std::vector<Part> &parts, MeshSurface *surface) {
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const std::vector<Face> &from = a->mesh->surfaces[static_cast<std::size_t>(parts[i].surface)].faces;
        const bool adds = i == 0 || parts[i].combine == Combine::unite;
        const std::size_t count = from.size() + (adds ? 0 : surface->faces.size());
        if (&from == &surface->faces || !a->MayTake(count, PlaceOf(*a, *surface), surface->plain)) {
            continue; // itself, which is said
        }
        if (adds) {
            surface->faces.insert(surface->faces.end(), from.begin(), from.end());
        } else {
            KeepIf(&surface->faces, from, parts[i].combine == Combine::intersect);
        }
    }
    KeepFirst(&surface->faces);
}

bool IsCombined(const Assembling &a, const MeshSurface &surface) {
    bool combined = false;
    ForRows(a, surface, [&](const SurfaceTable &, const SurfaceSection &section, const SurfaceRow &) {
        combined = combined || section.kind == SurfaceKind::combined;
    });
    return combined;
}

// Combined surfaces, those that they name first.
void CombineAll(Assembling *a) {
    enum { kNew, kOpen, kDone };
    struct Level {
        int surface;
        std::vector<Part> parts;
        std::size_t next;
    };
    std::vector<MeshSurface> &surfaces = a->mesh->surfaces;
    std::vector<char> state(surfaces.size(), kDone);
    for (std::size_t i = 0; i < surfaces.size(); ++i) {
        state[i] = IsCombined(*a, surfaces[i]) ? kNew : kDone;
    }
    std::vector<Level> levels;
    const auto open = [&](int surface) {
        const auto at = static_cast<std::size_t>(surface);
        state[at] = kOpen;
        levels.push_back({surface, PartsOf(a, surfaces[at]), 0});
    };
    for (std::size_t i = 0; i < surfaces.size(); ++i) {
        if (state[i] == kNew) {
            open(static_cast<int>(i));
        }
        while (!levels.empty()) {
            Level &level = levels.back();
            const auto at = static_cast<std::size_t>(level.surface);
            if (level.next == level.parts.size()) {
                CombineParts(a, level.parts, &surfaces[at]);
                state[at] = kDone;
                levels.pop_back();
                continue;
            }
            const int named = level.parts[level.next++].surface;
            if (state[static_cast<std::size_t>(named)] == kOpen) {
                a->Find(Code::setCycle, PlaceOf(*a, surfaces[at]), {Clip(surfaces[at].plain)});
            } else if (state[static_cast<std::size_t>(named)] == kNew) {
                open(named);
            }
        }
    }
}

void ListSurfaces(Assembling *a, int placed, const Slot &slot) {
    const SurfaceTable &table = a->At(slot.scope).surfaces;
    std::vector<MeshSurface> &surfaces = a->mesh->surfaces;
    for (std::size_t i = 0; i < table.surfaces.size(); ++i) {
        const Surface &surface = table.surfaces[i];
        const auto put = a->names[static_cast<std::size_t>(placed)].surfaces.emplace(surface.name,
                                                                                     static_cast<int>(surfaces.size()));
        if (put.second) {
            MeshSurface made{};
            made.plain = surface.name;
            made.placed = placed;
            made.internal = true;
            surfaces.push_back(std::move(made));
        }
        MeshSurface &made = surfaces[static_cast<std::size_t>(put.first->second)];
        made.origins.push_back({slot.scope, static_cast<int>(i)});
        for (const int at : surface.sections) {
            const SurfaceSection &section = table.sections[static_cast<std::size_t>(at)];
            made.internal = made.internal && section.internal;
            made.ofNodes = made.ofNodes || section.kind == SurfaceKind::node;
            made.refused = made.refused || section.kind == SurfaceKind::refused;
        }
    }
}

} // namespace

void AddNodesOfFace(const Assembling &a, const Face &face, std::vector<int> *nodes) {
    if (face.side < 0) {
        AddNodesOfElement(*a.mesh, face.element, nodes);
        return;
    }
    const ElementRun &run = RunOf(*a.mesh, face.element);
    const Shape shape = TypeOf(a, run).shape;
    const FaceRow &row = FaceOf(shape, face.side);
    const int *element = NodesOfElement(*a.mesh, run, face.element);
    const int nEdges = row.nCorners == 2 ? 1 : row.nCorners;
    for (int i = 0; i < row.nCorners; ++i) {
        const int mid = i < nEdges ? MidNodeOf(shape, row.corner[i], row.corner[(i + 1) % row.nCorners]) : -1;
        for (const int at : {row.corner[i], mid}) {
            if (at >= 0 && element[at] >= 0) {
                nodes->push_back(element[at]);
            }
        }
    }
}

void AddNodeRows(Assembling *a, MeshSurface *surface) {
    ForRows(*a, *surface, [&](const SurfaceTable &table, const SurfaceSection &section, const SurfaceRow &row) {
        if (section.kind != SurfaceKind::node) {
            return;
        }
        int position = -1;
        std::string word = std::to_string(row.member);
        if (row.member > 0) {
            position = FindNode(*a, surface->placed, row.member);
        } else {
            word = table.names[static_cast<std::size_t>(-1 - row.member)];
            const Named named = FindNamed(*a, surface->placed, &PlacedNames::nodeSets, word);
            if (named.index >= 0) {
                const std::vector<int> &from = a->mesh->nodeSets[static_cast<std::size_t>(named.index)].members;
                if (a->MayTake(from.size(), {section.file, row.line, 1}, surface->plain)) {
                    surface->nodes.insert(surface->nodes.end(), from.begin(), from.end());
                }
                return;
            }
            position = named.placed < 0 ? -1 : FindNode(*a, named.placed, named.number);
        }
        if (position < 0) {
            a->Find(Code::missingMember, {section.file, row.line, 1}, {Clip(word), Clip(surface->plain)});
        } else {
            surface->nodes.push_back(position);
        }
    });
    SortOnce(&surface->nodes);
}

void AssembleSurfaces(Assembling *a) {
    for (int placed = 0; placed <= a->Root(); ++placed) {
        for (const Slot &slot : a->slots[static_cast<std::size_t>(placed)]) {
            ListSurfaces(a, placed, slot);
        }
    }
    const FaceCounts counts = CountFaces(*a);
    for (MeshSurface &surface : a->mesh->surfaces) {
        surface.name = FullName(*a, surface.placed, surface.plain, &PlacedNames::surfaces);
        FillSurface(a, counts, &surface);
    }
    CombineAll(a);
}

} // namespace deck
