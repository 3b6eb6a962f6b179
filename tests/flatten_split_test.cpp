// Elements cut into pieces: whatever the numbers are, the pieces fill the element and fit their neighbours.
#include "flatten/split.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>
#include <numeric>
#include <set>
#include <vector>

namespace {

using deck::Shape;
using flatten::Pieces;
using Triangle = std::array<int, 3>;
using Points = std::vector<std::array<double, 3>>;

const Points kCube = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}};
const Points kPrism = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 1}, {0, 1, 1}};
const Points kPyramid = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0.5, 0.5, 1}};

// Six times the volume.
double Volume(const Points &p, const int *c) {
    std::array<std::array<double, 3>, 3> d{};
    for (std::size_t k = 0; k < 3; ++k) {
        for (std::size_t i = 0; i < 3; ++i) {
            d[k][i] = p[static_cast<std::size_t>(c[k + 1])][i] - p[static_cast<std::size_t>(c[0])][i];
        }
    }
    return d[0][0] * (d[1][1] * d[2][2] - d[1][2] * d[2][1]) - d[0][1] * (d[1][0] * d[2][2] - d[1][2] * d[2][0]) +
           d[0][2] * (d[1][0] * d[2][1] - d[1][1] * d[2][0]);
}

// How many pieces have each triangle, by numbers.
std::map<Triangle, int> Triangles(const Pieces &pieces, const int *numbers) {
    std::map<Triangle, int> triangles;
    for (int i = 0; i < pieces.count; ++i) {
        const int *c = pieces.piece[static_cast<std::size_t>(i)].corner;
        for (int without = 0; without < 4; ++without) {
            Triangle triangle{};
            for (int k = 0, n = 0; k < 4; ++k) {
                if (k != without) {
                    triangle[static_cast<std::size_t>(n++)] = numbers[c[k]];
                }
            }
            std::sort(triangle.begin(), triangle.end());
            ++triangles[triangle];
        }
    }
    return triangles;
}

// The triangles of the shape's faces by the rule: quadrilaterals are cut through the smallest number.
std::vector<Triangle> Boundary(Shape shape, const int *numbers) {
    std::vector<Triangle> triangles;
    for (int f = 0; f < FacesOf(shape); ++f) {
        const deck::FaceRow &face = deck::FaceOf(shape, f);
        std::vector<int> around;
        for (int i = 0; i < face.nCorners; ++i) {
            around.push_back(numbers[face.corner[i]]);
        }
        std::rotate(around.begin(), std::min_element(around.begin(), around.end()), around.end());
        for (std::size_t i = 1; i + 1 < around.size(); ++i) {
            Triangle triangle{around[0], around[i], around[i + 1]};
            std::sort(triangle.begin(), triangle.end());
            triangles.push_back(triangle);
        }
    }
    std::sort(triangles.begin(), triangles.end());
    return triangles;
}

// The triangles that only one piece has.
std::vector<Triangle> Outside(const Pieces &pieces, const int *numbers) {
    std::vector<Triangle> once;
    for (const auto &[triangle, count] : Triangles(pieces, numbers)) {
        EXPECT_LE(count, 2);
        if (count == 1) {
            once.push_back(triangle);
        }
    }
    return once;
}

// All orders of the numbers: volume, boundary, interior. The counts of pieces that occur.
std::map<int, int> TryAllOrders(Shape shape, const Points &points, double volume) {
    std::vector<int> numbers(points.size());
    std::iota(numbers.begin(), numbers.end(), 11);
    std::map<int, int> counts;
    do {
        const Pieces pieces = flatten::Split(shape, numbers.data());
        ++counts[pieces.count];
        double sum = 0;
        for (int i = 0; i < pieces.count; ++i) {
            const double piece = Volume(points, pieces.piece[static_cast<std::size_t>(i)].corner);
            EXPECT_GT(piece, 0.1);
            sum += piece;
        }
        EXPECT_DOUBLE_EQ(sum, volume);
        EXPECT_EQ(Outside(pieces, numbers.data()), Boundary(shape, numbers.data()));
    } while (std::next_permutation(numbers.begin(), numbers.end()) && !testing::Test::HasFailure());
    return counts;
}

