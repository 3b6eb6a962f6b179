// Random decks: the mesh, the sections around it, what is wrong with them, and their spelling.
//
// Sections are made in the form that remains when blanks are dropped and letters made capital; the speller at the end
// puts blanks, lower case, comments, empty lines and continuation lines back in.
#include "tests/support/decks.h"

#include "tests/support/dice.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <map>
#include <set>
#include <utility>
#include <vector>

namespace {

using Row = std::vector<std::string>; // fields
using Strings = std::vector<std::string>;
using Ints = std::vector<int>;

struct Section {
    Row head; // keyword and parameters
    std::vector<Row> rows;
};

// Elements' corners and nodes are points of the mesh, nodes in the deck's order.
struct Element {
    Ints corners, nodes;
    int number;
};

// What no reader knows, and what every reader refuses: sections of a head and rows.
const char kUnknown[] = R"(
HEADING|A MODEL, MADE AT RANDOM|1, 2, 3; NODEOUTPUT|U, RF; NODEPRINT,NSET=ALL|U; ELEMENTOUTPUT,ELSET=E1|S,; STEP;
MATERIAL,NAME=STEEL; ELASTIC|210000., 0.3; STATIC|1., 1.; SOLIDSECTION,ELSET=E1,MATERIAL=STEEL|,; ENDSTEP; NODEFILE|U;
BOUNDARY|FIX, 1, 3|1, 1, 3, 0.; SURFACEINTERACTION,NAME=I1|1.,; NSETS,NSET=X|1, 2; ELCOPY,ELEMENTSHIFT=10;
RESTART,WRITE,|FREQUENCY=1; PREPRINT,ECHO=NO,MODEL; NODALTHICKNESS|1, 0.1|2, 0.1;)";
const char kRefused[] = R"(
NODE,SYSTEM=C|900001,1.,2.,3.; NODE,INPUT=NODES.INP; NODE,NSET=MYINPUTS|900002,1.,2.; NODE,SYSTEM=R,INPUT=N;
NSET,GENERATE,NSET=G,ELSET=E|1,9; NSET,INTERNAL,GENERATE,NSET=G|1,9; NSET,NSET=RANGE,GENERATE|1,100,1;
NSET,NSET=ELSETNODES|1,2; NSET,NSET=U,UNSORTED|3,2,1; NSET,NSET=E,ELSET=E1; NSET,INSTANCE=P-1,NSET=E,INTERNAL|1,2;
ELSET,UNSORTED,INTERNAL,GENERATE,ELSET=G|1,9; ELSET,ELSET=RANGE,GENERATE|1,100,1;
ELSET,ELSET=I,INTERNAL,INSTANCE=P-1|1,2,3; SURFACE,NAME=C,CROP,COMBINE=UNION|A,B; SURFACE,NAME=C,COMBINE=UNION|A,B;
SURFACE,NAME=C,SCALETHICK,NOOFFSET,MAXRATIO=2|1,S1; SURFACE,TYPE=ELEMENT,NAME=N,NOTHICK,CROP|1,S1;
SURFACE,NAME=C,REGIONTYPE=X,FILLETRADIUS=1,DEFINITION=COORDINATES; SURFACE,TYPE=NODE,NAME=N|FIX,1.;
SURFACE,NAME=T,TYPE=; SURFACE,NAME=TRIMMED|1,S1; ELEMENT,ELSET=NOTYPE|1,2,3; ELEMENT,TYPE=C3D10M,ELSET=M;
ELEMENT,TYPE=S4R,ELSET=SHELL|900001,1,2,3,4|900002,1,2,3,4; ELEMENT,TYPE=C3D8|900003,1,2,3,4,5,6,7,8;
ELEMENT,TYPE=,ELSET=M|1,2; ELEMENT,TYPE=CPS3,ELSET=O,OFFSET=0.5|900004,1,2,3; ELEMENT,TYPE=C3D4,FILE=F,INPUT=I;
ELEMENT,TYPE=C3D4,SOLIDELEMENTNUMBERING|900005,1,2,3,4;)";

const std::map<std::size_t, Strings> kTypes = {
    {3, {"CPE3", "CPS3", "STRI3"}}, {6, {"CPE6", "CPS6", "STRI65"}}, {4, {"C3D4"}}, {10, {"C3D10"}}};
