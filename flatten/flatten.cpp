// The steps from a mesh to a plain deck.
#include "flatten/flatten.h"

#include "flatten/making.h"

#include <algorithm>

namespace flatten {

namespace {

bool HasSeveralInstances(const deck::Mesh &mesh) {
    return std::count_if(mesh.placed.begin(), mesh.placed.end(),
                         [](const deck::Placed &placed) { return !placed.name.empty(); }) > 1;
}

} // namespace

Flat Flatten(const deck::Deck &deck, deck::Mesh *mesh, const Options &options, bool wantsChanges) {
    Flat flat;
    Making m{deck, *mesh, options, flat, flat.plain, wantsChanges, HasSeveralInstances(*mesh), {}, {}, {}, {},
             {},   {},    {0},     {},   {}};
    GiveRoles(&m);
    NumberNodes(&m);
    ScaleNodes(&m);
    const std::vector<Diagonal> diagonals = MakeCells(&m);
    NumberCells(&m);
    FindSkins(&m);
    MakeGroups(&m);
    MakeNodeSets(&m, diagonals);
    MakeSurfaces(&m);
    return flat;
}

} // namespace flatten
