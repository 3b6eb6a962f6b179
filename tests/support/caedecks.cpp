// Decks as CAE programs write them: blocks of a grid, the sets and surfaces around them, where they stand, and their
// spelling.
//
// Lines are made of fields in a form of their own, "#12" for a whole number and "~0.5" for a real one; the speller at
// the end writes them in one of the ways that mean the same.
#include "tests/support/caedecks.h"

#include "tests/support/dice.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <set>
#include <string_view>
#include <tuple>

namespace {

using Ints = std::vector<int>;
using Strings = std::vector<std::string>;
using Point = std::array<double, 3>;
using Key = std::pair<int, int>; // an instance (0 within a part) and a number
using Keys = std::set<Key>;
using Side = std::pair<Key, int>; // of an element: S1 or E1 is 0
using Sides = std::set<Side>;

constexpr int kPositive = 100, kNegative = 101; // SPOS, SNEG
constexpr int kEither = 102;                    // a shell without label

struct Line {
    bool keyword;
    Strings fields;
};
using Lines = std::vector<Line>;

// Corners of faces (edges in two dimensions) in the order of the labels; edges in the order of their middle nodes.
struct Shape {
    int corners;
    std::vector<Ints> faces, edges;
    Strings types, quadratic, shells, quadraticShells; // the first of a list is the translator's own, where it has one
};

// clang-format off
const std::vector<Ints> kTriangle = {{0, 1}, {1, 2}, {2, 0}}, kSquare = {{0, 1}, {1, 2}, {2, 3}, {3, 0}};
const Shape kTri = {3, kTriangle, kTriangle,
    {"CPS3", "CPE3", "CPE3H", "CAX3", "DC2D3"}, {"CPS6", "CPE6", "CPE6M", "DC2D6"},
    {"S3", "S3R", "M3D3", "R3D3"}, {"STRI65", "M3D6"}};
const Shape kQuad = {4, kSquare, kSquare,
    {"CPS4", "CPE4R", "CAX4", "DC2D4"}, {"CPS8", "CPE8R", "CAX8R"}, {"S4", "S4R", "M3D4", "R3D4"}, {"S8R", "M3D8"}};
const Shape kTet = {4, {{0, 1, 2}, {0, 3, 1}, {1, 3, 2}, {2, 3, 0}}, {{0, 1}, {1, 2}, {2, 0}, {0, 3}, {1, 3}, {2, 3}},
    {"C3D4", "C3D4H", "DC3D4"}, {"C3D10", "C3D10M", "C3D10HS", "DC3D10"}, {}, {}};
const Shape kPyramid = {5, {{0, 1, 2, 3}, {0, 4, 1}, {1, 4, 2}, {2, 4, 3}, {3, 4, 0}}, {}, {"C3D5"}, {}, {}, {}};
const Shape kWedge = {6, {{0, 1, 2}, {3, 5, 4}, {0, 3, 4, 1}, {1, 4, 5, 2}, {2, 5, 3, 0}},
    {{0, 1}, {1, 2}, {2, 0}, {3, 4}, {4, 5}, {5, 3}, {0, 3}, {1, 4}, {2, 5}},
    {"C3D6", "DC3D6", "C3D6H"}, {"C3D15", "C3D15H", "DC3D15"}, {}, {}};
const Shape kHex = {8, {{0, 1, 2, 3}, {4, 7, 6, 5}, {0, 4, 5, 1}, {1, 5, 6, 2}, {2, 6, 7, 3}, {3, 7, 4, 0}},
    {{0, 1}, {1, 2}, {2, 3}, {3, 0}, {4, 5}, {5, 6}, {6, 7}, {7, 4}, {0, 4}, {1, 5}, {2, 6}, {3, 7}},
    {"C3D8", "C3D8R", "C3D8I", "DC3D8"}, {"C3D20", "C3D20R", "DC3D20"}, {}, {}};
// clang-format on

struct Element {
    const Shape *shape;
    Ints nodes;
    std::string group;    // ELSET= of its *ELEMENT line or generator
    std::string assigned; // ELSET= of the last section that assigns it
};

constexpr int kNodes = 0, kElements = 1;

// What has names: a part, or the assembly.
struct Scope {
    std::map<std::string, Keys> sets[2]; // of nodes, of elements
    std::set<std::string> own;           // element sets that *ELSET makes
    std::map<std::string, Sides> surfaces;
    std::map<std::string, Keys> nodeSurfaces;
    Lines lines;
};

struct Part : Scope {
    std::string name;
    bool shell = false;
    std::map<int, Point> nodes;
    std::map<int, Element> elements;
    double measure = 0;