TEST(Split, HexahedraAreFiveOrSixTetrahedra) {
    const std::map<int, int> counts = TryAllOrders(Shape::hex8, kCube, 6);
    EXPECT_EQ(counts.size(), 2u);
    EXPECT_GT(counts.at(5), 0);
    EXPECT_GT(counts.at(6), 0);
}

TEST(Split, WedgesAreThree) {
    EXPECT_EQ(TryAllOrders(Shape::wedge6, kPrism, 3), (std::map<int, int>{{3, 720}}));
}

TEST(Split, PyramidsAreTwo) {
    EXPECT_EQ(TryAllOrders(Shape::pyramid5, kPyramid, 2), (std::map<int, int>{{2, 120}}));
}

TEST(Split, HexahedronNumberedAroundHasSixWithADiagonalThroughTheBody) {
    const int numbers[] = {1, 2, 3, 4, 5, 6, 7, 8};
    // Opposite faces 5876, 2673, 3784 are cut through 5, 2 and 3: one diagonal ends in 7 (3 is cut to 8, 2 to 7).
    const Pieces pieces = flatten::Split(Shape::hex8, numbers);
    EXPECT_EQ(pieces.count, 6);
}

TEST(Split, RepeatedNodesLoseTheirPieces) {
    const int wedge[] = {1, 2, 3, 3, 5, 6, 7, 7}; // a hexahedron with two edges shrunk
    EXPECT_EQ(flatten::Split(Shape::hex8, wedge).count, 3);
    const int pyramid[] = {1, 2, 3, 4, 5, 5, 5, 5};
    EXPECT_EQ(flatten::Split(Shape::hex8, pyramid).count, 2);
    const int tetrahedron[] = {1, 2, 3, 3, 5, 5, 5, 5};
    EXPECT_EQ(flatten::Split(Shape::hex8, tetrahedron).count, 1);
    const int triangle[] = {1, 2, 3, 3};
    EXPECT_EQ(flatten::Split(Shape::quad4, triangle).count, 1);
    const int line[] = {1, 2, 2, 1};
    EXPECT_EQ(flatten::Split(Shape::quad4, line).count, 0);
}

TEST(Split, QuadrilateralsAreCutThroughTheSmallest) {
    const int numbers[] = {7, 3, 9, 8};
    const Pieces pieces = flatten::Split(Shape::quad4, numbers);
    ASSERT_EQ(pieces.count, 2);
    EXPECT_TRUE(std::equal(pieces.piece[0].corner, pieces.piece[0].corner + 3, std::array<int, 3>{1, 2, 3}.begin()));
    EXPECT_TRUE(std::equal(pieces.piece[1].corner, pieces.piece[1].corner + 3, std::array<int, 3>{1, 3, 0}.begin()));
    EXPECT_EQ(flatten::SplitOtherwise(Shape::quad4, numbers, 0).piece[0].corner[0], 2);
    EXPECT_EQ(flatten::SplitOtherwise(Shape::quad4, numbers, 1).count, 0);
}

// All ways fill the cube, if not with the faces of the rule. Those from one corner cut three faces in two ways each.
TEST(Split, OtherWaysFillTheElement) {
    const int numbers[] = {5, 2, 8, 1, 7, 3, 6, 4};
    std::map<int, std::set<std::vector<Triangle>>> outside; // by the corner
    for (int way = 0; way < flatten::kMostWays; ++way) {
        const Pieces pieces = flatten::SplitOtherwise(Shape::hex8, numbers, way);
        double sum = 0;
        for (int i = 0; i < pieces.count; ++i) {
            sum += Volume(kCube, pieces.piece[static_cast<std::size_t>(i)].corner);
        }
        EXPECT_EQ(pieces.count, 6);
        EXPECT_DOUBLE_EQ(sum, 6);
        outside[pieces.piece[0].corner[3]].insert(Outside(pieces, numbers));
    }
    EXPECT_EQ(outside.size(), 8u);
    for (const auto &[corner, ways] : outside) {
        EXPECT_EQ(ways.size(), 8u) << corner;
    }
}

} // namespace
