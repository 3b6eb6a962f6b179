// The steps from a mesh to a plain deck.
#include "flatten/flatten.h"

#include "flatten/making.h"

namespace flatten {

Flat Flatten(const deck::Deck &deck, deck::Mesh *mesh, const Options &options, bool wantsChanges) {
    Flat flat;
    Making m{deck, *mesh, options, flat, flat.plain, wantsChanges, {}, {}, {}, {}, {}, {}, {0}, {}, {}};
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
