// *ELEMENT.
#include "deck/building.h"

#include <algorithm>

namespace deck {

namespace {

// Nodes of a type that no table has: rows that are shorter are filled up, so that no row may ask for too many.
constexpr std::size_t kMostNodes = 64;

// One element's entries as they come in over one or more lines.
struct Row {
    std::vector<int> values; // number, nodes
    Line first;              // only file and number are of use later
    int commaColumn;         // of a comma at the end of the last line; 0 without
    bool broken;             // a field was no number: a finding
};

// The ordinary line: numbers and commas, which may end it. Adds them to the values.
bool PlainLine(const Line &line, Row *row) {
    const std::size_t before = row->values.size();
    const char *at = line.begin;
    for (;;) {
        int value = 0;
        const char *behind = PlainWhole(at, &value);
        if (behind == nullptr || value == 0 || (*behind != ',' && behind != line.end)) {
            row->values.resize(before);
            return false;
        }
        row->values.push_back(value);
        row->commaColumn = 0;
        if (behind == line.end) {
            return true;
        }
        at = SkipBlanks(behind + 1);
        if (at == line.end) {
            row->commaColumn = static_cast<int>(behind - line.begin) + 1;
            return true;
        }
    }
}

// Nodes of types without shape may be missing, or stand in another instance: no node then.
void AnyLine(Building *b, const Line &line, bool shapeless, Row *row) {
    long long value = 0;
    for (const Field &field : b->cards.Fields(line)) {
        const bool missing = shapeless && !row->values.empty() && ReadWhole(field.text, &value) == NumberForm::none;
        row->values.push_back(missing ? 0 : DeckNumber(b, line, field));
        row->broken = row->broken || (!missing && row->values.back() == 0);
    }
    const std::string_view text = Trim(line.Text());
    row->commaColumn = text.back() == ',' ? static_cast<int>(text.data() + text.size() - line.Text().data()) : 0;
}

void TakeLine(Building *b, const Line &line, bool shapeless, Row *row) {
    if (!PlainLine(line, row)) {
        AnyLine(b, line, shapeless, row);
    }
}

std::size_t FieldsOn(const Line &line) {
    std::vector<Field> fields;
    if (line.Text().find(',') == std::string_view::npos && SplitAtBlanks(line.Text(), &fields)) {
        return fields.size();
    }
    SplitFields(line.Text(), &fields);
    while (fields.size() > 1 && fields.back().text.empty()) {
        fields.pop_back();
    }
    return fields.size();
}

// Takes the line into an element of which so many nodes are missing: that number, not commas, tells whether it belongs
// there. A line with more of them begins the next element; nothing is taken then.
bool TakeMore(Building *b, const Line &line, std::size_t missing, bool shapeless, Row *row) {
    const std::size_t before = row->values.size();
    const int comma = row->commaColumn;
    if (!PlainLine(line, row)) {
        const bool fits = FieldsOn(line) <= missing;
        if (fits) {
            AnyLine(b, line, shapeless, row);
        }
        return fits;
    }
    if (row->values.size() - before > missing) {
        row->values.resize(before);
        row->commaColumn = comma;
        return false;
    }
    return true;
}

// The next element's row with all its lines. False at the end of the section. `wanted` nodes, or as many as the commas
// tell where it is 0.
bool NextElement(Building *b, std::size_t wanted, bool mayMiss, bool shapeless, Row *row) {
    Line line;
    if (!b->cards.NextRow(&line)) {
        return false;
    }
    row->values.clear();
    row->broken = false;
    row->first = line;
    TakeLine(b, line, shapeless, row);
    while (wanted == 0 ? row->commaColumn != 0
                       : row->values.size() < wanted + 1 && !(mayMiss && row->commaColumn == 0)) {
        if (!b->cards.NextRow(&line)) {
            break;
        }
        if (wanted == 0) {
            TakeLine(b, line, shapeless, row);
        } else if (!TakeMore(b, line, wanted + 1 - row->values.size(), shapeless, row)) {
            b->cards.Back();
            break;
        }
    }
    return true;
}

int TypeOf(Building *b, const Card &card, const Parameter &parameter) {
    const auto put = b->typeByName.emplace(parameter.value, static_cast<int>(b->deck->types.size()));
    if (put.second) {
        b->deck->types.push_back({parameter.value, parameter.text, FindType(parameter.value)});
    }
    const TypeClass kind = b->deck->types[static_cast<std::size_t>(put.first->second)].type.kind;
    const Place place{card.place.file, parameter.line, parameter.column};
    if (kind == TypeClass::unknown) {
        b->cards.Find(Code::unknownType, place, {Clip(parameter.text)});
    } else if (kind == TypeClass::uncertain) {
        b->cards.Find(Code::uncertain, place, {"TYPE=" + Clip(parameter.text)});
    }
    return put.first->second;
}

void BeginSection(Building *b, int card, int file, int type, int width, bool continued) {
    Scope &scope = b->Here();
    ElementTable &elements = scope.elements;
    const Parameter *elset = FindParameter(b->At(card), "ELSET");
    const std::string name = elset == nullptr ? "" : elset->value;
    elements.sections.push_back(
        {card, file, elements.number.size(), 0, continued, type, width, elements.nodes.size(), name, b->order});
    if (elset != nullptr && !name.empty()) {
        SetSection *section = BeginSetSection(b, &scope.elementSets, card, *elset, SetSource::elements);
        section->file = file;
        section->rowsOf = static_cast<int>(elements.sections.size()) - 1;
    }
}

// The element goes into the section's table, unless it has too few nodes.
void AddElement(Building *b, const Row &row, bool mayMiss) {
    ElementTable &elements = b->Here().elements;
    ElementSection &section = elements.sections.back();
    const auto width = static_cast<std::size_t>(section.width);
    const std::size_t given = row.values.size() - 1;
    const bool fewer = given < width && !mayMiss;
    if (fewer || given > width) {
        b->cards.Find(fewer ? Code::fewerNodes : Code::moreNodes, {row.first.file, row.first.number, 1},
                      {std::to_string(row.values[0]), std::to_string(given), std::to_string(width)});
    }
    if (fewer) {
        return;
    }
    elements.number.push_back(row.values[0]);
    elements.line.push_back(row.first.number);
    for (std::size_t i = 1; i <= width; ++i) {
        elements.nodes.push_back(i <= given ? row.values[i] : 0);
    }
    ++section.count;
}

} // namespace

void ReadElements(Building *b, int card) {
    const Card copy = b->At(card);
    const Parameter *parameter = FindParameter(copy, "TYPE");
    if (parameter == nullptr || parameter->value.empty()) {
        b->cards.Find(Code::missingParameter, copy.place, {"TYPE", copy.name});
        return;
    }
    const int type = TypeOf(b, copy, *parameter);
    int width = b->deck->types[static_cast<std::size_t>(type)].type.nNodes;
    const bool mayMiss = width == 0;
    const bool shapeless = b->deck->types[static_cast<std::size_t>(type)].type.shape == Shape::none;
    BeginSection(b, card, copy.place.file, type, width, false);
    b->cards.ReadRowsFrom(copy);
    Row row{};
    while (NextElement(b, static_cast<std::size_t>(width), mayMiss, shapeless, &row)) {
        if (row.broken) {
            continue;
        }
        ElementTable &elements = b->Here().elements;
        if (width == 0) { // the first row of an unknown type tells
            width = static_cast<int>(std::clamp<std::size_t>(row.values.size(), 2, kMostNodes + 1)) - 1;
            elements.sections.back().width = width;
        }
        if (row.first.file != elements.sections.back().file) {
            BeginSection(b, card, row.first.file, type, width, true);
        }
        if (row.commaColumn != 0 && !mayMiss) {
            b->cards.Remark(Code::rowEndComma, {row.first.file, row.first.number, row.commaColumn},
                            {std::to_string(row.values[0])});
        }
        AddElement(b, row, mayMiss);
    }
}

} // namespace deck
