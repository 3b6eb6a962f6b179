// Fields of rows as the readers of sections ask for them, and positions by number.
#include "deck/building.h"

#include <algorithm>
#include <climits>

namespace deck {

namespace {

constexpr std::size_t kFewestSlots = 1024;

// Spreads consecutive numbers, and those of a fixed stride, over the slots.
std::size_t Spread(int number) {
    const unsigned spread = static_cast<unsigned>(number) * 2654435761u;
    return spread;
}

} // namespace

std::size_t NumberTable::SlotOf(const std::vector<int> &numbers, int number) const {
    const std::size_t mask = slots_.size() - 1;
    std::size_t slot = Spread(number) & mask;
    while (slots_[slot] != -1 && numbers[static_cast<std::size_t>(slots_[slot])] != number) {
        slot = (slot + 1) & mask;
    }
    return slot;
}

void NumberTable::Grow(const std::vector<int> &numbers, std::size_t wanted) {
    std::size_t size = std::max(slots_.size(), kFewestSlots);
    while (size < 2 * wanted) {
        size *= 2;
    }
    if (size != slots_.size()) {
        slots_.assign(size, -1);
        for (std::size_t i = 0; i < known_; ++i) {
            slots_[SlotOf(numbers, numbers[i])] = static_cast<int>(i);
        }
    }
}

void NumberTable::Update(const std::vector<int> &numbers) {
    Grow(numbers, numbers.size());
    for (; known_ < numbers.size(); ++known_) {
        slots_[SlotOf(numbers, numbers[known_])] = static_cast<int>(known_);
    }
}

int NumberTable::Find(const std::vector<int> &numbers, int number) const {
    return slots_.empty() ? -1 : slots_[SlotOf(numbers, number)];
}

Place PlaceOf(const Line &row, const Field &field) {
    return {row.file, row.number, field.column};
}

int DeckNumber(Building *b, const Line &row, const Field &field) {
    long long value = 0;
    const NumberForm form = ReadWhole(field.text, &value);
    if (form == NumberForm::none) {
        b->cards.Find(Code::badNumber, PlaceOf(row, field), {Clip(field.text)});
        return 0;
    }
    if (value < 1 || value > kMostNumber) {
        b->cards.Find(Code::numberRange, PlaceOf(row, field), {Clip(field.text)});
        return 0;
    }
    if (form == NumberForm::real) {
        b->cards.Remark(Code::wholeNumberAsReal, PlaceOf(row, field), {Clip(field.text)});
    }
    return static_cast<int>(value);
}

bool WholeField(Building *b, const Line &row, const std::vector<Field> &fields, std::size_t i, int missing,
                int *value) {
    *value = missing;
    if (i >= fields.size() || fields[i].text.empty()) {
        return true;
    }
    long long whole = 0;
    const NumberForm form = ReadWhole(fields[i].text, &whole);
    if (form == NumberForm::none || whole < -kMostNumber || whole > kMostNumber) {
        b->cards.Find(Code::badNumber, PlaceOf(row, fields[i]), {Clip(fields[i].text)});
        return false;
    }
    if (form == NumberForm::real) {
        b->cards.Remark(Code::wholeNumberAsReal, PlaceOf(row, fields[i]), {Clip(fields[i].text)});
    }
    *value = static_cast<int>(whole);
    return true;
}

bool RealField(Building *b, const Line &row, const std::vector<Field> &fields, std::size_t i, double *value) {
    *value = 0;
    if (i >= fields.size() || fields[i].text.empty()) {
        return true;
    }
    const NumberForm form = ReadReal(fields[i].text, value);
    if (form == NumberForm::none) {
        b->cards.Find(Code::badNumber, PlaceOf(row, fields[i]), {Clip(fields[i].text)});
        return false;
    }
    if (form == NumberForm::exponent) {
        b->cards.Remark(Code::dExponent, PlaceOf(row, fields[i]), {Clip(fields[i].text)});
    }
    return true;
}

std::string ValueOf(const Card &card, const char *name) {
    const Parameter *parameter = FindParameter(card, name);
    return parameter == nullptr ? "" : parameter->value;
}

int PositionOfNode(Building *b, int number) {
    NumberTable &table = b->numbersOf[b->scope][0];
    table.Update(b->Here().nodes.number);
    return table.Find(b->Here().nodes.number, number);
}

int PositionOfElement(Building *b, int number) {
    NumberTable &table = b->numbersOf[b->scope][1];
    table.Update(b->Here().elements.number);
    return table.Find(b->Here().elements.number, number);
}

const ElementSection &SectionOf(const ElementTable &elements, std::size_t position) {
    auto behind = std::upper_bound(elements.sections.begin(), elements.sections.end(), position,
                                   [](std::size_t at, const ElementSection &s) { return at < s.first; });
    do { // empty sections begin where the one before them ends
        --behind;
    } while (behind->count == 0);
    return *behind;
}

bool MayGenerate(Building *b, const Place &place, const char *keyword, long long count) {
    if (count > b->limits.mostGenerated - b->generated) {
        b->cards.Find(Code::tooMany, place, {keyword, std::to_string(count)});
        return false;
    }
    b->generated += count;
    return true;
}

} // namespace deck