    Ints Numbers(int kind) const {
        Ints numbers;
        for (const auto &node : nodes) {
            if (kind == kNodes) {
                numbers.push_back(node.first);
            }
        }
        for (const auto &element : elements) {
            if (kind == kElements) {
                numbers.push_back(element.first);
            }
        }
        return numbers;
    }
};

struct Instance {
    std::string name;
    const Part *part;
    Point shift{}, a{}, b{}; // shifted first, then turned about the line from a to b
    double degrees = 0;
};

// Where the instance puts the point, by Rodrigues' formula.
Point Moved(const Instance &instance, Point p) {
    Point axis{}, from{};
    double length = 0;
    for (std::size_t d = 0; d < 3; ++d) {
        p[d] += instance.shift[d];
        axis[d] = instance.b[d] - instance.a[d];
        from[d] = p[d] - instance.a[d];
        length += axis[d] * axis[d];
    }
    if (length == 0) {
        return p;
    }
    double along = 0;
    for (std::size_t d = 0; d < 3; ++d) {
        axis[d] /= std::sqrt(length);
        along += axis[d] * from[d];
    }
    const double angle = instance.degrees * std::acos(-1.0) / 180, c = std::cos(angle), s = std::sin(angle);
    for (std::size_t d = 0; d < 3; ++d) {
        const std::size_t e = (d + 1) % 3, f = (d + 2) % 3;
        p[d] = instance.a[d] + c * from[d] + s * (axis[e] * from[f] - axis[f] * from[e]) + (1 - c) * along * axis[d];
    }
    return p;
}

std::string Whole(int number) {
    return "#" + std::to_string(number);
}

std::string Real(double number) {
    char text[40];
    std::snprintf(text, sizeof text, "~%.10g", number);
    return text;
}

// As it stands in a deck: in quotes where it has blanks or small letters.
std::string Quoted(const std::string &name) {
    const bool plain =
        std::none_of(name.begin(), name.end(), [](char c) { return c == ' ' || (c >= 'a' && c <= 'z'); });
    return plain ? name : '"' + name + '"';
}

class Builder {
  public:
    explicit Builder(std::uint64_t seed) : dice_(seed) {
        deck_.plain = dice_.Chance(0.25);
        deck_.dimension = dice_.Of({2, 3, 3});
    }
    CaeDeck Make();

  private:
    std::string Name() {
        const char *const kStems[] = {"SET-", "_PICKEDSET", "FIX", "LOAD.", "my set ", "Top", "E_", "X"};
        const int stem = deck_.plain ? 2 : dice_.Below(8);
        return kStems[stem] + std::to_string(++names_);
    }

    void Add(Scope *scope, Strings keyword) {
        scope->lines.push_back({true, std::move(keyword)});
    }
    void AddRow(Scope *scope, Strings row) {
        scope->lines.push_back({false, std::move(row)});
    }

    // Blocks of a grid ----------------------------------------------------------------------------------

    int At(int i, int j, int k) const {
        return base_ + step_ * (i + (count_[0] + 1) * (j + (count_[1] + 1) * k));
    }
    Point PlaceOf(int i, int j, int k) const {
        return {origin_[0] + size_ * i, origin_[1] + size_ * j, origin_[2] + size_ * k};
    }
    // One point of each kind for each grid point, cell by cell.
    template <class F> void ForPoints(F f) const {
        for (int k = 0; k <= count_[2]; ++k) {
            for (int j = 0; j <= count_[1]; ++j) {
                for (int i = 0; i <= count_[0]; ++i) {
                    f(i, j, k);
                }
            }
        }
    }

    int NewNode(Part *part, const Point &place) {
        part->nodes[nextNode_] = place;
        nextNode_ += step_;
        return nextNode_ - step_;
    }

    void NewElement(Part *part, const Shape &shape, Ints nodes) {
        part->elements[nextElement_] = {&shape, std::move(nodes), "", ""};
        nextElement_ += step_;
    }

    // The cell between (i, j, k) and the points behind it, whole or in pieces: the squares of its outside stay whole
    // but for the top and bottom of wedges, which fill a whole column, and for the sides of tetrahedra, which fill the
    // part.
    void FillCell(Part *part, int i, int j, int k, int pieces, bool falling) {
        Ints c = {At(i, j, k), At(i + 1, j, k), At(i + 1, j + 1, k), At(i, j + 1, k)};
        if (deck_.dimension == 2) {
            if (pieces == 0) {
                NewElement(part, kQuad, c);
                return;
            }
            NewElement(part, kTri, falling ? Ints{c[0], c[1], c[2]} : Ints{c[0], c[1], c[3]});
            NewElement(part, kTri, falling ? Ints{c[0], c[2], c[3]} : Ints{c[1], c[2], c[3]});
            return;
        }
        c.insert(c.end(), {At(i, j, k + 1), At(i + 1, j, k + 1), At(i + 1, j + 1, k + 1), At(i, j + 1, k + 1)});
        const auto pick = [&](std::initializer_list<int> which) {
            Ints nodes;
            for (const int at : which) {
                nodes.push_back(c[static_cast<std::size_t>(at)]);
            }
            return nodes;
        };
        if (pieces == 0) {
            NewElement(part, kHex, c);
        } else if (pieces == 1) {
            NewElement(part, kWedge, falling ? pick({0, 1, 2, 4, 5, 6}) : pick({0, 1, 3, 4, 5, 7}));
            NewElement(part, kWedge, falling ? pick({0, 2, 3, 4, 6, 7}) : pick({1, 2, 3, 5, 6, 7}));
        } else if (pieces == 2) { // about a point in the middle, bases outside, their normals inwards
            Point middle = PlaceOf(i, j, k);
            for (double &value : middle) {
                value += size_ / 2;
            }
            c.push_back(NewNode(part, middle));
            for (const Ints &face : kHex.faces) {
                NewElement(part, kPyramid, pick({face[0], face[1], face[2], face[3], 8}));
            }
        } else { // around the diagonal
            for (const auto &[a, b] : {Key{1, 2}, {2, 3}, {3, 7}, {7, 4}, {4, 5}, {5, 1}}) {
                NewElement(part, kTet, pick({0, a, b, 6}));
            }
        }
    }

    void AddMiddles(Part *part) {
        std::map<Key, int> middles;
        for (auto &[number, element] : part->elements) {
            for (const Ints &edge : element.shape->edges) {
                const auto ends = std::minmax(element.nodes[static_cast<std::size_t>(edge[0])],
                                              element.nodes[static_cast<std::size_t>(edge[1])]);
                const auto [at, fresh] = middles.emplace(ends, nextNode_);
                if (fresh) {
                    const Point &a = part->nodes[ends.first], &b = part->nodes[ends.second];
                    NewNode(part, {(a[0] + b[0]) / 2, (a[1] + b[1]) / 2, (a[2] + b[2]) / 2});
                }
                element.nodes.push_back(at->second);
            }
        }
    }

