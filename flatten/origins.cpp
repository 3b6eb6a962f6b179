// Sections of sets and surfaces.
#include "flatten/origins.h"

#include <algorithm>

namespace flatten {

namespace {

// With one instance at most the order is that of the deck.
int RankOf(const Making &m, int placed) {
    return m.severalInstances ? placed : 0;
}

const deck::SetTable &TableOf(const Making &m, const deck::Origin &origin, bool ofNodes) {
    const deck::Scope &scope = m.deck.scopes[static_cast<std::size_t>(origin.scope)];
    return ofNodes ? scope.nodeSets : scope.elementSets;
}

// A section of the set itself, not of nodes or elements that name it.
bool IsOwn(const deck::SetSection &section) {
    return section.source != deck::SetSource::nodes && section.source != deck::SetSource::elements &&
           section.source != deck::SetSource::generated;
}

// The set's first section of its own; without any its first.
int FirstSection(const deck::SetTable &table, const std::vector<int> &sections) {
    const auto own = std::find_if(sections.begin(), sections.end(),
                                  [&](int s) { return IsOwn(table.sections[static_cast<std::size_t>(s)]); });
    return own == sections.end() ? sections[0] : *own;
}

template <class Section> Standing StandingOfSection(const Making &m, int placed, const Section &section) {
    return {{RankOf(m, placed), section.order}, m.deck.cards[static_cast<std::size_t>(section.card)].place};
}

} // namespace

Standing StandingOf(const Making &m, const deck::MeshSet &set, bool ofNodes) {
    const deck::SetTable &table = TableOf(m, set.origins[0], ofNodes);
    const int first = FirstSection(table, table.sets[static_cast<std::size_t>(set.origins[0].index)].sections);
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
        return IsOwn(table.sections[static_cast<std::size_t>(FirstSection(table, sections))]);
    });
}

} // namespace flatten