constexpr int kEdges[6][2] = {{0, 1}, {1, 2}, {2, 0}, {0, 3}, {1, 3}, {2, 3}}; // the first three are a triangle's

// The pieces that end in the mark.
Strings Pieces(const std::string &text, char mark) {
    Strings pieces;
    for (std::size_t at = 0, end; (end = text.find(mark, at)) != std::string::npos; at = end + 1) {
        at = text.find_first_not_of(" \n", at);
        pieces.push_back(text.substr(at, end - at));
    }
    return pieces;
}

bool IsOdd(const Ints &order) {
    int turns = 0;
    for (std::size_t a = 0; a < order.size(); ++a) {
        turns += static_cast<int>(std::count_if(order.begin() + static_cast<long>(a), order.end(),
                                                [&](int later) { return later < order[a]; }));
    }
    return turns % 2 == 1;
}

class Generator {
  public:
    Generator(Dice *dice, DeckKind kind)
        : dice_(*dice), bWild_(kind == DeckKind::kWild), bPlain_(kind == DeckKind::kPlain) {}
    std::vector<Section> Make();
    int nTurned = 0;

  private:
    bool Rarely(double share) { // only in a wild deck
        return bWild_ && dice_.Chance(share);
    }

    // Names and numbers ---------------------------------------------------------------------------------

    std::string Name() {
        static const std::string kLetters = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-.#$%&()/:<>?@[]^`{|}~!'\"+";
        std::string name = dice_.Of({"SET", "E", "FIX", "LOAD_", "PART-", "S"}) + std::to_string(dice_.Below(10000));
        if (!names_.empty() && Rarely(0.04)) {
            return dice_.Of(names_);
        }
        if (Rarely(0.3)) {
            name.clear();
            const int length = Rarely(0.03) ? dice_.Of({245, 246, 256, 257, 300}) : dice_.From(1, 20);
            while (static_cast<int>(name.size()) < length) {
                name += dice_.Of(kLetters);
            }
        }
        names_.push_back(Rarely(0.02) ? std::to_string(dice_.Below(10)) : name);
        return names_.back();
    }

    std::string Int(int number) {
        const std::string text = std::to_string(number);
        if (Rarely(0.03)) {
            return text + dice_.Of({".7", "X", ".", "E3"});
        }
        if (Rarely(0.02)) {
            return std::to_string(number + 4294967296LL * dice_.Of({1, -1, 5}));
        }
        const std::string zeros(static_cast<std::size_t>(dice_.Below(9)), '0');
        return number < 0 || !dice_.Chance(0.1) ? text : dice_.Of({std::string("+"), zeros}) + text;
    }

    std::string Real(double number) {
        static const char *const kFormats[] = {"%.17g", "%.10f", "%g",   "%.9E", "%+.15e", "%.40g",
                                               "%.0f.", "%a",    "%gd2", "%.3e", "inf%g"};
        char text[400];
        const int format = Rarely(0.05) ? dice_.Below(11) : digits_ == 0 || Rarely(0.2) ? 0 : 1;
        std::snprintf(text, sizeof text, kFormats[format], number);
        std::string spelled = text;
        if (spelled.compare(0, 2, "0.") == 0 && dice_.Chance(0.2)) {
            spelled.erase(0, 1);
        }
        return dice_.Chance(0.05) && spelled[0] != '-' && spelled[0] != '+' ? "+" + spelled : spelled;
    }

    Ints Numbers(int count) {
        const double kind = dice_.Between(0, bWild_ ? 1 : 0.95);
        const int first = dice_.Of({1, 1, dice_.From(2, 100000000)});
        std::set<int> found;
        for (int i = 0; static_cast<int>(found.size()) < count; ++i) {
            found.insert(kind < 0.35   ? first + i
                         : kind < 0.5  ? 7 * i + 3
                         : kind < 0.75 ? dice_.From(1, 50 * count + 10)
                         : kind < 0.95 ? dice_.From(1, bPlain_ ? 999999999 : 2147483646)
                         : i < 2       ? (i == 0 ? INT32_MIN : INT32_MAX)
                                       : dice_.Any());
        }
        Ints numbers(found.begin(), found.end());
        if (dice_.Chance(0.5)) {
            dice_.Shuffle(&numbers);
        }
        return numbers;
    }

