// Where sets and surfaces of the mesh stand in the deck.
#ifndef KIVOM_FLATTEN_ORIGINS_H
#define KIVOM_FLATTEN_ORIGINS_H

#include "flatten/making.h"

namespace flatten {

// A place in the order of the deck: that of the first section of its own, as far as there is one. Of several instances
// one comes behind the other.
struct DeckOrder {
    int placed;
    int order;
    bool operator<(const DeckOrder &other) const {
        return placed != other.placed ? placed < other.placed : order < other.order;
    }
};

struct Standing {
    DeckOrder order;
    deck::Place place; // of the keyword line
};

Standing StandingOf(const Making &m, const deck::MeshSet &set, bool ofNodes);
Standing StandingOf(const Making &m, const deck::MeshSurface &surface);

// Whether the set has a section of its own: not only NSET= or ELSET= of *NODE and *ELEMENT lines and generators.
bool HasOwnSection(const Making &m, const deck::MeshSet &set, bool ofNodes);

} // namespace flatten

#endif