    Part MakePart(const std::string &name) {
        Part part;
        part.name = name;
        count_ = {dice_.From(1, 4), dice_.From(1, 3), deck_.dimension == 3 ? dice_.From(1, 3) : 0};
        base_ = dice_.Of({1, 1, 101, dice_.From(1, 9000000)});
        step_ = deck_.plain ? 1 : dice_.Of({1, 1, 2, 10});
        size_ = dice_.Of({0.5, 1.0, 2.5, 40.0});
        origin_ = {1.0 * dice_.From(-3, 3), 1.0 * dice_.From(-3, 3), deck_.dimension == 3 ? dice_.From(-3, 3) : 0.0};
        nextNode_ = At(0, 0, count_[2] + 1);
        nextElement_ = dice_.Of({1, base_});
        part.shell = deck_.dimension == 2 && !deck_.plain && dice_.Chance(0.3);
        part.measure = std::pow(size_, deck_.dimension) * count_[0] * count_[1] * std::max(count_[2], 1);
        ForPoints([&](int i, int j, int k) { part.nodes[At(i, j, k)] = PlaceOf(i, j, k); });
        const bool tets = deck_.plain || dice_.Chance(0.3), generated = !tets && dice_.Chance(0.3);
        const bool quadratic = !generated && dice_.Chance(0.4);
        std::map<Key, Key> column; // what fills it
        ForPoints([&](int i, int j, int k) {
            if (i == count_[0] || j == count_[1] || (k == count_[2] && k > 0)) {
                return;
            }
            const Key kind = column.emplace(Key{i, j}, Key{dice_.Below(2), dice_.Below(2)}).first->second;
            const bool pyramids = kind.first == 0 && deck_.dimension == 3 && !quadratic && dice_.Chance(0.3);
            FillCell(&part, i, j, k, tets ? 3 : generated ? 0 : pyramids ? 2 : kind.first, kind.second == 0);
        });
        if (quadratic) {
            AddMiddles(&part);
        }
        generated ? WriteGenerated(&part) : WriteMesh(&part, quadratic);
        if (!deck_.plain && dice_.Chance(0.15)) {
            CopyMesh(&part);
        }
        return part;
    }

    // Writing a part's mesh -------------------------------------------------------------------------------

    Strings TypesOf(const Shape &shape, bool shell, bool quadratic) const {
        const Strings &types =
            shell ? (quadratic ? shape.quadraticShells : shape.shells) : (quadratic ? shape.quadratic : shape.types);
        return deck_.plain ? Strings{types[0]} : types;
    }

    void AddNodeRow(Part *part, int number, const Point &p, bool polar) {
        const double angle = std::atan2(p[1], p[0]) * 180 / std::acos(-1.0);
        Strings row = {Whole(number), Real(polar ? std::hypot(p[0], p[1]) : p[0]), Real(polar ? angle : p[1]),
                       Real(p[2])};
        row.resize(p[2] == 0 && dice_.Chance(0.3) ? 3 : 4);
        AddRow(part, row);
    }

    void WriteNodes(Part *part, const Ints &numbers) {
        Strings keyword = {"NODE"};
        if (!deck_.plain && dice_.Chance(0.3)) {
            const std::string name = Name();
            keyword.push_back("NSET=" + Quoted(name));
            for (const int number : numbers) {
                part->sets[kNodes][name].emplace(0, number);
            }
        }
        const bool polar = !deck_.plain && dice_.Chance(0.1);
        if (polar || (!deck_.plain && dice_.Chance(0.1))) {
            keyword.push_back(polar ? "SYSTEM=C" : "SYSTEM=R");
        }
        Add(part, keyword);
        for (const int number : numbers) {
            AddNodeRow(part, number, part->nodes[number], polar);
        }
    }

    void BeginElements(Part *part, const std::string &type, const std::string &group) {
        Add(part, group.empty() ? Strings{"ELEMENT", "TYPE=" + type}
                                : Strings{"ELEMENT", "TYPE=" + type, "ELSET=" + Quoted(group)});
    }

    void AddElementRow(Part *part, int number) {
        Element &element = part->elements[number];
        Strings row = {Whole(number)};
        for (const int node : element.nodes) {
            row.push_back(Whole(node));
        }
        AddRow(part, row);
    }

    void WriteMesh(Part *part, bool quadratic) {
        Ints numbers = part->Numbers(kNodes);
        if (dice_.Chance(0.2)) {
            dice_.Shuffle(&numbers);
        }
        for (const Ints &some : dice_.Deal(numbers, dice_.From(1, 3))) {
            if (!some.empty()) {
                WriteNodes(part, some);
            }
        }
        std::map<const Shape *, Ints> byShape;
        for (const auto &[number, element] : part->elements) {
            byShape[element.shape].push_back(number);
        }
        for (const Shape *shape :
             {&kTri, &kQuad, &kTet, &kPyramid, &kWedge, &kHex}) { // addresses have no order to rely on
            for (const Ints &some : dice_.Deal(byShape[shape], dice_.From(1, 2))) {
                const std::string group = deck_.plain || dice_.Chance(0.6) ? Name() : "";
                if (some.empty()) {
                    continue;
                }
                BeginElements(part, dice_.Of(TypesOf(*shape, part->shell, quadratic)), group);
                for (const int number : some) {
                    AddElementRow(part, number);
                    part->elements[number].group = group;
                    if (!group.empty()) {
                        part->sets[kElements][group].emplace(0, number);
                    }
                }
            }
        }
    }

