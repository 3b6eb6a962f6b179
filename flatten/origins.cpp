// Sections of sets and surfaces.
#include "flatten/origins.h"

#include <algorithm>

namespace flatten {

namespace {

// With one instance at most the order is that of the deck.
int RankOf(const Making &m, int placed) {
    const auto nNamed = std::count_if(m.mesh.placed.begin(), m.mesh.placed.end(),
                                      [](const deck::Placed &p) { return !p.name.empty(); });
    return nNamed > 1 ? placed : 0;
}

const deck::SetTable &TableOf(const Making &m, const deck::Origin &origin, bool ofNodes) {
    const deck::Scope &scope = m.deck.scopes[static_cast<std::size_t>(origin.scope)];
    return ofNodes ? scope.nodeSets : scope.elementSets;
}

template <class Section> Standing StandingOfSection(const Making &m, int placed, const Section &section) {
    return {{RankOf(m, placed), section.order}, m.deck.cards[static_cast<std::size_t>(section.card)].place};
}

} // namespace

Standing StandingOf(const Making &m, const deck::MeshSet &set, bool ofNodes) {
    const deck::SetTable &table = TableOf(m, set.origins[0], ofNodes);
    const int first = table.sets[static_cast<std::size_t>(set.origins[0].index)].sections[0];
    return StandingOfSection(m, set.placed, table.sections[static_cast<std::size_t>(first)]);
}

Standing StandingOf(const Making &m, const deck::MeshSurface &surface) {
    const deck::Origin &origin = surface.origins[0];
    const deck::SurfaceTable &table = m.deck.scopes[static_cast<std::size_t>(origin.scope)].surfaces;
    const int first = table.surfaces[static_cast<std::size_t>(origin.index)].sections[0];
    return StandingOfSection(m, surface.placed, table.sections[static_cast<std::size_t>(first)]);
}

bool HasOwnSection(const Making &m, const deck::MeshSet &set, bool ofNodes) {
    return std::any_of(set.origins.begin(), set.origins.end(), [&](const deck::Origin &origin) {
        const deck::SetTable &table = TableOf(m, origin, ofNodes);
        const std::vector<int> &sections = table.sets[static_cast<std::size_t>(origin.index)].sections;
        return std::any_of(sections.begin(), sections.end(), [&](int s) {
            const deck::SetSource source = table.sections[static_cast<std::size_t>(s)].source;
            return source != deck::SetSource::nodes && source != deck::SetSource::elements &&
                   source != deck::SetSource::generated;
        });
    });
}

} // namespace flatten
