// A whole deck by the plain rules: order, look-ups, tags.
#include "fuzz/plaindeck.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <numeric>
#include <utility>

namespace {

// The stated sort of rows: the order in which they end.
void OrderRange(Ints *keys, Ints *rows, long low, long high) {
    while (high > low) {
        const auto bounds = std::minmax_element(keys->begin() + low, keys->begin() + high + 1);
        const long long most = *bounds.second;
        if (*bounds.first == most) {
            return;
        }
        long long pivot = (*bounds.first + most) / 2;
        pivot = pivot == most ? pivot - 1 : pivot;
        long i = low;
        long j = high;
        for (;;) {
            while ((*keys)[static_cast<std::size_t>(i)] <= pivot) {
                ++i;
            }
            while (j > i && (*keys)[static_cast<std::size_t>(j)] > pivot) {
                --j;
            }
            if (i >= j) {
                break;
            }
            std::swap((*keys)[static_cast<std::size_t>(i)], (*keys)[static_cast<std::size_t>(j)]);
            std::swap((*rows)[static_cast<std::size_t>(i)], (*rows)[static_cast<std::size_t>(j)]);
        }
        OrderRange(keys, rows, low, i - 1);
        low = i;
    }
}

template <class Block> void ExchangeBlocks(std::vector<Block> *blocks) {
    for (std::size_t a = 0; a < blocks->size(); ++a) {
        for (std::size_t b = a + 1; b < blocks->size(); ++b) {
            Block &first = (*blocks)[a];
            Block &second = (*blocks)[b];
            if (!first.numbers.empty() && !second.numbers.empty() && first.numbers[0] > second.numbers[0]) {
                std::swap(first, second);
            }
        }
    }
}

void OrderDeck(PlainDeck *deck) {
    std::reverse(deck->nodeBlocks.begin(), deck->nodeBlocks.end());
    std::reverse(deck->nodeSets.begin(), deck->nodeSets.end());
    std::reverse(deck->cellBlocks.begin(), deck->cellBlocks.end());
    std::reverse(deck->cellSets.begin(), deck->cellSets.end());
    std::reverse(deck->surfaces.begin(), deck->surfaces.end());
    for (NodeBlock &block : deck->nodeBlocks) {
        PlainSortRows(&block.numbers, &block.nodes);
    }
    for (CellBlock &block : deck->cellBlocks) {
        PlainSortRows(&block.numbers, &block.conn);
        block.faceTags.assign(block.conn.size(), Ints(4, 0));
    }
    ExchangeBlocks(&deck->nodeBlocks);
    ExchangeBlocks(&deck->cellBlocks);
}

// The first block that holds the number; a later set in the list writes over an earlier one.
void TagNode(PlainDeck *deck, int number, int tag) {
    for (NodeBlock &block : deck->nodeBlocks) {
        const int at = PlainFind(block.numbers, number);
        if (at != -1) {
            block.nodes[static_cast<std::size_t>(at)].tag = tag;
            return;
        }
    }
}

void TagElement(PlainDeck *deck, int number, int row, int tag) {
    for (CellBlock &block : deck->cellBlocks) {
        const int at = PlainFind(block.numbers, number);
        if (at == -1) {
            continue;
        }
        if (row < 0 || row >= (block.type <= 4 ? 3 : 4)) {
            deck->log += "\n  Error> in ABQ_SetCellFaceTagByGID\n";
        } else {
            block.faceTags[static_cast<std::size_t>(at)][static_cast<std::size_t>(row)] = tag;
        }
        return;
    }
}

void TagEntry(PlainDeck *deck, const SurfaceEntry &entry, int tag) {
    for (const NumberSet &set : deck->cellSets) {
        if (set.name == entry.name) {
            for (const int number : set.numbers) {
                TagElement(deck, number, entry.row, tag);
            }
            return;
        }
    }
    const long number = std::strtol(entry.name.c_str(), nullptr, 10);
    if (number >= INT_MIN && number <= INT_MAX) {
        TagElement(deck, static_cast<int>(number), entry.row, tag);
    }
}

} // namespace

Ints PlainSortKeys(Ints *keys) {
    Ints rows(keys->size());
    std::iota(rows.begin(), rows.end(), 0);
    OrderRange(keys, &rows, 0, static_cast<long>(keys->size()) - 1);
    return rows;
}

int PlainFind(const Ints &list, int id) {
    long lo = 0;
    long hi = static_cast<long>(list.size()) - 1;
    while (hi - lo > 1) {
        const long mid = (lo + hi) / 2;
        (list[static_cast<std::size_t>(mid)] < id ? lo : hi) = mid;
    }
    if (hi < 0) {
        return -1;
    }
    return list[static_cast<std::size_t>(hi)] == id   ? static_cast<int>(hi)
           : list[static_cast<std::size_t>(lo)] == id ? static_cast<int>(lo)
                                                      : -1;
}

void PlainResolve(PlainDeck *deck) {
    OrderDeck(deck);
    for (std::size_t s = 0; s < deck->nodeSets.size(); ++s) {
        for (const int number : deck->nodeSets[s].numbers) {
            TagNode(deck, number, static_cast<int>(s) + 1);
        }
    }
    for (std::size_t s = 0; s < deck->surfaces.size(); ++s) {
        for (const SurfaceEntry &entry : deck->surfaces[s]) {
            TagEntry(deck, entry, static_cast<int>(s) + 1);
        }
    }
}