    // The mesh ------------------------------------------------------------------------------------------

    int Point(double x, double y, double z) {
        std::array<double, 3> place = {x, y, z};
        for (double &value : place) {
            value = digits_ == 0 ? value : std::round(value * digits_) / digits_;
            value = value == 0 && dice_.Chance(0.02) ? -0.0 : value;
        }
        points_.push_back(place);
        return static_cast<int>(points_.size()) - 1;
    }

    // A grid of nx * ny * nz cells (nz = 0: of squares, in two triangles each; else of cubes, in six tetrahedra).
    void Grid(int nx, int ny, int nz) {
        const int first = static_cast<int>(points_.size());
        const double jitter = nz == 0 ? 0.15 : 0.05, height = bPlain_ ? 0 : dice_.Of({0.0, 0.0, 1.5});
        const auto near = [&](int v) { return scale_ * (v + dice_.Between(-jitter, jitter)); };
        for (int i = 0; i < (nx + 1) * (ny + 1) * (nz + 1); ++i) {
            const double x = near(i % (nx + 1)), y = near(i / (nx + 1) % (ny + 1));
            Point(x, y, nz == 0 ? height * dice_.Between(-1, 1) : near(i / (nx + 1) / (ny + 1)));
        }
        const int steps[3] = {1, nx + 1, (nx + 1) * (ny + 1)};
        for (int i = 0; i < nx * ny * std::max(nz, 1); ++i) {
            const int at = first + i % nx + i / nx % ny * steps[1] + i / nx / ny * steps[2];
            const int b = at + 1, c = at + 1 + steps[1], d = at + steps[1];
            if (nz == 0) {
                const bool bFalling = dice_.Chance(0.5);
                elements_.push_back({{at, b, bFalling ? c : d}, {}, 0});
                elements_.push_back({{bFalling ? at : b, c, d}, {}, 0});
                continue;
            }
            Ints axes = {0, 1, 2};
            do { // three steps along the axes turn right-handed or left-handed
                Ints corners = {at};
                for (const int axis : axes) {
                    corners.push_back(corners.back() + steps[axis]);
                }
                std::swap(corners[1], corners[IsOdd(axes) ? 2 : 1]);
                elements_.push_back({corners, {}, 0});
            } while (std::next_permutation(axes.begin(), axes.end()));
        }
    }

    int Middle(int a, int b) {
        const auto key = std::minmax(a, b);
        const auto made = middles_.find(key);
        if (made != middles_.end()) {
            return made->second;
        }
        double at[3];
        for (std::size_t k = 0; k < 3; ++k) {
            const auto p = static_cast<std::size_t>(a), q = static_cast<std::size_t>(b);
            at[k] = (points_[p][k] + points_[q][k]) / 2 + bend_ * dice_.Between(-1, 1);
        }
        return middles_[key] = Point(at[0], at[1], at[2]);
    }

    // The element's nodes in the deck's order, turned at random, mirrored or squeezed now and then.
    void ListNodes(Element *element, bool bQuadratic) {
        Ints order;
        for (std::size_t k = 0; k < element->corners.size(); ++k) {
            order.push_back(static_cast<int>(k));
        }
        dice_.Shuffle(&order);
        if (IsOdd(order) != dice_.Chance(inverted_)) {
            std::swap(order[0], order[1]);
        }
        for (const int at : order) {
            element->nodes.push_back(element->corners[static_cast<std::size_t>(at)]);
        }
        for (int e = 0; bQuadratic && e < (order.size() == 3 ? 3 : 6); ++e) {
            const auto a = static_cast<std::size_t>(kEdges[e][0]), b = static_cast<std::size_t>(kEdges[e][1]);
            element->nodes.push_back(Middle(element->nodes[a], element->nodes[b]));
        }
        const bool bSqueezed = dice_.Chance(squeezed_);
        element->nodes[0] = bSqueezed ? element->nodes[1] : element->nodes[0];
        nTurned += IsOdd(order) || bSqueezed ? 1 : 0;
    }