    // The same as corners that are filled, and one element that is repeated.
    void WriteGenerated(Part *part) {
        const auto [nx, ny, nz] = std::tuple(count_[0], count_[1], count_[2]);
        Add(part, {"SYSTEM"});
        AddRow(part, {Real(1), Real(2), Real(deck_.dimension == 3 ? 3 : 0)});
        Add(part, {"NODE"});
        for (const int k : nz > 0 ? Ints{0, nz} : Ints{0}) {
            for (const auto &[i, j] : {Key{0, 0}, {nx, 0}, {0, ny}, {nx, ny}}) {
                const Point p = PlaceOf(i, j, k);
                AddNodeRow(part, At(i, j, k), {p[0] - 1, p[1] - 2, p[2] - (deck_.dimension == 3 ? 3 : 0)}, false);
            }
        }
        Add(part, {"SYSTEM"});
        Strings layers;
        for (const int k : nz > 0 ? Ints{0, nz} : Ints{0}) {
            Strings rows;
            for (const int j : {0, ny}) {
                rows.push_back(Name());
                Add(part, {"NGEN", "NSET=" + Quoted(rows.back())});
                AddRow(part, {Whole(At(0, j, k)), Whole(At(nx, j, k)), Whole(step_)});
                for (int i = 0; i <= nx; ++i) {
                    part->sets[kNodes][rows.back()].emplace(0, At(i, j, k));
                }
            }
            layers.push_back(Name());
            Add(part, {"NFILL", "NSET=" + Quoted(layers.back())});
            AddRow(part, {Quoted(rows[0]), Quoted(rows[1]), Whole(ny), Whole(At(0, 1, 0) - At(0, 0, 0))});
            for (int i = 0; i < (nx + 1) * (ny + 1); ++i) {
                part->sets[kNodes][layers.back()].emplace(0, At(i, 0, k));
            }
        }
        if (nz > 0) {
            Add(part, {"NFILL"});
            AddRow(part, {Quoted(layers[0]), Quoted(layers[1]), Whole(nz), Whole(At(0, 0, 1) - At(0, 0, 0))});
        }
        const int master = part->elements.begin()->first;
        const std::string group = Name(), rest = dice_.Chance(0.5) ? Name() : group;
        const Shape &shape = *part->elements[master].shape;
        BeginElements(part, dice_.Of(TypesOf(shape, part->shell, false)), group);
        AddElementRow(part, master);
        Add(part, {"ELGEN", "ELSET=" + Quoted(rest)});
        AddRow(part, {Whole(master), Whole(nx), Whole(step_), Whole(step_), Whole(ny), Whole(At(0, 1, 0) - base_),
                      Whole(nx * step_), Whole(std::max(nz, 1)), Whole(At(0, 0, 1) - base_), Whole(nx * ny * step_)});
        for (auto &[number, element] : part->elements) {
            element.group = number == master ? group : rest;
            part->sets[kElements][rest].emplace(0, number);
        }
        part->sets[kElements][group].emplace(0, master);
    }

    // All numbers from the first to the last as a set, and the step to a second such row of them.
    std::string SetOfAll(Part *part, int kind, int *step) {
        const Ints numbers = part->Numbers(kind);
        const std::string keyword = kind == kNodes ? "NSET" : "ELSET";
        std::string name = Name();
        Add(part, {keyword, keyword + "=" + Quoted(name), "GENERATE"});
        AddRow(part, {Whole(numbers.front()), Whole(numbers.back())});
        for (const int number : numbers) {
            part->sets[kind][name].emplace(0, number);
        }
        *step = numbers.back() - numbers.front() + dice_.From(1, 100);
        return name;
    }

    // NEW SET= or nothing.
    void AddNewSet(Part *part, int kind, Strings *keyword, const Ints &made) {
        if (dice_.Chance(0.5)) {
            const std::string name = Name();
            keyword->push_back("NEW SET=" + Quoted(name));
            for (const int number : made) {
                part->sets[kind][name].emplace(0, number);
            }
        }
    }

    // The whole mesh once more, beside itself.
    void CopyMesh(Part *part) {
        int nodeStep = 0, elementStep = 0;
        const std::string nodes = SetOfAll(part, kNodes, &nodeStep);
        const std::string elements = SetOfAll(part, kElements, &elementStep);
        part->own.insert(elements);
        const Point shift = {size_ * 7, size_ * dice_.From(-2, 2), deck_.dimension == 3 ? size_ : 0};
        Ints newNodes, newElements;
        for (const int number : part->Numbers(kNodes)) {
            const Point p = part->nodes.at(number);
            part->nodes[number + nodeStep] = {p[0] + shift[0], p[1] + shift[1], p[2] + shift[2]};
            newNodes.push_back(number + nodeStep);
        }
        for (const int number : part->Numbers(kElements)) {
            Element copy = part->elements.at(number);
            for (int &node : copy.nodes) {
                node += nodeStep;
            }
            part->elements[number + elementStep] = copy;
            newElements.push_back(number + elementStep);
        }
        part->measure *= 2;
        const std::string change = std::to_string(nodeStep);
        Strings keyword = {"NCOPY", "CHANGE NUMBER=" + change, "OLD SET=" + Quoted(nodes), "SHIFT"};
        AddNewSet(part, kNodes, &keyword, newNodes);
        Add(part, keyword);
        AddRow(part, {Real(shift[0]), Real(shift[1]), Real(shift[2])});
        keyword = {"ELCOPY", "ELEMENT SHIFT=" + std::to_string(elementStep), "OLD SET=" + Quoted(elements),
                   "SHIFT NODES=" + change};
        AddNewSet(part, kElements, &keyword, newElements);
        Add(part, keyword);
    }

    // Sets ----------------------------------------------------------------------------------------------

