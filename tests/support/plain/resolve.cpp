// A whole deck: order, look-ups, tags.
#include "tests/support/plain/deck.h"

#include <algorithm>
#include <climits>
#include <cstdlib>

namespace {

// Empty blocks keep their places, the others change theirs among themselves.
template <class Block> void ExchangeBlocks(std::vector<Block> *blocks) {
    Ints firsts;
    std::vector<std::size_t> places;
    for (std::size_t b = 0; b < blocks->size(); ++b) {
        if (!(*blocks)[b].numbers.empty()) {
            firsts.push_back((*blocks)[b].numbers[0]);
            places.push_back(b);
        }
    }
    const std::vector<Block> before = *blocks;
    const Ints order = PlainExchange(firsts);
    for (std::size_t i = 0; i < places.size(); ++i) {
        (*blocks)[places[i]] = before[places[static_cast<std::size_t>(order[i])]];
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
    const long number = std::strtol(entry.name.c_str(), nullptr, 10); // as it stands: 0 without digits
    if (number >= INT_MIN && number <= INT_MAX) {
        TagElement(deck, static_cast<int>(number), entry.row, tag);
    }
}

} // namespace

void PlainResolve(PlainDeck *deck) {
    OrderDeck(deck);
    for (std::size_t s = 0; s < deck->nodeSets.size(); ++s) {
        for (const int number : deck->nodeSets[s].numbers) {
            TagNode(deck, number, static_cast<int>(s) + 1);
        }
    }
    for (std::size_t s = 0; s < deck->surfaces.size(); ++s) {
        for (const SurfaceEntry &entry : deck->surfaces[s].entries) {
            TagEntry(deck, entry, static_cast<int>(s) + 1);
        }
    }
}