    // Sections ------------------------------------------------------------------------------------------

    std::string GroupName() {
        if (dice_.Chance(glued_)) {
            return dice_.Chance(0.3) ? "C_GLUE" : "C_" + Name();
        }
        return Rarely(0.04) ? dice_.Of({"", "C_"}) : dice_.Of({"", "", "", "XC_"}) + Name();
    }

    void AddBlocks(std::vector<Section> *sections) {
        std::vector<std::vector<Element *>> parts;
        for (const std::size_t corners : {3u, 4u}) {
            std::vector<Element *> all;
            for (Element &element : elements_) {
                all.insert(all.end(), element.corners.size() == corners ? 1 : 0, &element);
            }
            if (dice_.Chance(0.4)) {
                dice_.Shuffle(&all);
            }
            for (auto &part : dice_.Deal(all, all.empty() ? 0 : dice_.Of({1, 1, 2, 3, 4, 6}))) {
                parts.push_back(part);
            }
        }
        Ints numbers = Numbers(static_cast<int>(elements_.size()));
        const bool bAgain = Rarely(0.04); // every block counts from the same number
        const int order = dice_.Below(3);
        std::size_t next = 0;
        for (const auto &part : parts) {
            const bool bSolid = !part.empty() ? part[0]->corners.size() == 4 : dice_.Chance(0.5);
            const bool bQuadratic = order == 2 ? dice_.Chance(0.5) : order == 1;
            const std::size_t nNodes = bSolid ? (bQuadratic ? 10 : 4) : (bQuadratic ? 6 : 3);
            Section section{{"ELEMENT", "TYPE=" + dice_.Of(kTypes.at(nNodes))}, {}};
            if (!Rarely(0.1)) {
                section.head.insert(section.head.begin() + dice_.From(1, 2), "ELSET=" + GroupName());
            }
            next = bAgain ? 0 : next;
            for (Element *element : part) {
                ListNodes(element, bQuadratic);
                element->number = numbers[next++];
                section.rows.push_back({Int(element->number)}); // nodes follow when they have numbers
            }
            sections->push_back(section);
        }
        NumberNodes(parts, sections);
    }

    // Node numbers, in the elements' rows and in sections of their own.
    void NumberNodes(const std::vector<std::vector<Element *>> &parts, std::vector<Section> *sections) {
        for (int extra = dice_.Of({0, 0, 1, 3}); extra > 0; --extra) {
            const double x = dice_.Between(-5, 5), y = dice_.Between(-5, 5);
            Point(x, y, dice_.Between(-5, 5));
        }
        nodeNumbers_ = Numbers(static_cast<int>(points_.size()));
        for (std::size_t b = 0; b < parts.size(); ++b) {
            for (std::size_t i = 0; i < parts[b].size(); ++i) {
                for (const int node : parts[b][i]->nodes) {
                    (*sections)[b].rows[i].push_back(Int(nodeNumbers_[static_cast<std::size_t>(node)]));
                }
            }
        }
        std::vector<Row> rows;
        const bool bFlat = dice_.Chance(0.7);
        for (std::size_t i = 0; i < points_.size(); ++i) {
            rows.push_back({Int(nodeNumbers_[i]), Real(points_[i][0]), Real(points_[i][1]), Real(points_[i][2])});
            rows.back().resize(points_[i][2] == 0 && bFlat ? 3 : 4);
        }
        if (dice_.Chance(0.4)) {
            dice_.Shuffle(&rows);
        }
        for (const auto &part : dice_.Deal(rows, dice_.Of({1, 1, 2, 3, 5}))) {
            sections->push_back({!bDisjoint_ && dice_.Chance(0.4) ? Row{"NODE", "NSET=" + Name()} : Row{"NODE"}, part});
        }
    }

    // Some of the numbers, now and then with repetitions and with numbers that nothing has, line by line.
    std::vector<Row> Members(const Ints &numbers) {
        std::vector<Row> rows;
        for (int left = dice_.Below(60), room = 0; left > 0 && !numbers.empty(); --left, --room) {
            if (room == 0) {
                rows.emplace_back();
                room = dice_.From(1, 16);
            }
            rows.back().push_back(Int(Rarely(0.03) ? dice_.Of({0, -1, dice_.Any()}) : dice_.Of(numbers)));
        }
        return rows;
    }

