// What becomes of each element: a cell, the skin of cells, or nothing.
#include "flatten/making.h"

#include <algorithm>
#include <cmath>

namespace flatten {

namespace {

using deck::ElementRun;
using deck::TypeClass;

deck::Place PlaceOfType(const Making &m, const ElementRun &run) {
    return m.PlaceOfParameter(run, "TYPE");
}

Role RoleOfRun(Making *m, const ElementRun &run) {
    const deck::ElementType &type = m->TypeOf(run);
    const std::string &name = m->deck.types[static_cast<std::size_t>(run.type)].name;
    const int dimension = DimensionOf(type.shape);
    const auto count = static_cast<long long>(run.count);
    switch (type.kind) {
    case TypeClass::split:
        if (!m->options.split) {
            m->Find(Code::refusedSplit, PlaceOfType(*m, run), {name}, count);
            return Role::lost;
        }
        return dimension == m->mesh.dimension ? Role::cell : Role::skin;
    case TypeClass::cell:
    case TypeClass::sameShape:
        return dimension == m->mesh.dimension ? Role::cell : Role::skin;
    case TypeClass::cannotKeep:
        if (dimension == 1 && m->mesh.dimension > 1) {
            return m->mesh.dimension == 2 ? Role::skin : Role::line;
        }
        m->Find(Code::cannotKeep, PlaceOfType(*m, run), {name}, count);
        return Role::lost;
    case TypeClass::noCell:
        m->Find(Code::noCell, PlaceOfType(*m, run), {name}, count);
        return Role::lost;
    default: // the deck's own findings tell
        return Role::lost;
    }
}

// A plane mesh lies where its first element lies.
bool FindPlane(const Making &m, double *plane) {
    bool found = false;
    ForElements(m, Role::cell, [&](const ElementRun &, int, const int *nodes) {
        if (!found) {
            *plane = m.mesh.z[static_cast<std::size_t>(nodes[0])];
            found = true;
        }
    });
    return found;
}

void CheckPlane(Making *m) {
    constexpr double kTolerance = 1e-9; // of the mesh's extent
    double plane = 0;
    if (m->mesh.dimension != 2 || !FindPlane(*m, &plane)) {
        return;
    }
    double extent = 0;
    for (std::size_t i = 0; i < m->mesh.x.size(); ++i) {
        extent = std::max({extent, std::fabs(m->mesh.x[i]), std::fabs(m->mesh.y[i])});
    }
    int first = -1;
    long long count = 0;
    ForElements(*m, Role::cell, [&](const ElementRun &run, int element, const int *nodes) {
        const bool outside = std::any_of(nodes, nodes + run.width, [&](int node) {
            return std::fabs(m->mesh.z[static_cast<std::size_t>(node)] - plane) > extent * kTolerance;
        });
        if (outside) {
            m->role[static_cast<std::size_t>(element)] = Role::lost;
            first = count++ == 0 ? element : first;
        }
    });
    if (count > 0) {
        m->Find(Code::outOfPlane, m->PlaceOf(first), {}, count);
    }
}

} // namespace

void GiveRoles(Making *m) {
    m->plain.dimension = m->mesh.dimension;
    m->role.assign(m->mesh.elementNumber.size(), Role::lost);
    for (const ElementRun &run : m->mesh.elementRuns) {
        const Role role = RoleOfRun(m, run);
        for (std::size_t r = 0; r < run.count && role != Role::lost; ++r) {
            const int *nodes = m->mesh.nodes.data() + run.firstNode + r * static_cast<std::size_t>(run.width);
            const bool whole =
                run.width > 0 && std::all_of(nodes, nodes + run.width, [](int node) { return node >= 0; });
            m->role[run.first + r] = whole ? role : Role::lost; // nodes that are not there have been told
        }
    }
    CheckPlane(m);
}

} // namespace flatten
