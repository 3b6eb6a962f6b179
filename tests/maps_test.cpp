// Node orders, face slots and face pieces, checked against the geometry they stand for: whole meshes go through the
// translation, and what comes out is measured.
#include "tests/support/capture.h"
#include "tests/support/meshes.h"

#include "abaqus/LoadABQ.h"
#include "translate/MeshAll.h"

#include <cmath>
#include <map>
#include <numeric>
#include <set>

namespace {

// A family: its corners in a shape of no symmetry, and the corners between which each further node lies.
struct Family {
    int type;
    std::vector<At> corners;
    std::vector<int> cornerColumns;              // column of each corner
    std::vector<std::vector<int>> nodesByColumn; // the one or two corners of each column
};

const std::vector<At> kTriangle{{0.5, 0.25, 0}, {4, 1, 0}, {1.5, 3, 0}};
const std::vector<At> kTetrahedron{{0.5, 0.25, 0.125}, {4, 1, 0.5}, {1.5, 3, 0.25}, {1, 1.5, 5}};

// Mid-side nodes of a TRI6 stand between their neighbours; those of a TETX by the edges 0-1, 1-2, 2-0, 0-3, 1-3, 2-3.
const Family kFamilies[] = {
    {kTRI3, kTriangle, {0, 1, 2}, {{0}, {1}, {2}}},
    {kTRI6, kTriangle, {0, 2, 4}, {{0}, {0, 1}, {1}, {1, 2}, {2}, {2, 0}}},
    {kTET4, kTetrahedron, {0, 1, 2, 3}, {{0}, {1}, {2}, {3}}},
    {kTETX, kTetrahedron, {0, 1, 2, 3}, {{0}, {1}, {2}, {3}, {0, 1}, {1, 2}, {2, 0}, {0, 3}, {1, 3}, {2, 3}}},
};

bool IsFlat(const Family &family) {
    return family.corners.size() == 3;
}

// The cell with its corners listed in the order `turn`; slot k carries the tag 101 + the corner it lies opposite of.
void MakeCell(const Family &family, const std::vector<int> &turn) {
    COM_ArchnDim(IsFlat(family) ? 2 : 3);
    std::vector<int> conn;
    std::vector<At> points;
    for (const auto &between : family.nodesByColumn) {
        std::vector<At> ends;
        for (const int corner : between) {
            ends.push_back(family.corners[static_cast<std::size_t>(turn[static_cast<std::size_t>(corner)])]);
        }
        points.push_back(Middle(ends));
        conn.push_back(static_cast<int>(conn.size()) + 1);
    }
    AddNodes(points);
    std::vector<int> faceTags;
    for (const int corner : turn) {
        faceTags.push_back(101 + corner);
    }
    AddCell(family.type, 1, conn, faceTags);
}

double Measure(const std::vector<At> &corners) {
    const At normal = Outer(corners[1] - corners[0], corners[2] - corners[0]);
    return corners.size() == 3 ? normal.z : Inner(normal, corners[3] - corners[0]);
}

class Maps : public testing::Test {
  protected:
    void SetUp() override {
        fake::Reset();
        FreeCOM();
    }
    void TearDown() override {
        FreeCOM();
    }