    Row Entry(const Strings &sets, const Ints &numbers) {
        std::string label = "S" + std::to_string(dice_.From(1, elements_[0].corners.size() == 4 ? 4 : 3));
        if (Rarely(0.05)) {
            label = dice_.Of({"S4", "S5", "S0", "S-1", "S10", "S+2", "E1", "33", "S2X", "S4294967298", "S", "SPOS"});
        }
        if (!sets.empty() && dice_.Chance(0.4)) {
            return {dice_.Of(sets), label};
        }
        std::string target = std::to_string(dice_.Of(numbers));
        if (Rarely(0.1)) {
            target = dice_.Of({target + "ABC", target + ".", "+" + target, "000" + target, std::string("NOSUCHSET"),
                               std::to_string(static_cast<long long>(dice_.Of(numbers)) + 4294967296LL)});
        }
        return {target, label};
    }

    // Takes up to so many from the end of the pool: no two sections have one of them.
    template <class List> List Draw(List *pool, int most) {
        const auto count = std::min(pool->size(), static_cast<std::size_t>(dice_.Below(most)));
        List drawn(pool->end() - static_cast<long>(count), pool->end());
        pool->resize(pool->size() - count);
        return drawn;
    }

    // Node sets and surfaces that have nothing in common.
    void AddDisjoint(std::vector<Section> *sections) {
        Ints nodes;
        std::vector<Row> sides;
        for (const Element &element : elements_) {
            nodes.insert(nodes.end(), element.nodes.begin(), element.nodes.end());
            for (std::size_t s = 1; s <= element.corners.size(); ++s) {
                sides.push_back({std::to_string(element.number), "S" + std::to_string(s)});
            }
        }
        std::sort(nodes.begin(), nodes.end());
        nodes.erase(std::unique(nodes.begin(), nodes.end()), nodes.end());
        dice_.Shuffle(&nodes);
        dice_.Shuffle(&sides);
        for (int n = dice_.Below(4); n > 0; --n) {
            Section set{{"NSET", "NSET=" + Name()}, {}};
            for (const int node : Draw(&nodes, 30)) {
                set.rows.push_back({Int(nodeNumbers_[static_cast<std::size_t>(node)])});
            }
            sections->push_back(set);
            sections->push_back({{"SURFACE", "NAME=" + Name()}, Draw(&sides, 30)});
        }
    }

    void AddSets(std::vector<Section> *sections) {
        Ints numbers;
        Strings sets;
        for (const Element &element : elements_) {
            numbers.push_back(element.number);
        }
        for (int n = dice_.Of({0, 1, 2, 3, 6}); n > 0; --n) {
            sections->push_back({Rarely(0.03) ? Row{"NSET"} : Row{"NSET", "NSET=" + Name()}, Members(nodeNumbers_)});
        }
        for (int n = dice_.Of({0, 1, 2, 3, 5}); n > 0; --n) {
            sets.push_back(!sets.empty() && Rarely(0.05) ? sets[0] : Name());
            sections->push_back({{"ELSET", "ELSET=" + sets.back()}, Members(numbers)});
        }
        for (int n = numbers.empty() ? 0 : dice_.Of({0, 1, 2, 4}); n > 0; --n) {
            Section surface{Rarely(0.03) ? Row{"SURFACE"} : Row{"SURFACE", "NAME=" + Name()}, {}};
            surface.head.insert(surface.head.begin() + 1, dice_.Chance(0.4) ? 1u : 0u, "TYPE=ELEMENT");
            for (int left = dice_.Of({0, 1, 2, 4, 12}); left > 0; --left) {
                surface.rows.push_back(Entry(sets, numbers));
            }
            sections->push_back(surface);
        }
    }

    // What is wrong or strange ----------------------------------------------------------------------------

