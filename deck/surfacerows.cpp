// *SURFACE.
#include "deck/building.h"

#include <cstring>

namespace deck {

namespace {

constexpr std::size_t kShortestValue = 3; // letters of a value that is cut short

constexpr const char *kLabels[] = {"S1", "S2", "S3", "S4", "S5",   "S6",
                                   "E1", "E2", "E3", "E4", "SPOS", "SNEG"}; // ORDER: Label

bool Means(const std::string &value, const char *word) {
    return value.size() >= kShortestValue && std::strncmp(word, value.c_str(), value.size()) == 0;
}

Label LabelOf(const std::string &text) {
    for (std::size_t i = 0; i < std::size(kLabels); ++i) {
        if (text == kLabels[i]) {
            return static_cast<Label>(i);
        }
    }
    return Label::unknown;
}

Combine CombineOf(const std::string &value) {
    return Means(value, "UNION")          ? Combine::unite
           : Means(value, "INTERSECTION") ? Combine::intersect
           : Means(value, "DIFFERENCE")   ? Combine::subtract
                                          : Combine::none;
}

// What rows the surface has; a finding where they name no faces or nodes for certain.
SurfaceKind KindOf(Building *b, const Card &card, Combine *combine) {
    *combine = Combine::none;
    for (const char *word : {"CROP", "DEFINITION"}) {
        if (const Parameter *parameter = FindParameter(card, word)) {
            b->cards.Find(Code::uncertain, {card.place.file, parameter->line, parameter->column},
                          {card.name + ", " + word});
            return SurfaceKind::refused;
        }
    }
    if (const Parameter *parameter = FindParameter(card, "COMBINE")) {
        *combine = CombineOf(parameter->value);
        if (*combine == Combine::none) {
            b->cards.Find(Code::uncertain, {card.place.file, parameter->line, parameter->column},
                          {"COMBINE=" + Clip(parameter->text)});
        }
        return *combine == Combine::none ? SurfaceKind::refused : SurfaceKind::combined;
    }
    const Parameter *type = FindParameter(card, "TYPE");
    if (type == nullptr || Means(type->value, "ELEMENT")) {
        return SurfaceKind::element;
    }
    if (Means(type->value, "NODE")) {
        return SurfaceKind::node;
    }
    b->cards.Find(Code::notMesh, {card.place.file, type->line, type->column},
                  {card.name + ", TYPE=" + Clip(type->text)});
    return SurfaceKind::refused;
}

void BeginSection(Building *b, int card, int file, SurfaceKind kind, Combine combine) {
    SurfaceTable &table = b->Here().surfaces;
    const Parameter *name = FindParameter(b->At(card), "NAME");
    const auto put = table.byName.emplace(name->value, static_cast<int>(table.surfaces.size()));
    if (put.second) {
        table.surfaces.push_back({name->value, name->text, {}});
    }
    Surface &surface = table.surfaces[static_cast<std::size_t>(put.first->second)];
    if (!surface.sections.empty() && table.sections[static_cast<std::size_t>(surface.sections.back())].card != card) {
        b->cards.Find(Code::surfaceTwice, b->At(card).place, {Clip(name->text)});
    }
    surface.sections.push_back(static_cast<int>(table.sections.size()));
    SurfaceSection section{};
    section.card = card;
    section.file = file;
    section.kind = kind;
    section.combine = combine;
    section.order = b->order++;
    section.firstRow = table.rows.size();
    section.internal = FindParameter(b->At(card), "INTERNAL") != nullptr;
    table.sections.push_back(section);
}

// The first field as a number, or as a name with its place in the table; 0, with a finding, when it is neither.
int MemberOf(Building *b, SurfaceTable *table, const Line &line, const Field &field) {
    long long value = 0;
    if (field.text.empty() || ReadWhole(field.text, &value) != NumberForm::none) {
        return DeckNumber(b, line, field);
    }
    table->names.push_back(MeantName(field.text));
    return -static_cast<int>(table->names.size());
}

void AddRow(SurfaceTable *table, const SurfaceRow &row) {
    table->rows.push_back(row);
    ++table->sections.back().rowCount;
}

void ElementRow(Building *b, SurfaceTable *table, const Line &line) {
    const std::vector<Field> &fields = b->cards.Fields(line);
    SurfaceRow row{line.number, MemberOf(b, table, line, fields[0]), Label::none, -1};
    if (row.member == 0) {
        return;
    }
    if (fields.size() > 1 && !fields[1].text.empty()) {
        const std::string label = Fold(fields[1].text);
        row.label = LabelOf(label);
        if (row.label == Label::unknown) {
            row.labelWord = static_cast<int>(table->names.size());
            table->names.push_back(Clip(label));
        }
    }
    AddRow(table, row);
}

// A node or node set; the weight behind it plays no part.
void NodeRow(Building *b, SurfaceTable *table, const Line &line) {
    const int member = MemberOf(b, table, line, b->cards.Fields(line)[0]);
    if (member != 0) {
        AddRow(table, {line.number, member, Label::none, -1});
    }
}

void NamesRow(Building *b, SurfaceTable *table, const Line &line) {
    for (const Field &field : b->cards.Fields(line)) {
        if (!field.text.empty()) {
            table->names.push_back(MeantName(field.text));
            AddRow(table, {line.number, -static_cast<int>(table->names.size()), Label::none, -1});
        }
    }
}

} // namespace

void ReadSurface(Building *b, int card) {
    if (ValueOf(b->At(card), "NAME").empty()) {
        b->cards.Find(Code::missingParameter, b->At(card).place, {"NAME", b->At(card).name});
        return;
    }
    Combine combine = Combine::none;
    const SurfaceKind kind = KindOf(b, Card(b->At(card)), &combine);
    BeginSection(b, card, b->At(card).place.file, kind, combine);
    SurfaceTable *table = &b->Here().surfaces;
    Line line;
    while (b->cards.NextRow(&line)) {
        if (line.file != table->sections.back().file) {
            BeginSection(b, card, line.file, kind, combine);
        }
        if (kind == SurfaceKind::element) {
            ElementRow(b, table, line);
        } else if (kind == SurfaceKind::node) {
            NodeRow(b, table, line);
        } else if (kind == SurfaceKind::combined) {
            NamesRow(b, table, line);
        }
    }
}

} // namespace deck