    // Runs `check` after the translation of the family's cell, for every order in which its corners can be listed.
    template <class Check> void ForAllTurns(const Family &family, Check check) {
        std::vector<int> turn(family.corners.size());
        std::iota(turn.begin(), turn.end(), 0);
        int corrected = 0;
        do {
            MakeCell(family, turn);
            const std::string log = Printed(MeshAll);
            corrected += log.find("  Numbering order of 1 elements has been corrected.\n") != std::string::npos ? 1 : 0;
            check(family);
            FreeCOM();
        } while (std::next_permutation(turn.begin(), turn.end()) && !HasFatalFailure());
        EXPECT_EQ(corrected, IsFlat(family) ? 3 : 12) << "half of all orders run the wrong way round";
    }
};

std::vector<At> Corners(const Family &family) {
    const std::vector<At> points = PointsOfCell(0);
    std::vector<At> corners;
    for (const int column : family.cornerColumns) {
        corners.push_back(points[static_cast<std::size_t>(column)]);
    }
    return corners;
}

TEST_F(Maps, CellsRunTheRightWayAndMidEdgeNodesLieBetweenTheirCorners) {
    for (const Family &family : kFamilies) {
        ForAllTurns(family, [](const Family &of) {
            const std::vector<At> corners = Corners(of);
            EXPECT_GT(Measure(corners), 0);
            const std::vector<At> points = PointsOfCell(0);
            ASSERT_EQ(points.size(), of.nodesByColumn.size());
            for (std::size_t k = 0; k < points.size(); ++k) {
                std::vector<At> ends;
                for (const int corner : of.nodesByColumn[k]) {
                    ends.push_back(corners[static_cast<std::size_t>(corner)]);
                }
                EXPECT_TRUE(points[k] == Middle(ends)) << "type " << of.type << " column " << k;
            }
        });
    }
}

// The faces of each tag: their points, piece by piece.
std::map<int, std::vector<std::vector<At>>> PiecesByTag() {
    std::map<int, std::vector<std::vector<At>>> pieces;
    for (int face = 0; face < GetCOM()->Faces->nNum; ++face) {
        pieces[GetCOM()->Faces->i1Tag[face]].push_back(PointsOfFace(face));
    }
    return pieces;
}

// Twice the area of a triangle or quadrilateral as a vector, or a line as it is.
At Extent(const std::vector<At> &points) {
    if (points.size() == 2) {
        return points[1] - points[0];
    }
    At sum{0, 0, 0};
    for (std::size_t i = 1; i + 1 < points.size(); ++i) {
        sum = sum + Outer(points[i] - points[0], points[i + 1] - points[0]);
    }
    return sum;
}

double Size(At a) {
    return std::sqrt(Inner(a, a));
}

// A normal that points into a cell: of a face in space, and the left of an edge in the plane.
At Inwards(const std::vector<At> &points) {
    const At extent = Extent(points);
    return points.size() == 2 ? At{-extent.y, extent.x, 0} : extent;
}

TEST_F(Maps, EachFaceOfATagIsTheWholeFaceOppositeItsCorner) {
    for (const Family &family : kFamilies) {
        ForAllTurns(family, [](const Family &of) {
            const auto pieces = PiecesByTag();
            ASSERT_EQ(pieces.size(), of.corners.size()) << "a face for every slot";
            for (std::size_t corner = 0; corner < of.corners.size(); ++corner) {
                // The tag tells, from before any correction, which corner its face lies opposite of.
                std::vector<At> others;
                for (std::size_t i = 0; i < of.corners.size(); ++i) {
                    if (i != corner) {
                        others.push_back(of.corners[i]);
                    }
                }
                std::vector<At> allowed = others; // and the middles of the edges between them
                for (std::size_t i = 0; i < others.size(); ++i) {
                    allowed.push_back(0.5 * (others[i] + others[(i + 1) % others.size()]));
                }
                const auto found = pieces.find(101 + static_cast<int>(corner));
                ASSERT_NE(found, pieces.end());
                const bool quadratic = of.nodesByColumn.size() > of.corners.size();
                EXPECT_EQ(found->second.size(), !quadratic ? 1u : IsFlat(of) ? 2u : 4u);
                double size = 0;
                for (const auto &piece : found->second) {
                    EXPECT_EQ(piece.size(), IsFlat(of) ? 2u : 3u);
                    size += Size(Extent(piece));
                    for (const At &point : piece) {
                        EXPECT_NE(std::find(allowed.begin(), allowed.end(), point), allowed.end());
                    }
                }
                EXPECT_NEAR(size, Size(Extent(others)), 1e-12) << "the pieces cover the face";
            }
        });
    }
}

TEST_F(Maps, EdgesFollowTheCirculationAndFaceNormalsPointIntoTheCell) {
    for (const Family &family : kFamilies) {
        ForAllTurns(family, [](const Family &of) {
            ASSERT_GT(GetCOM()->Faces->nNum, 0);
            for (int face = 0; face < GetCOM()->Faces->nNum; ++face) {
                const std::vector<At> points = PointsOfFace(face);
                EXPECT_EQ(GetCOM()->Faces->i1Type[face], IsFlat(of) ? 31 : 32);
                EXPECT_EQ(points.size(), IsFlat(of) ? 2u : 3u);
                EXPECT_GT(Inner(Inwards(points), Middle(of.corners) - Middle(points)), 0) << "type " << of.type;
            }
        });
    }
}

// Families that only the store can hold ------------------------------------------------------------------

std::vector<std::vector<int>> FacesInOrder(std::vector<int> *tags, std::vector<int> *types) {
    std::vector<std::vector<int>> nodes;
    for (int face = 0; face < GetCOM()->Faces->nNum; ++face) {
        nodes.push_back(NodesOfFace(face));
        tags->push_back(GetCOM()->Faces->i1Tag[face]);
        types->push_back(GetCOM()->Faces->i1Type[face]);
    }
    return nodes;
}

TEST_F(Maps, QuadrilateralSlotsAreTheEdgesInTheirCirculation) {
    AddMesh(2, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}});
    AddCell(kQUA4, 1, {1, 2, 3, 4}, {1, 2, 3, 4});
    Printed(MeshAll);
    std::vector<int> tags, types;
    const auto faces = FacesInOrder(&tags, &types);
    EXPECT_EQ(faces, (std::vector<std::vector<int>>{{0, 1}, {1, 2}, {2, 3}, {3, 0}}));
    EXPECT_EQ(tags, (std::vector<int>{1, 2, 3, 4}));
    EXPECT_EQ(types, (std::vector<int>(4, 31)));
}