    void Spoil(std::vector<Section> *sections) {
        const bool bStray = dice_.Chance(0.2), bFaults = dice_.Chance(0.15), bLong = dice_.Chance(0.03);
        for (Section &section : *sections) {
            for (Row &row : section.rows) {
                if (bFaults && dice_.Chance(0.05)) {
                    row.resize(static_cast<std::size_t>(dice_.From(1, static_cast<int>(row.size()))));
                }
                if (bFaults && dice_.Chance(0.05)) {
                    row[static_cast<std::size_t>(dice_.Below(static_cast<int>(row.size())))] =
                        dice_.Chance(0.5) ? "" : std::to_string(dice_.Any());
                }
                if (bStray && dice_.Chance(0.1)) {
                    const Row tail = dice_.Of({Row{"9"}, Row{"A", "B"}, Row{"4", "0.5", "0.5", "7"}, Row{"", "7"}});
                    row.insert(row.end(), tail.begin(), tail.end());
                }
                if (bLong && dice_.Chance(0.1)) { // about as long as a line may be
                    const int fields = (5119 + dice_.Of({-60, -1, 0, 1, 2, 7, 3000})) / 4;
                    row.insert(row.end(), static_cast<std::size_t>(fields) - row.size() * 2, dice_.Of({"123", "YYY"}));
                }
            }
            if (bFaults && dice_.Chance(0.03)) {
                section.head.push_back("INTERNAL");
            }
        }
        for (int n = dice_.Of({0, 0, 1, 3, 6}); n > 0; --n) {
            const Strings lines = Pieces(dice_.Of(Pieces(dice_.Chance(0.6) ? kUnknown : kRefused, ';')) + "|", '|');
            Section other{{lines[0]}, {}};
            for (std::size_t i = 1; i < lines.size(); ++i) {
                other.rows.push_back({lines[i]});
            }
            sections->push_back(other);
        }
    }

    Dice &dice_;
    bool bWild_, bPlain_, bDisjoint_ = false;
    double scale_ = 1, digits_ = 1000, bend_ = 0, inverted_ = 0, squeezed_ = 0, glued_ = 0;
    Strings names_;
    std::vector<std::array<double, 3>> points_;
    std::vector<Element> elements_;
    std::map<std::pair<int, int>, int> middles_;
    Ints nodeNumbers_;
};

std::vector<Section> Generator::Make() {
    const double kind = dice_.Between(bWild_ ? 0 : 0.03, 1), size = dice_.Between(0, 1);
    const int count = size < 0.05 ? dice_.From(1, 4) : size < 0.9 ? dice_.From(5, 60) : dice_.From(60, 400);
    scale_ = dice_.Of({1.0, 1.0, 1.0, 0.01, 2.5, 1000.0, bWild_ ? 1e-6 : 1.0}); // 1e-6: below the checks' thresholds
    digits_ = dice_.Chance(0.3) ? 0 : scale_ < 0.1 ? 1e10 : 1e3;
    bend_ = scale_ * dice_.Of({0.0, 0.0, 0.02});
    inverted_ = dice_.Of({0.0, 0.1, 0.5, 1.0});
    bDisjoint_ = bPlain_ && dice_.Chance(0.7);
    squeezed_ = bPlain_ ? 0 : dice_.Of({0.0, 0.0, 0.0, 0.1});
    glued_ = dice_.Of({0.0, 0.0, 0.4});
    const auto edge = [&](double cells, double root) {
        return std::max(1, static_cast<int>(std::lround(std::pow(cells, root) * dice_.Between(0.6, 1.4))));
    };
    if (kind > 0.02 && kind < 0.53) {
        const int nx = edge(count / 2.0, 0.5);
        Grid(nx, edge(count / 2.0 / nx, 1), 0);
    }
    if (kind > (bPlain_ ? 0.53 : 0.47)) {
        const int nx = edge(count / 6.0, 0.33), ny = edge(count / 6.0, 0.33);
        Grid(nx, ny, edge(count / 6.0 / nx / ny, 1));
    }
    std::vector<Section> sections;
    AddBlocks(&sections);
    bDisjoint_ ? AddDisjoint(&sections) : AddSets(&sections);
    if (bWild_) {
        Spoil(&sections);
    }
    if (dice_.Chance(0.7)) {
        dice_.Shuffle(&sections);
    }
    return sections;
}