    // One row or more of members, from what the scope has: numbers (with `dot` in front) and names. Keys of the
    // instance, or as the scope has them where that is -1.
    Keys Members(Scope *to, const Scope &from, const Ints &numbers, int kind, const std::string &dot, int instance) {
        Keys keys;
        for (int rows = dice_.From(1, 2); rows > 0; --rows) {
            Strings row;
            for (int n = dice_.From(1, 16); n > 0; --n) {
                if (!from.sets[kind].empty() && (numbers.empty() || dice_.Chance(0.15))) {
                    auto set = from.sets[kind].begin();
                    std::advance(set, dice_.Below(static_cast<int>(from.sets[kind].size())));
                    row.push_back(dot + Quoted(set->first));
                    for (const Key &key : set->second) {
                        keys.emplace(instance < 0 ? key.first : instance, key.second);
                    }
                } else if (!numbers.empty()) {
                    const int number = dice_.Of(numbers);
                    row.push_back(dot.empty() ? Whole(number) : dot + std::to_string(number));
                    keys.emplace(instance, number);
                }
            }
            if (!row.empty()) {
                AddRow(to, row);
            }
        }
        return keys;
    }

    Keys Range(Scope *to, const Ints &numbers, int instance) {
        const int first = dice_.Of(numbers), step = dice_.From(1, 3), n = dice_.From(0, 30);
        const bool down = dice_.Chance(0.2);
        const int last = first + n * step;
        AddRow(to, down ? Strings{Whole(last), Whole(first), Whole(-step)}
                        : Strings{Whole(first), Whole(last), Whole(step)});
        Keys keys;
        for (const int number : numbers) {
            if (number >= first && number <= last && (number - first) % step == 0) {
                keys.emplace(instance, number);
            }
        }
        return keys;
    }

    std::string SetName(const Scope &scope, int kind) { // now and then one that exists
        if (!scope.sets[kind].empty() && dice_.Chance(0.25)) {
            return scope.sets[kind].begin()->first;
        }
        return Name();
    }

    // A set of the part's, or of the assembly's with INSTANCE=.
    void AddSet(Scope *to, const Part &from, int kind, const std::string &name, const Instance *instance, int key) {
        Strings keyword = {kind == kNodes ? "NSET" : "ELSET", (kind == kNodes ? "NSET=" : "ELSET=") + Quoted(name)};
        if (instance != nullptr) {
            keyword.push_back("INSTANCE=" + Quoted(instance->name));
        }
        const Ints numbers = from.Numbers(kind);
        const int form = dice_.Below(4);
        const bool ofElements = form == 0 && kind == kNodes && instance == nullptr && !from.sets[kElements].empty();
        if (form == 1 || form == 2) {
            keyword.push_back(form == 1 ? "GENERATE" : dice_.Of({"INTERNAL", "UNSORTED"}));
        }
        Keys keys;
        if (ofElements) {
            const auto &set = *from.sets[kElements].begin();
            keyword.push_back("ELSET=" + Quoted(set.first));
            for (const Key &element : set.second) {
                for (const int node : from.elements.at(element.second).nodes) {
                    keys.emplace(0, node);
                }
            }
        }
        if (dice_.Chance(0.3)) {
            std::rotate(keyword.begin() + 1, keyword.begin() + 2, keyword.end());
        }
        Add(to, keyword);
        if (!ofElements) {
            keys = form == 1 ? Range(to, numbers, key) : Members(to, from, numbers, kind, "", key);
        }
        to->sets[kind][name].insert(keys.begin(), keys.end());
        if (kind == kElements) {
            to->own.insert(name);
        }
    }

    // Surfaces -------------------------------------------------------------------------------------------

    // The sides of those elements that no other element of their part has.
    static Sides FreeSides(const Part &part, const Keys &elements) {
        std::map<std::set<int>, int> owners;
        const auto key = [](const Element &element, const Ints &face) {
            std::set<int> nodes;
            for (const int at : face) {
                nodes.insert(element.nodes[static_cast<std::size_t>(at)]);
            }
            return nodes;
        };
        for (const auto &entry : part.elements) {
            for (const Ints &face : entry.second.shape->faces) {
                ++owners[key(entry.second, face)];
            }
        }
        Sides sides;
        for (const Key &which : elements) {
            const Element &element = part.elements.at(which.second);
            for (std::size_t f = 0; f < element.shape->faces.size() && !part.shell; ++f) {
                if (owners[key(element, element.shape->faces[f])] == 1) {
                    sides.emplace(which, static_cast<int>(f));
                }
            }
            if (part.shell) {
                sides.emplace(which, kEither);
            }
        }
        return sides;
    }

    // A row about those elements, with a label or without.
    Sides AddSurfaceRow(Scope *to, const Part &part, const std::string &word, const Keys &elements) {
        if (dice_.Chance(0.15)) {
            AddRow(to, {word});
            return FreeSides(part, elements);
        }
        const auto &faces = part.elements.at(elements.begin()->second).shape->faces;
        const int side = part.shell && dice_.Chance(0.4) ? dice_.Of({kPositive, kNegative})
                                                         : dice_.Below(static_cast<int>(faces.size()));
        AddRow(to, {word, side == kPositive   ? "SPOS"
                          : side == kNegative ? "SNEG"
                                              : (part.shell ? "E" : "S") + std::to_string(side + 1)});
        Sides sides;
        for (const Key &which : elements) {
            const auto nFaces = static_cast<int>(part.elements.at(which.second).shape->faces.size());
            if (side < nFaces || side >= kPositive) {
                sides.emplace(which, side);
            }
        }
        return sides;
    }

