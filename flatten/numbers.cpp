// Final numbers of nodes and cells, and the scale of the coordinates.
#include "flatten/making.h"

#include <algorithm>
#include <cmath>

namespace flatten {

namespace {

// Where the numbers of placed parts go: those of the first stay, each other one's begin at a round number.
int LargestOf(const std::vector<int> &numbers, std::size_t first, std::size_t count) {
    const auto begin = numbers.begin() + static_cast<std::ptrdiff_t>(first);
    return count == 0 ? 0 : *std::max_element(begin, begin + static_cast<std::ptrdiff_t>(count));
}

int LargestOf(const deck::Mesh &mesh, const deck::Placed &placed) {
    return std::max(LargestOf(mesh.nodeNumber, placed.firstNode, placed.nNodes),
                    LargestOf(mesh.elementNumber, placed.firstElement, placed.nElements));
}

// Whether a number occurs twice.
bool Clashes(const std::vector<int> &numbers) {
    const auto notBelow = [](int a, int b) { return a >= b; };
    if (std::adjacent_find(numbers.begin(), numbers.end(), notBelow) == numbers.end()) {
        return false; // ascending, as most decks have them
    }
    std::vector<int> sorted = numbers;
    std::sort(sorted.begin(), sorted.end());
    return std::adjacent_find(sorted.begin(), sorted.end()) != sorted.end();
}

long long RoundUp(long long value, long long unit) {
    return (value + unit - 1) / unit * unit;
}

// The power of ten above the largest number: offsets that are its multiples leave numbers readable.
long long UnitOf(const deck::Mesh &mesh) {
    long long largest = 1;
    for (const deck::Placed &placed : mesh.placed) {
        largest = std::max<long long>(largest, LargestOf(mesh, placed));
    }
    long long unit = 1;
    while (unit <= largest) {
        unit *= 10;
    }
    return unit;
}

// False where the numbers become too large.
bool SetOffsets(Making *m, long long unit) {
    long long most = 0;
    m->offset.assign(m->mesh.placed.size(), 0);
    for (std::size_t p = 0; p < m->mesh.placed.size(); ++p) {
        const int largest = LargestOf(m->mesh, m->mesh.placed[p]);
        m->offset[p] = largest == 0 ? 0 : RoundUp(most, unit);
        most = std::max(most, m->offset[p] + largest);
    }
    return most <= deck::kMostNumber;
}

// Rows of a part and of its instance's own lines, or of the only instance and the assembly, may have the same numbers;
// the later row then gets one of its own above all.
bool SeparateEqual(std::vector<int> *numbers) {
    if (!Clashes(*numbers)) {
        return true;
    }
    std::vector<int> order(numbers->size());
    for (std::size_t i = 0; i < order.size(); ++i) {
        order[i] = static_cast<int>(i);
    }
    const auto at = [&](int i) -> int & { return (*numbers)[static_cast<std::size_t>(i)]; };
    std::sort(order.begin(), order.end(), [&](int i, int j) { return at(i) != at(j) ? at(i) < at(j) : i < j; });
    int next = at(order.back());
    int before = 0;
    for (const int i : order) {
        if (at(i) == before) {
            if (next == deck::kMostNumber) {
                return false;
            }
            at(i) = ++next;
        } else {
            before = at(i);
        }
    }
    return true;
}

void NoteChanges(Making *m, const char *kind, const std::vector<int> &before, const std::vector<int> &after,
                 std::size_t deck::Placed::*first, std::size_t deck::Placed::*count) {
    for (std::size_t p = 0; p < m->mesh.placed.size() && m->wantsChanges; ++p) {
        const deck::Placed &placed = m->mesh.placed[p];
        for (std::size_t i = placed.*first; i < placed.*first + placed.*count; ++i) {
            if (before[i] != after[i]) {
                m->flat.changes.push_back({kind, placed.name, std::to_string(before[i]), std::to_string(after[i])});
            }
        }
    }
}

} // namespace

void NumberNodes(Making *m) {
    const deck::Mesh &mesh = m->mesh;
    m->plain.nodeNumber = mesh.nodeNumber;
    m->offset.assign(mesh.placed.size(), 0);
    const bool separate = m->severalInstances || Clashes(mesh.nodeNumber) || Clashes(mesh.elementNumber);
    bool enough = !separate;
    for (long long unit = UnitOf(mesh); !enough && unit > 0; unit /= 10) { // finer ones where numbers would run out
        enough = SetOffsets(m, unit);
    }
    if (!enough) {
        m->Find(Code::tooManyNumbers, {0, 0, 0}, {});
        m->offset.assign(mesh.placed.size(), 0);
    }
    for (std::size_t p = 0; p < mesh.placed.size(); ++p) {
        const deck::Placed &placed = mesh.placed[p];
        for (std::size_t i = placed.firstNode; i < placed.firstNode + placed.nNodes; ++i) {
            m->plain.nodeNumber[i] += static_cast<int>(m->offset[p]);
        }
    }
    if (separate && !SeparateEqual(&m->plain.nodeNumber)) {
        m->Find(Code::tooManyNumbers, {0, 0, 0}, {});
    }
    NoteChanges(m, "node", mesh.nodeNumber, m->plain.nodeNumber, &deck::Placed::firstNode, &deck::Placed::nNodes);
}

void ScaleNodes(Making *m) {
    m->plain.x.swap(m->mesh.x);
    m->plain.y.swap(m->mesh.y);
    m->plain.z.swap(m->mesh.z);
    if (m->options.scale == 1) {
        return;
    }
    bool finite = true;
    for (std::vector<double> *column : {&m->plain.x, &m->plain.y, &m->plain.z}) {
        for (double &value : *column) {
            value *= m->options.scale;
            finite = finite && std::isfinite(value);
        }
    }
    if (!finite) {
        m->Find(Code::scaledTooFar, {0, 0, 0}, {std::to_string(m->options.scale)});
    }
}

void NumberCells(Making *m) {
    const deck::Mesh &mesh = m->mesh;
    std::vector<int> numbers = mesh.elementNumber;
    for (std::size_t p = 0; p < mesh.placed.size(); ++p) {
        const deck::Placed &placed = mesh.placed[p];
        for (std::size_t i = placed.firstElement; i < placed.firstElement + placed.nElements; ++i) {
            numbers[i] += static_cast<int>(m->offset[p]);
        }
    }
    bool enough = SeparateEqual(&numbers);
    NoteChanges(m, "element", mesh.elementNumber, numbers, &deck::Placed::firstElement, &deck::Placed::nElements);
    long long next = numbers.empty() ? 0 : *std::max_element(numbers.begin(), numbers.end());
    std::size_t placed = 0;
    for (std::size_t e = 0; e < numbers.size(); ++e) { // the first piece keeps the number
        while (e >= mesh.placed[placed].firstElement + mesh.placed[placed].nElements) {
            ++placed;
        }
        for (int c = m->firstCell[e]; c < m->firstCell[e + 1]; ++c) {
            const bool own = c == m->firstCell[e];
            enough = enough && (own || next < deck::kMostNumber);
            next += own || !enough ? 0 : 1;
            m->plain.cellNumber[static_cast<std::size_t>(c)] = own ? numbers[e] : static_cast<int>(next);
            if (!own && m->wantsChanges) {
                m->flat.changes.push_back(
                    {"element", mesh.placed[placed].name, std::to_string(mesh.elementNumber[e]), std::to_string(next)});
            }
        }
    }
    if (!enough) {
        m->Find(Code::tooManyNumbers, {0, 0, 0}, {});
    }
}

} // namespace flatten
