// *NODE and *SYSTEM.
#include "deck/building.h"

namespace deck {

namespace {

struct NodeRow {
    int number;
    Point point;
};

// The ordinary row: number and up to three coordinates.
bool PlainRow(const Line &line, NodeRow *row) {
    const char *at = PlainWhole(line.begin, &row->number);
    if (at == nullptr || row->number == 0) {
        return false;
    }
    for (double &x : row->point) {
        if (at == line.end) { // coordinates left out are 0
            x = 0;
            continue;
        }
        at = *at == ',' ? PlainReal(at + 1, line.end, &x) : nullptr;
        if (at == nullptr) {
            return false;
        }
    }
    return at == line.end;
}

bool EndsInComma(const Line &line) {
    const std::string_view text = Trim(line.Text());
    return !text.empty() && text.back() == ',';
}

bool AnyRow(Building *b, const Line &line, NodeRow *row) {
    const std::vector<Field> &fields = b->cards.Fields(line);
    row->number = DeckNumber(b, line, fields[0]);
    if (row->number == 0) {
        return false;
    }
    for (std::size_t i = 0; i < 3; ++i) {
        if (!RealField(b, line, fields, i + 1, &row->point[i])) {
            return false;
        }
    }
    if (EndsInComma(line)) {
        b->cards.Remark(Code::rowEndComma, {line.file, line.number, static_cast<int>(Trim(line.Text()).size())}, {});
    }
    return true;
}

void AddNode(NodeTable *nodes, int number, const Point &p, int line) {
    nodes->number.push_back(number);
    nodes->x.push_back(p[0]);
    nodes->y.push_back(p[1]);
    nodes->z.push_back(p[2]);
    nodes->line.push_back(line);
}

void BeginSection(Building *b, int card, int file, bool continued) {
    Scope &scope = b->Here();
    const Parameter *nset = FindParameter(b->At(card), "NSET");
    scope.nodes.sections.push_back({card, file, scope.nodes.number.size(), 0, continued});
    if (nset != nullptr && !nset->value.empty()) {
        SetSection *section = BeginSetSection(b, &scope.nodeSets, card, *nset, SetSource::nodes);
        section->file = file;
        section->rowsOf = static_cast<int>(scope.nodes.sections.size()) - 1;
    }
}

enum class Coordinates { rectangular, cylindrical, refused };

Coordinates CoordinatesOf(Building *b, const Card &card) {
    const Parameter *system = FindParameter(card, "SYSTEM");
    if (system == nullptr || system->value == "R" || system->value.empty()) {
        return Coordinates::rectangular;
    }
    if (system->value == "C") {
        return Coordinates::cylindrical;
    }
    b->cards.Find(Code::uncertain, {card.place.file, system->line, system->column},
                  {card.name + ", SYSTEM=" + Clip(system->text)});
    return Coordinates::refused;
}

} // namespace

void ReadNodes(Building *b, int card) {
    const Coordinates coordinates = CoordinatesOf(b, b->At(card));
    if (coordinates == Coordinates::refused) {
        return;
    }
    BeginSection(b, card, b->At(card).place.file, false);
    b->cards.ReadRowsFrom(Card(b->At(card)));
    NodeTable &nodes = b->Here().nodes;
    Line line;
    NodeRow row{};
    while (b->cards.NextRow(&line)) {
        if (!PlainRow(line, &row) && !AnyRow(b, line, &row)) {
            continue;
        }
        if (line.file != nodes.sections.back().file) {
            BeginSection(b, card, line.file, true);
        }
        if (coordinates == Coordinates::cylindrical) {
            row.point = FromCylindrical(row.point);
        }
        AddNode(&nodes, row.number, b->hasSystem ? ToGlobal(b->system, row.point) : row.point, line.number);
        ++nodes.sections.back().count;
    }
}

void ReadSystem(Building *b, int card) {
    Line line;
    Point p[3];
    int nPoints = 0;
    b->hasSystem = false;
    for (int row = 0; b->cards.NextRow(&line); ++row) {
        const std::vector<Field> fields = b->cards.Fields(line);
        for (std::size_t i = 0; i < fields.size() && row < 2 && nPoints < 3; i += 3) {
            Point &point = p[nPoints++];
            if (!RealField(b, line, fields, i, &point[0]) || !RealField(b, line, fields, i + 1, &point[1]) ||
                !RealField(b, line, fields, i + 2, &point[2])) {
                return;
            }
        }
    }
    if (nPoints == 0) {
        return; // ends the one in force
    }
    b->hasSystem = MakeFrame(p[0], nPoints > 1 ? &p[1] : nullptr, nPoints > 2 ? &p[2] : nullptr, &b->system);
    if (!b->hasSystem) {
        b->cards.Find(Code::uncertain, b->At(card).place, {"SYSTEM whose points give no axes"});
    }
}

} // namespace deck