    void AddSurface(Scope *to, const Part &from, const std::string &dot, int instance) {
        const std::string name = Name();
        Strings keyword = {"SURFACE", "NAME=" + Quoted(name)};
        if (dice_.Chance(0.5)) {
            keyword.push_back("TYPE=ELEMENT");
        }
        if (dice_.Chance(0.2)) {
            keyword.push_back("INTERNAL");
        }
        Add(to, keyword);
        Sides sides;
        for (int rows = dice_.From(1, 4); rows > 0; --rows) {
            const int number = dice_.Of(from.Numbers(kElements));
            std::string word = dot.empty() ? Whole(number) : dot + std::to_string(number);
            Keys elements = {{instance, number}};
            if (!from.sets[kElements].empty() && dice_.Chance(0.6)) {
                auto set = from.sets[kElements].begin();
                std::advance(set, dice_.Below(static_cast<int>(from.sets[kElements].size())));
                word = dot + Quoted(set->first);
                elements.clear();
                for (const Key &key : set->second) {
                    elements.emplace(instance, key.second);
                }
            }
            const Sides more = elements.empty() ? Sides{} : AddSurfaceRow(to, from, word, elements);
            sides.insert(more.begin(), more.end());
        }
        to->surfaces[name] = sides;
    }

    void AddNodeSurface(Scope *to, const Part &from) {
        const std::string name = Name();
        const int number = dice_.Of(from.Numbers(kNodes));
        Keys keys = {{0, number}};
        Add(to, {"SURFACE", "TYPE=NODE", "NAME=" + Quoted(name)});
        AddRow(to, {Whole(number), Real(1)});
        if (!from.sets[kNodes].empty()) {
            AddRow(to, {Quoted(from.sets[kNodes].begin()->first)});
            keys.insert(from.sets[kNodes].begin()->second.begin(), from.sets[kNodes].begin()->second.end());
        }
        to->nodeSurfaces[name] = keys;
    }

    void Combine(Scope *to) {
        const auto &[first, a] = *to->surfaces.begin();
        const auto &[second, b] = *to->surfaces.rbegin();
        const std::string name = Name(), way = dice_.Of({"UNION", "INTERSECTION", "DIFFERENCE"});
        Add(to, {"SURFACE", "COMBINE=" + way, "NAME=" + Quoted(name)});
        AddRow(to, {Quoted(first), Quoted(second)});
        Sides sides = way == "UNION" ? b : Sides{};
        for (const Side &side : a) {
            if (way == "UNION" || (b.count(side) != 0) == (way == "INTERSECTION")) {
                sides.insert(side);
            }
        }
        to->surfaces[name] = sides;
    }

    // The whole deck ---------------------------------------------------------------------------------------

    // Sets and surfaces that have nothing in common, all in plain words.
    void AddPlainSets(Part *part) {
        Ints nodes = part->Numbers(kNodes);
        dice_.Shuffle(&nodes);
        for (const Ints &some : dice_.Deal(nodes, 3)) {
            const std::string name = Name();
            Add(part, {"NSET", "NSET=" + name});
            part->sets[kNodes][name] = {};
            for (const int number : some) {
                AddRow(part, {Whole(number)});
                part->sets[kNodes][name].emplace(0, number);
            }
        }
        for (int label = 1; label <= 3; ++label) {
            const std::string name = Name(), set = Name();
            const int number = dice_.Of(part->Numbers(kElements));
            Add(part, {"ELSET", "ELSET=" + set});
            AddRow(part, {Whole(number)});
            Add(part, {"SURFACE", "NAME=" + name});
            AddRow(part, {set, "S" + std::to_string(label)});
            part->own.insert(set);
            part->sets[kElements][set].emplace(0, number);
            part->surfaces[name] = {{{0, number}, label - 1}};
        }
    }

    void AddSets(Part *part) {
        if (deck_.plain) {
            AddPlainSets(part);
            return;
        }
        for (int n = dice_.From(0, 7); n > 0; --n) {
            const int kind = dice_.Below(2);
            AddSet(part, *part, kind, SetName(*part, kind), nullptr, 0);
        }
        for (int n = dice_.From(0, 3); n > 0; --n) {
            AddSurface(part, *part, "", 0);
        }
        if (dice_.Chance(0.2)) {
            AddNodeSurface(part, *part);
        }
        if (!part->surfaces.empty() && dice_.Chance(0.4)) {
            Combine(part);
        }
        for (const auto &[name, keys] : part->sets[kElements]) {
            if (dice_.Chance(0.3)) {
                Assign(part, name, keys);
            }
        }
    }

    void Assign(Part *part, const std::string &name, const Keys &keys) {
        Add(part, {"SOLID SECTION", "ELSET=" + Quoted(name), "MATERIAL=STEEL"});
        AddRow(part, {"~1.", ""});
        for (const Key &key : keys) {
            part->elements[key.second].assigned = name;
        }
    }

    void AddInstance(const Part &part, bool own) {
        const std::string name = dice_.Of({"I-", "INST.", "Block "}) + std::to_string(++names_);
        Add(&root_, {"INSTANCE", "NAME=" + Quoted(name), "PART=" + part.name});
        Instance instance{name, &part};
        const bool turned = dice_.Chance(0.5);
        if (turned || dice_.Chance(0.5)) {
            instance.shift = {1.0 * dice_.From(-9, 9), 1.0 * dice_.From(-9, 9), deck_.dimension == 3 ? 1.5 : 0};
            AddRow(&root_, {Real(instance.shift[0]), Real(instance.shift[1]), Real(instance.shift[2])});
        }
        if (turned) {
            instance.a = {1, 2, 0};
            instance.b = {deck_.dimension == 3 ? 3.0 : 1.0, 2, 5}; // in the plane the axis stands on it
            instance.degrees = dice_.From(-180, 180);
            AddRow(&root_, {Real(1), Real(2), Real(0), Real(instance.b[0]), Real(2), Real(5), Real(instance.degrees)});
        }
        if (own) {
            root_.lines.insert(root_.lines.end(), part.lines.begin(), part.lines.end());
        }
        Add(&root_, {"END INSTANCE"});
        instances_.push_back(instance);
    }

