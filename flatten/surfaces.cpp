// Surfaces: faces of elements as faces of their pieces, and the surfaces that skins make.
#include "flatten/names.h"
#include "flatten/origins.h"
#include "flatten/overlaps.h"
#include "flatten/simplex.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <utility>

namespace flatten {

namespace {

using deck::MeshSurface;

// A surface with its faces, before they are shared out.
struct Skin {
    Claim claim;
    DeckOrder order{};
    std::vector<CellFace> faces;
};

bool IsBefore(const CellFace &a, const CellFace &b) {
    return a.cell != b.cell ? a.cell < b.cell : a.face < b.face;
}

bool IsSame(const CellFace &a, const CellFace &b) {
    return a.cell == b.cell && a.face == b.face;
}

void SortFaces(std::vector<CellFace> *faces) {
    std::sort(faces->begin(), faces->end(), IsBefore);
    faces->erase(std::unique(faces->begin(), faces->end(), IsSame), faces->end());
}

// Faces of the element's pieces whose nodes are all corners of the element's side.
void AddSide(const Making &m, const deck::ElementRun &run, int element, int side, std::vector<CellFace> *faces) {
    const auto at = static_cast<std::size_t>(element);
    if (m.TypeOf(run).kind != deck::TypeClass::split) {
        faces->push_back({m.firstCell[at], side});
        return;
    }
    const deck::FaceRow &row = deck::FaceOf(m.TypeOf(run).shape, side);
    const int *nodes = NodesOfElement(m.mesh, run, element);
    const int dimension = m.mesh.dimension == 3 ? 3 : 2;
    const auto isOn = [&](int node) {
        return std::any_of(row.corner, row.corner + row.nCorners, [&](int corner) { return nodes[corner] == node; });
    };
    for (int c = m.firstCell[at]; c < m.firstCell[at + 1]; ++c) {
        for (int f = 0; f <= dimension; ++f) {
            int nOn = 0;
            for (int k = 0; k < dimension; ++k) {
                nOn += isOn(m.NodesOfCell(c)[kFaceCorners[dimension - 2][f][k]]) ? 1 : 0;
            }
            if (nOn == dimension) {
                faces->push_back({c, f});
            }
        }
    }
}

// The faces below a skin.
void AddSkin(const Making &m, int element, std::vector<CellFace> *faces) {
    const auto found = std::lower_bound(m.skinElement.begin(), m.skinElement.end(), element);
    if (found != m.skinElement.end() && *found == element) {
        const auto at = static_cast<std::size_t>(found - m.skinElement.begin());
        faces->insert(faces->end(), m.skinFaces.begin() + static_cast<std::ptrdiff_t>(m.skinFirst[at]),
                      m.skinFaces.begin() + static_cast<std::ptrdiff_t>(m.skinFirst[at + 1]));
    }
}

// The place of a surface's row.
deck::Place PlaceOfRow(const Making &m, const MeshSurface &surface, int line) {
    for (const deck::Origin &origin : surface.origins) {
        const deck::SurfaceTable &table = m.deck.scopes[static_cast<std::size_t>(origin.scope)].surfaces;
        for (const int s : table.surfaces[static_cast<std::size_t>(origin.index)].sections) {
            const deck::SurfaceSection &section = table.sections[static_cast<std::size_t>(s)];
            const auto begin = table.rows.begin() + static_cast<std::ptrdiff_t>(section.firstRow);
            const auto end = begin + static_cast<std::ptrdiff_t>(section.rowCount);
            const auto row =
                std::lower_bound(begin, end, line, [](const deck::SurfaceRow &r, int at) { return r.line < at; });
            if (row != end && row->line == line) {
                return {section.file, line, 1};
            }
        }
    }
    return StandingOf(m, surface).place;
}

// Faces that a row names and that no cell has, by the row's line.
struct Lost {
    std::map<int, long long> shellSides, others;
};

void AddFaces(Making *m, const MeshSurface &surface, std::vector<CellFace> *faces) {
    Lost lost;
    for (const deck::Face &face : surface.faces) {
        const deck::ElementRun &run =
            m->mesh.elementRuns[static_cast<std::size_t>(RunOfElement(m->mesh, face.element))];
        const Role role = m->role[static_cast<std::size_t>(face.element)];
        if (role == Role::cell && face.side >= 0) {
            AddSide(*m, run, face.element, face.side, faces);
        } else if (role == Role::cell) {
            ++lost.shellSides[face.line];
        } else if (role == Role::skin && face.side < 0) {
            AddSkin(*m, face.element, faces);
        } else if (role == Role::skin) {
            ++lost.others[face.line];
        }
    }
    for (const auto &[line, count] : lost.shellSides) {
        m->Find(Code::shellSide, PlaceOfRow(*m, surface, line), {"a row of " + surface.plain}, count);
    }
    for (const auto &[line, count] : lost.others) {
        m->Find(Code::lostFaces, PlaceOfRow(*m, surface, line), {surface.plain}, count);
    }
    SortFaces(faces);
}

std::vector<Skin> DeckSurfaces(Making *m) {
    std::vector<Skin> surfaces;
    for (const MeshSurface &surface : m->mesh.surfaces) {
        if (surface.ofNodes || surface.refused) {
            continue;
        }
        const Standing standing = StandingOf(*m, surface);
        Skin skin;
        skin.claim = {surface.name,
                      surface.plain,
                      m->InstanceOf(surface.placed),
                      {},
                      static_cast<long long>(surface.faces.size()),
                      standing.place,
                      "surface"};
        skin.order = standing.order;
        AddFaces(m, surface, &skin.faces);
        surfaces.push_back(std::move(skin));
    }
    std::stable_sort(surfaces.begin(), surfaces.end(), [](const Skin &a, const Skin &b) { return a.order < b.order; });
    return surfaces;
}

// Finds surfaces by their faces.
class KnownFaces {
  public:
    explicit KnownFaces(const std::vector<Skin> &surfaces) : surfaces_(surfaces) {
        for (std::size_t i = 0; i < surfaces.size(); ++i) {
            byHash_.emplace(HashOf(surfaces[i].faces), i);
        }
    }