TEST_F(Maps, HexahedronSlotsAreItsSixFacesWithNormalsInwards) {
    AddMesh(3, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}});
    AddCell(kHEX8, 1, {1, 2, 3, 4, 5, 6, 7, 8}, {1, 2, 3, 4, 5, 6});
    Printed(MeshAll);
    std::vector<int> tags, types;
    const auto faces = FacesInOrder(&tags, &types);
    EXPECT_EQ(faces, (std::vector<std::vector<int>>{
                         {0, 1, 2, 3}, {4, 7, 6, 5}, {0, 4, 5, 1}, {1, 5, 6, 2}, {2, 6, 7, 3}, {3, 7, 4, 0}}));
    EXPECT_EQ(tags, (std::vector<int>{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(types, (std::vector<int>(6, 33)));
    for (int face = 0; face < 6; ++face) {
        const std::vector<At> points = PointsOfFace(face);
        EXPECT_GT(Inner(Inwards(points), At{0.5, 0.5, 0.5} - Middle(points)), 0) << face;
    }
}

TEST_F(Maps, TheFourPiecesOfAQuadraticFaceInTheirOrder) {
    MakeCell(kFamilies[3], {0, 1, 2, 3}); // slot 3 carries the tag 104
    Printed(MeshAll);
    std::vector<std::vector<int>> slot3;
    for (int face = 0; face < GetCOM()->Faces->nNum; ++face) {
        if (GetCOM()->Faces->i1Tag[face] == 104) {
            slot3.push_back(NodesOfFace(face));
        }
    }
    EXPECT_EQ(slot3, (std::vector<std::vector<int>>{{6, 4, 5}, {0, 4, 6}, {1, 5, 4}, {2, 6, 5}}));
}

TEST_F(Maps, TheTwoHalvesOfAQuadraticEdgeInTheirOrder) {
    MakeCell(kFamilies[1], {0, 1, 2});
    Printed(MeshAll);
    std::vector<int> tags, types;
    EXPECT_EQ(FacesInOrder(&tags, &types),
              (std::vector<std::vector<int>>{{2, 3}, {3, 4}, {4, 5}, {5, 0}, {0, 1}, {1, 2}}));
    EXPECT_EQ(tags, (std::vector<int>{101, 101, 102, 102, 103, 103}));
}

// Face labels of a deck ----------------------------------------------------------------------------------

// Deck corners (from 1) of each label: edges 1-2, 2-3, 3-1; faces 1-2-3, 1-4-2, 2-4-3, 3-4-1.
const std::vector<std::set<int>> kEdgeLabels{{1, 2}, {2, 3}, {3, 1}};
const std::vector<std::set<int>> kFaceLabels{{1, 2, 3}, {1, 4, 2}, {2, 4, 3}, {3, 4, 1}};

// A deck of one element whose label S1, S2, ... is the surface of that number.
std::string LabelDeck(const char *type, const std::vector<At> &corners, const std::vector<std::set<int>> &edges,
                      const std::vector<int> &turn, std::size_t labels) {
    std::vector<At> points;
    for (const int corner : turn) {
        points.push_back(corners[static_cast<std::size_t>(corner)]);
    }
    for (const std::set<int> &edge : edges) {
        const std::vector<int> ends(edge.begin(), edge.end());
        points.push_back(
            0.5 * (points[static_cast<std::size_t>(ends[0] - 1)] + points[static_cast<std::size_t>(ends[1] - 1)]));
    }
    std::string deck = "*NODE\n";
    std::string element = "*ELEMENT, TYPE=" + std::string(type) + ", ELSET=E\n7";
    for (std::size_t i = 0; i < points.size(); ++i) {
        deck += std::to_string(i + 1) + "," + std::to_string(points[i].x) + "," + std::to_string(points[i].y) + "," +
                std::to_string(points[i].z) + "\n";
        element += (i % 6 == 5 ? ",\n" : ",") + std::to_string(i + 1);
    }
    deck += element + "\n";
    for (std::size_t label = 1; label <= labels; ++label) {
        deck += "*SURFACE, NAME=L" + std::to_string(label) + "\n7, S" + std::to_string(label) + "\n";
    }
    return deck;
}

// Tag of the surface of that name.
int SurfaceTag(const std::string &name) {
    for (const GRface *group = GetCOM()->GRface; group != nullptr; group = group->next) {
        if (name == group->c1Name) {
            return group->iTag;
        }
    }
    return -1;
}

void ExpectLabels(const char *type, const std::vector<At> &corners, const std::vector<std::set<int>> &edges,
                  const std::vector<std::set<int>> &labels) {
    std::vector<int> turn(corners.size());
    std::iota(turn.begin(), turn.end(), 0);
    do {
        fake::PutFile("deck.inp", LabelDeck(type, corners, edges, turn, labels.size()));
        Printed([] {
            LoadABQ("deck.inp");
            MeshAll();
        });
        const auto pieces = PiecesByTag();
        EXPECT_EQ(pieces.size(), labels.size());
        for (std::size_t label = 0; label < labels.size(); ++label) {
            std::vector<At> wanted;
            for (const int corner : labels[label]) {
                wanted.push_back(corners[static_cast<std::size_t>(turn[static_cast<std::size_t>(corner - 1)])]);
            }
            const auto found = pieces.find(SurfaceTag("L" + std::to_string(label + 1)));
            ASSERT_NE(found, pieces.end()) << type;
            double size = 0;
            for (const auto &piece : found->second) {
                size += Size(Extent(piece));
                const At apart = Middle(piece) - wanted[0]; // every piece lies in the plane or on the line
                const At beside =
                    wanted.size() == 2 ? Outer(apart, wanted[1] - wanted[0]) : At{Inner(apart, Extent(wanted)), 0, 0};
                EXPECT_NEAR(Size(beside), 0, 1e-12) << type << " label " << label + 1;
            }
            EXPECT_NEAR(size, Size(Extent(wanted)), 1e-12) << type << " label " << label + 1;
        }
        FreeCOM();
    } while (std::next_permutation(turn.begin(), turn.end()) && !testing::Test::HasFatalFailure());
}

TEST_F(Maps, DeckLabelsNameTheEdgesAndFacesOfTheDeck) {
    const std::vector<std::set<int>> none;
    const std::vector<std::set<int>> triangleEdges{{1, 2}, {2, 3}, {3, 1}};
    const std::vector<std::set<int>> tetrahedronEdges{{1, 2}, {2, 3}, {3, 1}, {1, 4}, {2, 4}, {3, 4}};
    ExpectLabels("CPE3", kTriangle, none, kEdgeLabels);
    ExpectLabels("STRI65", kTriangle, triangleEdges, kEdgeLabels);
    ExpectLabels("C3D4", kTetrahedron, none, kFaceLabels);
    ExpectLabels("C3D10", kTetrahedron, tetrahedronEdges, kFaceLabels);
}

} // namespace