    void AddAssemblySets() {
        for (int n = dice_.From(0, 8); n > 0; --n) {
            const int at = dice_.Below(static_cast<int>(instances_.size())), kind = dice_.Below(2);
            const Instance &instance = instances_[static_cast<std::size_t>(at)];
            const Part &part = *instance.part;
            std::string name = SetName(root_, kind);
            if (!part.sets[kind].empty() && dice_.Chance(0.2)) {
                name = part.sets[kind].begin()->first; // another set of that name
            }
            if (dice_.Chance(0.6)) {
                AddSet(&root_, part, kind, name, &instance, at);
                continue;
            }
            Add(&root_, {kind == kNodes ? "NSET" : "ELSET", (kind == kNodes ? "NSET=" : "ELSET=") + Quoted(name)});
            Keys keys = Members(&root_, part, part.Numbers(kind), kind, Quoted(instance.name) + ".", at);
            if (!root_.sets[kind].empty()) {
                const Keys more = Members(&root_, root_, {}, kind, "", -1);
                keys.insert(more.begin(), more.end());
            }
            root_.sets[kind][name].insert(keys.begin(), keys.end());
            if (kind == kElements) {
                root_.own.insert(name);
            }
        }
        for (int n = dice_.From(0, 2); n > 0; --n) {
            const int at = dice_.Below(static_cast<int>(instances_.size()));
            const Instance &instance = instances_[static_cast<std::size_t>(at)];
            AddSurface(&root_, *instance.part, Quoted(instance.name) + ".", at);
        }
        if (!root_.surfaces.empty() && dice_.Chance(0.3)) {
            Combine(&root_);
        }
    }

    void Assemble() {
        std::vector<bool> own;
        for (const Part &part : parts_) {
            own.push_back(dice_.Chance(0.2)); // its mesh stands within its one instance
            Add(&root_, {"PART", "NAME=" + part.name});
            if (!own.back()) {
                root_.lines.insert(root_.lines.end(), part.lines.begin(), part.lines.end());
            }
            Add(&root_, {"END PART"});
        }
        Add(&root_, {"ASSEMBLY", "NAME=ASSEMBLY"});
        for (std::size_t p = 0; p < parts_.size(); ++p) {
            for (int n = own[p] ? 1 : dice_.Of({1, 1, 2, 3}); n > 0; --n) {
                AddInstance(parts_[p], own[p]);
            }
        }
        AddAssemblySets();
        Add(&root_, {"END ASSEMBLY"});
    }

    // What it means -----------------------------------------------------------------------------------------

    // With its instance's name where there are several, or where the assembly has that name, too.
    template <class Records>
    std::string Full(const Instance &instance, const std::string &name, const Records &others) const {
        const bool alone = instance.name.empty() || (instances_.size() == 1 && others.count(name) == 0);
        return alone ? name : instance.name + "." + name;
    }

    void CountScope(const Instance &instance, const Scope &scope) {
        const auto count = [](std::vector<CaeCount> *to, const std::string &name, std::size_t n) {
            to->push_back({name, static_cast<long long>(n)});
        };
        for (const auto &[name, keys] : scope.sets[kNodes]) {
            count(&deck_.nodeSets, Full(instance, name, root_.sets[kNodes]), keys.size());
        }
        for (const auto &[name, keys] : scope.nodeSurfaces) {
            count(&deck_.nodeSets, Full(instance, name, root_.surfaces), keys.size());
        }
        for (const std::string &name : scope.own) {
            count(&deck_.elementSets, Full(instance, name, root_.own), scope.sets[kElements].at(name).size());
        }
        for (const auto &[name, sides] : scope.surfaces) {
            count(&deck_.surfaces, Full(instance, name, root_.surfaces), sides.size());
        }
    }

    void CountPart(const Instance &instance) {
        const Part &part = *instance.part;
        deck_.nodes += static_cast<long long>(part.nodes.size());
        deck_.elements += static_cast<long long>(part.elements.size());
        deck_.measure += part.measure;
        for (const auto &node : part.nodes) {
            const Point place = Moved(instance, node.second);
            for (std::size_t d = 0; d < 3; ++d) {
                deck_.places[d] += place[d];
            }
        }
        CountScope(instance, part);
        std::map<std::string, long long> groups;
        for (const auto &entry : part.elements) {
            const Element &element = entry.second;
            const std::string &set = element.group.empty() ? element.assigned : element.group;
            ++groups[!set.empty() ? Full(instance, set, root_.own) : instance.name.empty() ? "ALL" : instance.name];
        }
        for (const auto &[name, count] : groups) {
            deck_.cellGroups.push_back({name, count});
        }
    }

    Dice dice_;
    CaeDeck deck_;
    int names_ = 0;
    std::array<int, 3> count_{};
    int base_ = 1, step_ = 1, nextNode_ = 0, nextElement_ = 0;
    double size_ = 1;
    Point origin_{};
    std::vector<Part> parts_;
    std::vector<Instance> instances_;
    Scope root_;
};

// Writes lines in every way that must make no difference.
class Speller {
  public:
    Speller(Dice *dice, CaeDeck *deck) : dice_(*dice), deck_(*deck), plain_(deck->plain), letters_(dice_.Below(3)) {
        blanks_ = dice_.Of({0.0, 0.1, 0.5});
        comments_ = dice_.Of({0.0, 0.0, 0.1});
        odd_ = plain_ ? 0.0 : dice_.Of({0.0, 0.0, 0.1, 0.5});
        end_ = dice_.Of({"\n", "\n", "\r\n"});
    }

