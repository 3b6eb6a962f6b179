// Nodes and elements that a deck makes from others: *NGEN, *NFILL, *NCOPY, *ELGEN, *ELCOPY. They see the deck as it is
// at their place. What the forms of these keywords mean that are refused here is not certain.
#include "deck/building.h"

#include <algorithm>
#include <cmath>

namespace deck {

namespace {

constexpr double kFullTurn = 360;
constexpr double kRadian = 57.295779513082320877; // degrees

// Radii at the two ends of an arc may differ by that much of them: rounding in the deck.
constexpr double kRadiusTolerance = 1e-5;

void FindAt(Building *b, Code code, int card, const std::string &what) {
    b->cards.Find(code, b->At(card).place, {b->At(card).name, what});
}

void FindRow(Building *b, const Line &line, int card, const std::string &what) {
    b->cards.Find(Code::generatorEnds, {line.file, line.number, 1}, {b->At(card).name, what});
}

// The first of these parameters on the card makes it uncertain: a finding, and true.
bool IsUncertain(Building *b, int card, std::initializer_list<const char *> words) {
    for (const char *word : words) {
        if (FindParameter(b->At(card), word) != nullptr) {
            b->cards.Find(Code::uncertain, b->At(card).place, {b->At(card).name + ", " + word});
            return true;
        }
    }
    return false;
}

Point NodeAt(const NodeTable &nodes, int position) {
    const auto at = static_cast<std::size_t>(position);
    return {nodes.x[at], nodes.y[at], nodes.z[at]};
}

// A section of made nodes. NSET= is the caller's.
void BeginNodes(Building *b, int card) {
    NodeTable &nodes = b->Here().nodes;
    nodes.sections.push_back({card, b->At(card).place.file, nodes.number.size(), 0, false});
}

void AddNode(Building *b, int number, const Point &p, int line) {
    NodeTable &nodes = b->Here().nodes;
    nodes.number.push_back(number);
    nodes.x.push_back(p[0]);
    nodes.y.push_back(p[1]);
    nodes.z.push_back(p[2]);
    nodes.line.push_back(line);
    ++nodes.sections.back().count;
}

bool IsDeckNumber(long long number) {
    return number >= 1 && number <= kMostNumber;
}

Point Between(const Point &a, const Point &b, double part) {
    return {a[0] + (b[0] - a[0]) * part, a[1] + (b[1] - a[1]) * part, a[2] + (b[2] - a[2]) * part};
}

// An arc from a to b about a centre, turned by the right hand about the direction.
struct Arc {
    Turn turn; // its direction
    double degrees;
};

// False where centre, ends and normal make no arc.
bool MakeArc(const Point &a, const Point &b, const Point &centre, const Point &normal, Arc *arc) {
    const Point from = Minus(a, centre);
    const Point to = Minus(b, centre);
    const double radius = Length(from);
    if (!(radius > 0) || std::abs(Length(to) - radius) > kRadiusTolerance * radius) {
        return false;
    }
    const Point across = Cross(from, to);
    const bool given = Length(normal) > 0;
    const Point direction = given ? normal : across;
    if (!MakeTurn(centre, {centre[0] + direction[0], centre[1] + direction[1], centre[2] + direction[2]}, 0,
                  &arc->turn)) {
        return false;
    }
    arc->degrees = std::atan2(Dot(across, arc->turn.direction), Dot(from, to)) * kRadian;
    arc->degrees += arc->degrees <= 0 ? kFullTurn : 0;
    return true;
}

Point OnArc(const Arc &arc, const Point &a, const Point &centre, double part) {
    Turn turn;
    const Point &d = arc.turn.direction;
    MakeTurn(centre, {centre[0] + d[0], centre[1] + d[1], centre[2] + d[2]}, arc.degrees * part, &turn);
    return Turned(turn, a);
}

// One row of *NGEN.
struct LineRow {
    int first, last, step;
    int positions[2];
    bool curved;
    Point centre;
    Arc arc;
};

// The extra point of an arc: a node, or coordinates in the system that SYSTEM= and *SYSTEM give.
bool CentreOf(Building *b, int card, const Line &line, const std::vector<Field> &fields, Point *centre) {
    int node = 0;
    if (!WholeField(b, line, fields, 3, 0, &node)) {
        return false;
    }
    if (node != 0) {
        const int position = PositionOfNode(b, node);
        if (position < 0) {
            FindRow(b, line, card, "node " + std::to_string(node));
            return false;
        }
        *centre = NodeAt(b->Here().nodes, position);
        return true;
    }
    for (std::size_t i = 0; i < 3; ++i) {
        if (!RealField(b, line, fields, 4 + i, &(*centre)[i])) {
            return false;
        }
    }
    *centre = ValueOf(b->At(card), "SYSTEM") == "C" ? FromCylindrical(*centre) : *centre;
    *centre = b->hasSystem ? ToGlobal(b->system, *centre) : *centre;
    return true;
}

bool ReadArc(Building *b, int card, const Line &line, const std::vector<Field> &fields, LineRow *row) {
    Point normal{};
    for (std::size_t i = 0; i < 3; ++i) {
        if (!RealField(b, line, fields, 7 + i, &normal[i])) {
            return false;
        }
    }
    if (b->hasSystem && b->system.turned && Length(normal) > 0) {
        b->cards.Find(Code::uncertain, {line.file, line.number, 1}, {"NGEN, LINE=C with a normal under SYSTEM"});
        return false;
    }
    const NodeTable &nodes = b->Here().nodes;
    if (!CentreOf(b, card, line, fields, &row->centre)) {
        return false;
    }
    if (!MakeArc(NodeAt(nodes, row->positions[0]), NodeAt(nodes, row->positions[1]), row->centre, normal, &row->arc)) {
        FindRow(b, line, card, "arc");
        return false;
    }
    return true;
}

bool ReadLineRow(Building *b, int card, const Line &line, LineRow *row) {
    const std::vector<Field> fields = b->cards.Fields(line);
    if (!WholeField(b, line, fields, 0, 0, &row->first) || !WholeField(b, line, fields, 1, 0, &row->last) ||
        !WholeField(b, line, fields, 2, 1, &row->step)) {
        return false;
    }
    for (int end = 0; end < 2; ++end) {
        const int number = end == 0 ? row->first : row->last;
        row->positions[end] = IsDeckNumber(number) ? PositionOfNode(b, number) : -1;
        if (row->positions[end] < 0) {
            FindRow(b, line, card, "node " + std::to_string(number));
            return false;
        }
    }
    if (row->step == 0 || (row->last - row->first) % row->step != 0 || (row->last - row->first) / row->step < 0) {
        FindRow(b, line, card, "increment " + std::to_string(row->step));
        return false;
    }
    return !row->curved || ReadArc(b, card, line, fields, row);
}

void MakeLine(Building *b, const LineRow &row, int line) {
    const int intervals = (row.last - row.first) / row.step;
    const Point from = NodeAt(b->Here().nodes, row.positions[0]);
    const Point to = NodeAt(b->Here().nodes, row.positions[1]);
    for (int k = 1; k < intervals; ++k) {
        const double part = static_cast<double>(k) / intervals;
        AddNode(b, row.first + k * row.step,
                row.curved ? OnArc(row.arc, from, row.centre, part) : Between(from, to, part), line);
    }
}

// The nodes of NFILL between one pair.
bool FillPair(Building *b, int card, const Line &line, int from, int to, const int *steps, std::vector<int> *made) {
    const int intervals = steps[0];
    const int increment = steps[1];
    if ((to - from) % increment != 0 || !IsDeckNumber(from + static_cast<long long>(intervals) * increment)) {
        FindRow(b, line, card, "increment " + std::to_string(increment));
        return false;
    }
    const int positions[2] = {PositionOfNode(b, from), PositionOfNode(b, to)};
    Point ends[2] = {};
    for (int i = 0; i < 2; ++i) { // one that has no coordinates is at the origin
        if (positions[i] >= 0) {
            ends[i] = NodeAt(b->Here().nodes, positions[i]);
        }
    }
    for (int k = 1; k < intervals; ++k) {
        const int number = from + k * increment;
        AddNode(b, number, Between(ends[0], ends[1], static_cast<double>(k) / intervals), line.number);
        made->push_back(number);
    }
    made->push_back(from);
    made->push_back(to);
    return true;
}

// Two node sets, as they are here, and how to fill the space between them.
bool ReadFillRow(Building *b, int card, const Line &line, std::vector<int> *ends, int *steps) {
    const std::vector<Field> fields = b->cards.Fields(line);
    bool unsorted = false;
    for (std::size_t i = 0; i < 2; ++i) {
        const std::string name = i < fields.size() ? MeantName(fields[i].text) : "";
        if (!SetNow(b, &b->Here().nodeSets, name, &ends[i], &unsorted)) {
            FindRow(b, line, card, "set " + Clip(name));
            return false;
        }
    }
    if (!WholeField(b, line, fields, 2, 0, &steps[0]) || !WholeField(b, line, fields, 3, 1, &steps[1])) {
        return false;
    }
    if (steps[0] < 1 || steps[1] == 0) {
        FindRow(b, line, card, "intervals or increment");
        return false;
    }
    return true;
}

void PutIntoSet(Building *b, SetTable *table, int card, const char *word, const std::vector<int> &numbers, int line) {
    const Parameter *name = FindParameter(b->At(card), word);
    if (name != nullptr && !name->value.empty()) {
        BeginSetSection(b, table, card, *name, SetSource::generated);
        AddSetRow(table, line, numbers);
    }
}

// OLD SET= and a shift of numbers; false, with a finding, where they are missing.
bool ReadCopy(Building *b, int card, const char *shiftWord, bool ofNodes, std::vector<int> *numbers, int *shift,
              bool *unsorted) {
    const Parameter *parameter = FindParameter(b->At(card), shiftWord);
    long long value = 0;
    if (parameter == nullptr || ReadWhole(parameter->value, &value) == NumberForm::none ||
        std::abs(value) > kMostNumber) {
        b->cards.Find(Code::missingParameter, b->At(card).place, {shiftWord, b->At(card).name});
        return false;
    }
    *shift = static_cast<int>(value);
    SetTable *table = ofNodes ? &b->Here().nodeSets : &b->Here().elementSets;
    const std::string name = ValueOf(b->At(card), "OLD SET");
    if (!SetNow(b, table, name, numbers, unsorted)) {
        FindAt(b, Code::generatorEnds, card, "set " + Clip(name));
        return false;
    }
    return true;
}

// The rows of *NCOPY, SHIFT: a shift, and a turn that is not certain.
bool ReadShift(Building *b, int card, Point *shift) {
    Line line;
    for (int row = 0; b->cards.NextRow(&line); ++row) {
        const std::vector<Field> fields = b->cards.Fields(line);
        double value = 0;
        for (std::size_t i = 0; i < fields.size(); ++i) {
            if (!RealField(b, line, fields, i, &value)) {
                return false;
            }
            if (row == 0 && i < 3) {
                (*shift)[i] = value;
            } else if (row == 1 && i == 6 && value != 0) {
                b->cards.Find(Code::uncertain, {line.file, line.number, fields[i].column}, {"NCOPY with a rotation"});
                return false;
            }
        }
    }
    if (b->hasSystem && b->system.turned) {
        FindAt(b, Code::uncertain, card, "SHIFT under SYSTEM");
        return false;
    }
    return true;
}

// A section of made elements of the master's type; one that fits and is the last goes on.
void BeginElements(Building *b, int card, std::size_t master, const std::string &elset) {
    ElementTable &elements = b->Here().elements;
    const ElementSection like = SectionOf(elements, master);
    const ElementSection &last = elements.sections.back();
    const std::string &name = elset.empty() ? like.elset : elset;
    if (last.card == card && last.type == like.type && last.width == like.width && last.elset == name) {
        return;
    }
    elements.sections.push_back({card, b->At(card).place.file, elements.number.size(), 0, last.card == card, like.type,
                                 like.width, elements.nodes.size(), name, b->order});
}

// A copy of the element with other numbers.
bool AddElement(Building *b, std::size_t master, long long number, long long nodeShift, int line) {
    ElementTable &elements = b->Here().elements;
    const ElementSection &like = SectionOf(elements, master);
    const auto width = static_cast<std::size_t>(like.width);
    const std::size_t from = like.firstNode + (master - like.first) * width;
    if (!IsDeckNumber(number)) {
        return false;
    }
    for (std::size_t i = 0; i < width; ++i) {
        const long long node = elements.nodes[from + i] + nodeShift;
        elements.nodes.push_back(elements.nodes[from + i] == 0 || !IsDeckNumber(node) ? 0 : static_cast<int>(node));
    }
    elements.number.push_back(static_cast<int>(number));
    elements.line.push_back(line);
    ++elements.sections.back().count;
    return true;
}

// One row of *ELGEN: the master; counts and increments of nodes and elements, for rows, layers and blocks.
struct BlockRow {
    int master;
    std::size_t position;
    int count[3], nodeStep[3], elementStep[3];
};

bool ReadBlockRow(Building *b, int card, const Line &line, BlockRow *row) {
    const std::vector<Field> fields = b->cards.Fields(line);
    row->master = DeckNumber(b, line, fields[0]);
    if (row->master == 0) {
        return false;
    }
    const int position = PositionOfElement(b, row->master);
    if (position < 0) {
        FindRow(b, line, card, "element " + std::to_string(row->master));
        return false;
    }
    row->position = static_cast<std::size_t>(position);
    for (std::size_t d = 0; d < 3; ++d) {
        if (!WholeField(b, line, fields, 3 * d + 1, 1, &row->count[d]) ||
            !WholeField(b, line, fields, 3 * d + 2, 1, &row->nodeStep[d]) ||
            !WholeField(b, line, fields, 3 * d + 3, 1, &row->elementStep[d])) {
            return false;
        }
        if (row->count[d] < 1) {
            FindRow(b, line, card, "count " + std::to_string(row->count[d]));
            return false;
        }
    }
    return true;
}

long long ElementsOf(const BlockRow &row) {
    const double all = static_cast<double>(row.count[0]) * row.count[1] * row.count[2];
    return all > 2.0 * kMostInRange ? 2 * kMostInRange : static_cast<long long>(all);
}

// The elements of one row of the block, the master's own place left out; false where a number is out of range.
bool MakeRow(Building *b, const BlockRow &row, int j, int k, int line) {
    const long long nodeShift =
        static_cast<long long>(j) * row.nodeStep[1] + static_cast<long long>(k) * row.nodeStep[2];
    const long long first =
        row.master + static_cast<long long>(j) * row.elementStep[1] + static_cast<long long>(k) * row.elementStep[2];
    for (int i = j == 0 && k == 0 ? 1 : 0; i < row.count[0]; ++i) {
        if (!AddElement(b, row.position, first + static_cast<long long>(i) * row.elementStep[0],
                        nodeShift + static_cast<long long>(i) * row.nodeStep[0], line)) {
            return false;
        }
    }
    return true;
}

void MakeBlock(Building *b, int card, const Line &line, const BlockRow &row, SetTable *set) {
    bool whole = true;
    for (int k = 0; k < row.count[2] && whole; ++k) {
        for (int j = 0; j < row.count[1] && whole; ++j) {
            const std::size_t before = b->Here().elements.number.size();
            whole = MakeRow(b, row, j, k, line.number);
            if (set != nullptr) {
                const std::vector<int> &number = b->Here().elements.number;
                AddSetRow(set, line.number, {number.begin() + static_cast<std::ptrdiff_t>(before), number.end()});
            }
        }
    }
    if (set != nullptr) {
        AddSetRow(set, line.number, {row.master});
    }
    if (!whole) {
        FindRow(b, line, card, "a number out of range");
    }
}

} // namespace

void GenerateLine(Building *b, int card) {
    const std::string form = ValueOf(b->At(card), "LINE");
    const std::string system = ValueOf(b->At(card), "SYSTEM");
    if ((!form.empty() && form != "C") || (!system.empty() && system != "RC" && system != "C")) {
        b->cards.Find(Code::uncertain, b->At(card).place,
                      {form.empty() || form == "C" ? "NGEN, SYSTEM=" + Clip(system) : "NGEN, LINE=" + Clip(form)});
        return;
    }
    const Parameter *nset = FindParameter(b->At(card), "NSET");
    SetTable *sets = nset == nullptr || nset->value.empty() ? nullptr : &b->Here().nodeSets;
    if (sets != nullptr) {
        BeginSetSection(b, sets, card, Parameter(*nset), SetSource::ranges);
    }
    BeginNodes(b, card);
    Line line;
    while (b->cards.NextRow(&line)) {
        LineRow row{};
        row.curved = form == "C";
        if (!ReadLineRow(b, card, line, &row) ||
            !MayGenerate(b, {line.file, line.number, 1}, "NGEN", (row.last - row.first) / row.step)) {
            continue;
        }
        MakeLine(b, row, line.number);
        if (sets != nullptr) {
            AddSetRow(sets, line.number, {row.first, row.last, row.step});
        }
    }
}

void GenerateFill(Building *b, int card) {
    if (IsUncertain(b, card, {"BIAS", "SINGULAR", "TWO STEP"})) {
        return;
    }
    BeginNodes(b, card);
    std::vector<int> made;
    std::vector<int> ends[2];
    int steps[2];
    Line line;
    int last = b->At(card).place.line;
    while (b->cards.NextRow(&line)) {
        last = line.number;
        if (!ReadFillRow(b, card, line, ends, steps)) {
            continue;
        }
        const std::size_t pairs = std::min(ends[0].size(), ends[1].size());
        if (!MayGenerate(b, {line.file, line.number, 1}, "NFILL", static_cast<long long>(pairs) * (steps[0] - 1))) {
            continue;
        }
        for (std::size_t i = 0; i < pairs && FillPair(b, card, line, ends[0][i], ends[1][i], steps, &made); ++i) {
        }
    }
    PutIntoSet(b, &b->Here().nodeSets, card, "NSET", made, last);
}

void CopyNodes(Building *b, int card) {
    std::vector<int> numbers;
    int shift = 0;
    bool unsorted = false;
    if (IsUncertain(b, card, {"MULTIPLE", "REFLECT", "POLE"}) ||
        !ReadCopy(b, card, "CHANGE NUMBER", true, &numbers, &shift, &unsorted)) {
        return;
    }
    Point move{};
    if (!ReadShift(b, card, &move) ||
        !MayGenerate(b, b->At(card).place, "NCOPY", static_cast<long long>(numbers.size()))) {
        return;
    }
    BeginNodes(b, card);
    std::vector<int> made;
    for (const int old : numbers) {
        const int position = PositionOfNode(b, old);
        if (position < 0 || !IsDeckNumber(old + shift)) {
            FindAt(b, Code::generatorEnds, card, "node " + std::to_string(old));
            continue;
        }
        Point p = NodeAt(b->Here().nodes, position);
        for (std::size_t i = 0; i < 3; ++i) {
            p[i] += move[i];
        }
        AddNode(b, old + shift, p, b->At(card).place.line);
        made.push_back(old + shift);
    }
    SetTable &sets = b->Here().nodeSets;
    const bool isNew = FindSet(sets, ValueOf(b->At(card), "NEW SET")) < 0;
    const std::size_t before = sets.sections.size();
    PutIntoSet(b, &sets, card, "NEW SET", made, b->At(card).place.line);
    if (sets.sections.size() > before) {
        sets.sections.back().unsorted = unsorted && isNew;
    }
}

void GenerateElements(Building *b, int card) {
    const Parameter *elset = FindParameter(b->At(card), "ELSET");
    const std::string name = elset == nullptr ? "" : elset->value;
    SetTable *sets = elset != nullptr && !name.empty() ? &b->Here().elementSets : nullptr;
    if (sets != nullptr) {
        BeginSetSection(b, sets, card, Parameter(*elset), SetSource::generated);
    }
    Line line;
    while (b->cards.NextRow(&line)) {
        BlockRow row{};
        if (ReadBlockRow(b, card, line, &row) &&
            MayGenerate(b, {line.file, line.number, 1}, "ELGEN", ElementsOf(row))) {
            BeginElements(b, card, row.position, name);
            MakeBlock(b, card, line, row, sets);
        }
    }
}

void CopyElements(Building *b, int card) {
    std::vector<int> numbers;
    int shift = 0;
    bool unsorted = false;
    if (IsUncertain(b, card, {"REFLECT"}) || !ReadCopy(b, card, "ELEMENT SHIFT", false, &numbers, &shift, &unsorted)) {
        return;
    }
    long long nodeShift = 0;
    const Parameter *nodes = FindParameter(b->At(card), "SHIFT NODES");
    if (nodes == nullptr || ReadWhole(nodes->value, &nodeShift) == NumberForm::none ||
        std::abs(nodeShift) > kMostNumber) {
        b->cards.Find(Code::missingParameter, b->At(card).place, {"SHIFT NODES", b->At(card).name});
        return;
    }
    if (!MayGenerate(b, b->At(card).place, "ELCOPY", static_cast<long long>(numbers.size()))) {
        return;
    }
    const int line = b->At(card).place.line;
    std::vector<int> made;
    for (const int old : numbers) {
        const int position = PositionOfElement(b, old);
        if (position < 0) {
            FindAt(b, Code::generatorEnds, card, "element " + std::to_string(old));
            continue;
        }
        BeginElements(b, card, static_cast<std::size_t>(position), "");
        if (AddElement(b, static_cast<std::size_t>(position), old + static_cast<long long>(shift), nodeShift, line)) {
            made.push_back(old + shift);
        } else {
            FindAt(b, Code::generatorEnds, card, "a number out of range");
        }
    }
    PutIntoSet(b, &b->Here().elementSets, card, "NEW SET", made, line);
}

} // namespace deck