    // The surface with these faces, or null.
    const Skin *Find(const std::vector<CellFace> &faces) const {
        const auto range = byHash_.equal_range(HashOf(faces));
        for (auto at = range.first; at != range.second; ++at) {
            const std::vector<CellFace> &known = surfaces_[at->second].faces;
            if (known.size() == faces.size() && std::equal(known.begin(), known.end(), faces.begin(), IsSame)) {
                return &surfaces_[at->second];
            }
        }
        return nullptr;
    }

  private:
    static std::uint64_t HashOf(const std::vector<CellFace> &faces) {
        constexpr std::uint64_t kPrime = 1099511628211U; // of the FNV hash, as is its beginning
        std::uint64_t hash = 14695981039346656037U;
        for (const CellFace &face : faces) {
            hash = (hash ^ static_cast<std::uint64_t>(face.cell)) * kPrime;
            hash = (hash ^ static_cast<std::uint64_t>(face.face)) * kPrime;
        }
        return hash;
    }

    const std::vector<Skin> &surfaces_;
    std::multimap<std::uint64_t, std::size_t> byHash_;
};

// One surface for each group of skins, in the order of their first element.
std::vector<Skin> SurfacesOfSkins(const Making &m) {
    std::vector<Skin> surfaces;
    std::map<int, std::size_t> byGroup;
    for (std::size_t i = 0; i < m.skinElement.size(); ++i) {
        const int element = m.skinElement[i];
        const int group = m.group[static_cast<std::size_t>(element)];
        const auto put = byGroup.emplace(group, surfaces.size());
        if (put.second) {
            const std::string &name = m.groupNames[static_cast<std::size_t>(group)];
            surfaces.push_back({{name, name, "", {}, 0, m.PlaceOf(element), ""}, {}, {}});
        }
        Skin &skin = surfaces[put.first->second];
        ++skin.claim.size;
        AddSkin(m, element, &skin.faces);
    }
    for (Skin &skin : surfaces) {
        SortFaces(&skin.faces);
    }
    return surfaces;
}

// Behind the deck's own surfaces those of skins that are not among them.
void AddSurfacesOfSkins(Making *m, std::vector<Skin> *surfaces) {
    std::vector<Skin> made;
    const KnownFaces known(*surfaces);
    for (Skin &skin : SurfacesOfSkins(*m)) {
        const Skin *same = known.Find(skin.faces);
        m->Find(same == nullptr ? Code::skinSurface : Code::skinKnown, skin.claim.place,
                {skin.claim.name, same == nullptr ? skin.claim.name : same->claim.name}, skin.claim.size);
        if (same == nullptr) {
            made.push_back(std::move(skin));
        }
    }
    std::move(made.begin(), made.end(), std::back_inserter(*surfaces));
}

// All faces of surfaces, each once: claims are made of positions in this list.
std::vector<CellFace> ListFaces(std::vector<Skin> *surfaces) {
    std::vector<CellFace> all;
    for (const Skin &skin : *surfaces) {
        all.insert(all.end(), skin.faces.begin(), skin.faces.end());
    }
    SortFaces(&all);
    for (Skin &skin : *surfaces) {
        for (const CellFace &face : skin.faces) {
            skin.claim.items.push_back(
                static_cast<int>(std::lower_bound(all.begin(), all.end(), face, IsBefore) - all.begin()));
        }
        skin.faces = {};
    }
    return all;
}

} // namespace

void MakeSurfaces(Making *m) {
    std::vector<Skin> surfaces = DeckSurfaces(m);
    AddSurfacesOfSkins(m, &surfaces);
    const std::vector<CellFace> all = ListFaces(&surfaces);
    std::vector<Claim> claims;
    claims.reserve(surfaces.size());
    for (Skin &skin : surfaces) {
        claims.push_back(std::move(skin.claim));
    }
    ResolveOverlaps(m, Code::overlapFaces, static_cast<int>(all.size()), &claims);
    std::vector<std::string> names = NameClaims(m, claims, kOnSurface);
    for (std::size_t c = 0; c < claims.size(); ++c) {
        m->plain.surfaces.push_back({std::move(names[c]), {}});
        for (const int item : claims[c].items) {
            m->plain.surfaces.back().faces.push_back(all[static_cast<std::size_t>(item)]);
        }
        const std::vector<int> &number = m->plain.cellNumber;
        std::vector<CellFace> &faces = m->plain.surfaces.back().faces;
        std::sort(faces.begin(), faces.end(), [&](const CellFace &a, const CellFace &b) {
            return a.cell != b.cell
                       ? number[static_cast<std::size_t>(a.cell)] < number[static_cast<std::size_t>(b.cell)]
                       : a.face < b.face;
        });
    }
}

} // namespace flatten