    // The lines from `first` to, not including, `last`; some of them through files.
    std::string Spell(const Lines &lines, std::size_t first, std::size_t last, int depth) {
        std::string text;
        for (std::size_t at = first; at < last;) {
            std::size_t end = at + 1;
            while (end < last && !lines[end].keyword) {
                ++end;
            }
            std::string section;
            const bool inFile = IsMesh(lines[at]) && end > at + 1 && dice_.Chance(odd_ * 0.1);
            Strings keyword = lines[at].fields;
            std::string rows;
            for (std::size_t row = at + 1; row < end; ++row) {
                rows += Spelled(lines[row], keyword[0]);
            }
            if (inFile) {
                keyword.push_back("INPUT=" + PutFile(rows));
                rows.clear();
            }
            section = Spelled({true, keyword}, "") + rows;
            if (IsMesh(lines[at]) && depth < 3 && dice_.Chance(odd_ * 0.2)) {
                section = Spelled({true, {"INCLUDE", "INPUT=" + PutFile(section)}}, "");
            }
            text += section;
            at = end;
        }
        return text;
    }

  private:
    static bool IsMesh(const Line &line) {
        const std::string &name = line.fields[0];
        return line.keyword && (name == "NODE" || name == "ELEMENT");
    }

    std::string PutFile(const std::string &text) {
        std::string name =
            (dice_.Chance(0.5) ? "sub/" : "") + std::string("f") + std::to_string(deck_.files.size()) + ".inp";
        deck_.files[name] = text;
        return name;
    }

    std::string Blank() {
        return dice_.Chance(blanks_) ? dice_.Of({" ", "  ", "\t"}) : "";
    }

    std::string Cut(const std::string &word, std::size_t least) {
        return dice_.Chance(odd_) && word.size() > least
                   ? word.substr(0, static_cast<std::size_t>(
                                        dice_.From(static_cast<int>(least), static_cast<int>(word.size()))))
                   : word;
    }

    std::string Field(const std::string &field, bool isKeyword, bool isFirst) {
        std::string text = field.substr(field[0] == '#' || field[0] == '~' ? 1 : 0);
        if (field[0] == '#') {
            return dice_.Chance(odd_ * 0.1) ? text + dice_.Of({".", ".0"}) : text;
        }
        if (field[0] == '~') {
            const bool point = text.find_first_of(".e") != std::string::npos;
            return text + (dice_.Chance(odd_ * 0.3) && text.find('e') == std::string::npos ? (point ? "d0" : ".D+00")
                           : point                                                         ? ""
                                                                                           : ".");
        }
        static const std::set<std::string> kLong = {"ELEMENT", "SURFACE", "INCLUDE", "INSTANCE", "ASSEMBLY"};
        if (isKeyword && isFirst) {
            return "*" + (kLong.count(text) != 0 ? Cut(text, text == "ASSEMBLY" ? 5 : 4) : text);
        }
        const std::size_t equals = text.find('=');
        if (isKeyword) {
            const std::string word = Cut(text.substr(0, equals), 3);
            return equals == std::string::npos ? word : word + Blank() + "=" + Blank() + text.substr(equals + 1);
        }
        return text;
    }

    std::string Case(std::string text) {
        bool quoted = false;
        for (char &c : text) {
            quoted = quoted != (c == '"');
            const bool small = letters_ == 1 || (letters_ == 2 && dice_.Chance(0.5));
            c = !quoted && small && c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
        }
        return text;
    }

    // The line with the commas and line ends that it may have.
    std::string Spelled(const Line &line, const std::string &keyword) {
        const bool breaks = line.keyword || keyword == "ELEMENT";
        const bool file = line.keyword && line.fields.back().compare(0, 6, "INPUT=") == 0;
        std::string text;
        while (dice_.Chance(comments_)) {
            text += dice_.Of({"** Section: A, B,", "**", "", "***NODE"}) + end_;
        }
        for (std::size_t i = 0; i < line.fields.size(); ++i) {
            const bool last = i + 1 == line.fields.size();
            const std::string field = Field(line.fields[i], line.keyword, i == 0);
            text += Blank() + (file && last ? field : Case(field)) + Blank() + (last ? "" : ",");
            if (breaks && !last && dice_.Chance(odd_ * 0.1)) {
                text += end_;
            }
        }
        const bool stray = keyword == "ELEMENT" || keyword == "NSET" || keyword == "ELSET" ||
                           (keyword == "NODE" && line.fields.size() == 4);
        return text + (stray && !line.keyword && dice_.Chance(odd_ * 0.3) ? "," : "") + end_;
    }

    Dice &dice_;
    CaeDeck &deck_;
    bool plain_;
    int letters_;
    double blanks_, comments_, odd_;
    std::string end_;
};

CaeDeck Builder::Make() {
    const bool flat = deck_.plain || dice_.Chance(0.2);
    for (int n = flat ? 1 : dice_.Of({1, 1, 2}); n > 0; --n) {
        parts_.push_back(MakePart("P" + std::to_string(n)));
        AddSets(&parts_.back());
    }
    Add(&root_, {"HEADING"});
    if (flat) {
        instances_.push_back({"", &parts_[0]});
        root_.lines.insert(root_.lines.end(), parts_[0].lines.begin(), parts_[0].lines.end());
    } else {
        Assemble();
    }
    for (const Instance &instance : instances_) {
        CountPart(instance);
    }
    CountScope({"", nullptr}, root_);
    deck_.text = Speller(&dice_, &deck_).Spell(root_.lines, 0, root_.lines.size(), 0);
    return deck_;
}

} // namespace

CaeDeck MakeCaeDeck(std::uint64_t seed) {
    return Builder(seed).Make();
}