// Writes the sections in every way that must make no difference.
class Speller {
  public:
    Speller(Dice *dice, DeckKind kind) : dice_(*dice), bPlain_(kind == DeckKind::kPlain), letters_(dice_.Below(3)) {
        const bool bWild = kind == DeckKind::kWild;
        const Strings kBytes = {" ", "\t", ";", "\\", "\r", "\x0b", "\x01", "\x1b", "\x7f", "\x80", "\xe4", "\xff"};
        blanks_ = dice_.Of({0.0, 0.05, 0.3});
        inside_ = bWild ? dice_.Of({0.0, 0.0, 0.02}) : 0.0;
        dropped_ = bWild && dice_.Chance(0.3) ? kBytes : Strings{" ", "  ", "\t", "     "};
        comments_ = dice_.Of({0.0, 0.02, 0.2});
        joins_ = dice_.Of({0.0, 0.05, 0.4});
        commas_ = dice_.Of({0.0, 0.5, 1.0});
        nul_ = bWild && dice_.Chance(0.05) ? 0.01 : 0.0;
        ends_ = dice_.Of({Strings{"\n"}, Strings{"\n"}, Strings{"\r\n"}, Strings{"\n", "\r\n"}});
        longComment_ = bWild && dice_.Chance(0.02) ? std::string(12000, '.') : "";
    }

    std::string Spell(const std::vector<Section> &sections) {
        if (!bPlain_ && dice_.Chance(0.25)) {
            text_ = "A DECK\n1, 2, 3,\nNODE, NSET=ALL\n";
        }
        for (const Section &section : sections) {
            Row head = section.head;
            head[0] = "*" + head[0];
            const bool bSet = head[0] == "*NSET" || head[0] == "*ELSET";
            Line(head, true);
            for (Row row : section.rows) {
                if (bSet && dice_.Chance(commas_)) {
                    row.push_back(""); // set lines stand alone: a comma at the end says nothing
                }
                Line(row, bPlain_ ? head[0] == "*ELEMENT" : !bSet);
            }
        }
        if (dice_.Chance(0.25) && !text_.empty()) {
            text_.pop_back();
        }
        return text_;
    }

  private:
    std::string Blank() {
        return dice_.Chance(blanks_) ? dice_.Of(dropped_) : "";
    }

    std::string Token(std::string text) {
        for (char &c : text) {
            const bool bLower = letters_ == 1 || (letters_ == 2 && dice_.Chance(0.5));
            c = bLower && c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
        }
        if (dice_.Chance(inside_)) {
            text.insert(static_cast<std::size_t>(dice_.From(0, static_cast<int>(text.size()))), dice_.Of(dropped_));
        }
        return Blank() + text + Blank();
    }

    void End(bool bEmpty = false) {
        if ((bEmpty || !bPlain_) && dice_.Chance(comments_)) {
            text_ += "**" + dice_.Of({std::string(" all nodes"), std::string("*NODE, NSET=NONE"), std::string(" 1, 2,"),
                                      std::string("*"), std::string(" \xe4\x01, ;"), longComment_});
        }
        text_ += dice_.Chance(nul_) ? std::string("\0,1,2,", 6) : "";
        text_ += dice_.Of(ends_);
    }

    // The tokens with commas between them, broken after some of the commas where lines are joined.
    void Line(const Row &tokens, bool bJoins) {
        while (dice_.Chance(comments_)) { // lines that hold nothing
            text_ += bPlain_ ? "" : Blank();
            End(true);
        }
        for (std::size_t i = 0; i < tokens.size(); ++i) {
            text_ += Token(tokens[i]) + (i + 1 < tokens.size() ? "," : "");
            if (bJoins && i + 1 < tokens.size() && dice_.Chance(joins_)) {
                End();
            }
        }
        End();
    }

    Dice &dice_;
    bool bPlain_;
    int letters_;
    double blanks_, inside_, comments_, joins_, commas_, nul_;
    Strings dropped_, ends_;
    std::string longComment_, text_;
};

} // namespace

RandomDeck MakeRandomDeck(std::uint64_t seed, DeckKind kind) {
    const bool bWild = kind == DeckKind::kWild;
    Dice dice(seed);
    Generator generator(&dice, kind);
    const std::vector<Section> sections = generator.Make();
    return {Speller(&dice, kind).Spell(sections), bWild ? -1 : generator.nTurned};
}
