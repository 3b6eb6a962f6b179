// *NSET and *ELSET, and what a set holds in the middle of the deck.
#include "deck/building.h"

#include <algorithm>
#include <utility>

namespace deck {

namespace {

// The ordinary row: numbers and commas.
bool PlainRow(const Line &line, std::vector<int> *entries) {
    entries->clear();
    for (const char *at = line.begin;;) {
        int value = 0;
        at = PlainWhole(at, &value);
        if (at == nullptr || value == 0) {
            return false;
        }
        entries->push_back(value);
        if (*at == ',') {
            at = SkipBlanks(at + 1);
        } else if (at != line.end) {
            return false;
        }
        if (at == line.end) {
            return true;
        }
    }
}

// A field that begins as a number does and has no letter is one; others are names.
bool IsName(std::string_view text) {
    long long value = 0;
    return ReadWhole(text, &value) == NumberForm::none && std::any_of(text.begin(), text.end(), [](char c) {
               const char upper = ToUpper(c);
               return (upper >= 'A' && upper <= 'Z') || c == '"' || c == '_' || static_cast<unsigned char>(c) > 127;
           });
}

void AnyRow(Building *b, const Line &line, SetTable *table, std::vector<int> *entries) {
    entries->clear();
    for (const Field &field : b->cards.Fields(line)) {
        if (IsName(field.text)) {
            table->names.push_back(MeantName(field.text));
            entries->push_back(-static_cast<int>(table->names.size()));
            continue;
        }
        const int number = DeckNumber(b, line, field);
        if (number != 0) {
            entries->push_back(number);
        }
    }
}

// first, last, step of a GENERATE row. False, with a finding, when they make no range.
bool RangeRow(Building *b, const Line &line, std::vector<int> *entries) {
    const std::vector<Field> &fields = b->cards.Fields(line);
    entries->assign(3, 0);
    int *range = entries->data();
    if (fields.size() < 2) {
        b->cards.Find(Code::badNumber, PlaceOf(line, fields[0]), {Clip(fields[0].text)});
        return false;
    }
    range[0] = DeckNumber(b, line, fields[0]);
    range[1] = range[0] == 0 ? 0 : DeckNumber(b, line, fields[1]);
    if (range[1] == 0 || !WholeField(b, line, fields, 2, 1, &range[2])) {
        return false;
    }
    const int distance = range[1] - range[0];
    if (range[2] == 0 || (distance != 0 && (distance < 0) != (range[2] < 0)) || distance % range[2] != 0) {
        b->cards.Find(Code::badNumber, PlaceOf(line, fields[0]), {Clip(Trim(line.Text()))});
        return false;
    }
    if (distance / range[2] + 1LL > kMostInRange) {
        b->cards.Find(Code::tooMany, PlaceOf(line, fields[0]), {"GENERATE", std::to_string(distance / range[2] + 1LL)});
        return false;
    }
    return true;
}

SetSource SourceOf(const Card &card, bool ofNodes) {
    if (ofNodes && FindParameter(card, "ELSET") != nullptr) {
        return SetSource::elset;
    }
    if (ofNodes && FindParameter(card, "SURFACE") != nullptr) {
        return SetSource::surface;
    }
    return FindParameter(card, "GENERATE") != nullptr ? SetSource::ranges : SetSource::rows;
}

SetSection *BeginSection(Building *b, SetTable *table, int card, int file, bool ofNodes) {
    const Card &at = b->At(card);
    const SetSource source = SourceOf(at, ofNodes);
    SetSection *section = BeginSetSection(b, table, card, *FindParameter(at, ofNodes ? "NSET" : "ELSET"), source);
    section->file = file;
    section->instance = ValueOf(at, "INSTANCE");
    section->internal = FindParameter(at, "INTERNAL") != nullptr;
    section->unsorted = FindParameter(at, "UNSORTED") != nullptr;
    section->sourceName = source == SetSource::elset     ? ValueOf(at, "ELSET")
                          : source == SetSource::surface ? ValueOf(at, "SURFACE")
                                                         : "";
    return section;
}

// Numbers of the range that are in the list now.
void AddRange(Building *b, bool ofNodes, const int *range, std::vector<int> *numbers) {
    const std::vector<int> &list = ofNodes ? b->Here().nodes.number : b->Here().elements.number;
    const int low = std::min(range[0], range[1]);
    const int high = std::max(range[0], range[1]);
    const int step = std::abs(range[2]);
    if (!b->MayLook(std::min(list.size(), static_cast<std::size_t>((high - low) / step) + 1))) {
        return;
    }
    if (static_cast<std::size_t>((high - low) / step) > list.size()) {
        for (const int number : list) {
            if (number >= low && number <= high && (number - low) % step == 0) {
                numbers->push_back(number);
            }
        }
        return;
    }
    for (long long number = low; number <= high; number += step) {
        const int n = static_cast<int>(number);
        if ((ofNodes ? PositionOfNode(b, n) : PositionOfElement(b, n)) >= 0) {
            numbers->push_back(n);
        }
    }
}

void AddNodesOfElements(Building *b, const std::vector<int> &elementNumbers, std::vector<int> *numbers) {
    const ElementTable &elements = b->Here().elements;
    for (const int number : elementNumbers) {
        const int position = PositionOfElement(b, number);
        if (position < 0) {
            continue;
        }
        const auto at = static_cast<std::size_t>(position);
        const ElementSection &section = SectionOf(elements, at);
        const auto width = static_cast<std::size_t>(section.width);
        const int *nodes = elements.nodes.data() + section.firstNode + (at - section.first) * width;
        numbers->insert(numbers->end(), nodes, nodes + width);
    }
    numbers->erase(std::remove(numbers->begin(), numbers->end(), 0), numbers->end());
}

// What the set holds before the section of that order. Node sets may ask element sets, and these no others.
bool SetBefore(Building *b, SetTable *table, const std::string &name, int order, std::vector<int> *numbers,
               bool *unsorted);

// A set and the order of the section that names it: its sections before that one count.
using Part = std::pair<int, int>;

// What one section lists itself; the sets that it names go onto the list of those still to be looked at.
void AddSection(Building *b, SetTable *table, const SetSection &section, std::vector<Part> *names,
                std::vector<int> *numbers) {
    Scope &scope = b->Here();
    const bool ofNodes = table == &scope.nodeSets;
    if (section.source == SetSource::nodes) {
        const NodeSection &rows = scope.nodes.sections[static_cast<std::size_t>(section.rowsOf)];
        const auto from = scope.nodes.number.begin() + static_cast<std::ptrdiff_t>(rows.first);
        numbers->insert(numbers->end(), from, from + static_cast<std::ptrdiff_t>(rows.count));
    } else if (section.source == SetSource::elements) {
        const ElementSection &rows = scope.elements.sections[static_cast<std::size_t>(section.rowsOf)];
        const auto from = scope.elements.number.begin() + static_cast<std::ptrdiff_t>(rows.first);
        numbers->insert(numbers->end(), from, from + static_cast<std::ptrdiff_t>(rows.count));
    } else if (section.source == SetSource::elset) {
        std::vector<int> elementNumbers;
        bool unsorted = false;
        if (SetBefore(b, &scope.elementSets, section.sourceName, section.order, &elementNumbers, &unsorted)) {
            AddNodesOfElements(b, elementNumbers, numbers);
        }
    }
    for (std::size_t row = section.firstRow; row < section.firstRow + section.rowCount; ++row) {
        for (std::size_t i = table->rowFirst[row]; i < table->rowFirst[row + 1]; ++i) {
            const int entry = table->entries[i];
            if (section.source == SetSource::ranges) {
                AddRange(b, ofNodes, &table->entries[i], numbers);
                break;
            }
            if (entry > 0) {
                numbers->push_back(entry);
            } else {
                names->push_back({FindSet(*table, table->names[static_cast<std::size_t>(-1 - entry)]), section.order});
            }
        }
    }
}

bool SetBefore(Building *b, SetTable *table, const std::string &name, int order, std::vector<int> *numbers,
               bool *unsorted) {
    numbers->clear();
    const int set = FindSet(*table, name);
    if (set < 0) {
        return false;
    }
    *unsorted = true;
    for (const int section : table->sets[static_cast<std::size_t>(set)].sections) {
        *unsorted = *unsorted && table->sections[static_cast<std::size_t>(section)].unsorted;
    }
    std::vector<Part> parts{{set, order}};
    std::map<int, int> seen; // order up to which a set has been looked at
    while (!parts.empty()) {
        const Part part = parts.back();
        parts.pop_back();
        if (part.first < 0) {
            continue;
        }
        int &from = seen.emplace(part.first, -1).first->second;
        for (const int at : table->sets[static_cast<std::size_t>(part.first)].sections) {
            const SetSection section = table->sections[static_cast<std::size_t>(at)];
            const std::size_t before = numbers->size();
            if (section.order > from && section.order < part.second) {
                AddSection(b, table, section, &parts, numbers);
            }
            if (!b->MayLook(1 + section.rowCount + numbers->size() - before)) {
                return false;
            }
        }
        from = std::max(from, part.second - 1);
    }
    if (!*unsorted || seen.size() > 1) {
        *unsorted = false;
        std::sort(numbers->begin(), numbers->end());
        numbers->erase(std::unique(numbers->begin(), numbers->end()), numbers->end());
    }
    return true;
}

} // namespace

int FindSet(const SetTable &table, const std::string &name) {
    const auto found = table.byName.find(name);
    return found == table.byName.end() ? -1 : found->second;
}

SetSection *BeginSetSection(Building *b, SetTable *table, int card, const Parameter &name, SetSource source) {
    const auto put = table->byName.emplace(name.value, static_cast<int>(table->sets.size()));
    if (put.second) {
        table->sets.push_back({name.value, name.text, {}});
    }
    table->sets[static_cast<std::size_t>(put.first->second)].sections.push_back(
        static_cast<int>(table->sections.size()));
    SetSection section{};
    section.card = card;
    section.file = b->At(card).place.file;
    section.source = source;
    section.order = b->order++;
    section.firstRow = table->rowLine.size();
    table->sections.push_back(section);
    return &table->sections.back();
}

void AddSetRow(SetTable *table, int line, const std::vector<int> &entries) {
    table->rowLine.push_back(line);
    table->entries.insert(table->entries.end(), entries.begin(), entries.end());
    table->rowFirst.push_back(table->entries.size());
    ++table->sections.back().rowCount;
}

bool SetNow(Building *b, SetTable *table, const std::string &name, std::vector<int> *numbers, bool *unsorted) {
    return SetBefore(b, table, name, b->order, numbers, unsorted);
}

void ReadSet(Building *b, int card, bool ofNodes) {
    const char *word = ofNodes ? "NSET" : "ELSET";
    if (ValueOf(b->At(card), word).empty()) {
        b->cards.Find(Code::missingParameter, b->At(card).place, {word, b->At(card).name});
        return;
    }
    SetTable *table = ofNodes ? &b->Here().nodeSets : &b->Here().elementSets;
    SetSource source = BeginSection(b, table, card, b->At(card).place.file, ofNodes)->source;
    std::vector<int> entries;
    Line line;
    while (b->cards.NextRow(&line)) {
        if (source == SetSource::elset || source == SetSource::surface) {
            b->cards.Find(Code::strayRow, {line.file, line.number, 1}, {word});
            continue;
        }
        if (line.file != table->sections.back().file) {
            BeginSection(b, table, card, line.file, ofNodes);
        }
        if (source == SetSource::ranges) {
            if (RangeRow(b, line, &entries)) {
                AddSetRow(table, line.number, entries);
            }
            continue;
        }
        if (!PlainRow(line, &entries)) {
            AnyRow(b, line, table, &entries);
        }
        AddSetRow(table, line.number, entries);
    }
}

} // namespace deck
