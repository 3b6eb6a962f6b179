// Sorting and look-up against the standard library and the stated steps.
#include "fuzz/oracle.h"

#include "tests/support/fakesystem.h"
#include "tests/support/plain/plain.h"

#include "abaqus/abqfind.h"
#include "support/frame.h"
#include "support/lookup.h"

#include <algorithm>
#include <climits>
#include <numeric>
#include <vector>

namespace {

// Keys of many kinds: whole 32-bit numbers, small ones that repeat, steps from one to the next, extremes in turn.
Ints TakeKeys(Bytes *in) {
    const unsigned kind = NextByte(in);
    const std::size_t n = NextByte(in) + (kind >= 128 ? 256 * (NextByte(in) % 4) : 0);
    Ints keys;
    int last = static_cast<int>(Next32(in));
    for (std::size_t i = 0; i < n; ++i) {
        switch (kind % 5) {
        case 0:
            keys.push_back(static_cast<int>(Next32(in)));
            break;
        case 1:
            keys.push_back(static_cast<signed char>(NextByte(in)));
            break;
        case 2:
            last = static_cast<int>(static_cast<unsigned>(last) + NextByte(in) % 4);
            keys.push_back(last);
            break;
        case 3: { // mostly the numbers i in another order
            const unsigned byte = NextByte(in);
            keys.push_back(static_cast<int>((i * 7 + (byte > 250 ? byte : 0u)) % (n == 0 ? 1 : n)));
            break;
        }
        default:
            keys.push_back((i % 2 == 0 ? INT_MIN : INT_MAX) + (i % 2 == 0 ? 1 : -1) * static_cast<int>(NextByte(in)));
            break;
        }
    }
    return keys;
}

void CheckSorts(const Ints &keys) {
    const int n = static_cast<int>(keys.size());
    Ints sorted = keys;
    std::sort(sorted.begin(), sorted.end());

    Ints alone = keys;
    BinarySort(n, alone.data());
    Require(alone == sorted, "numbers are sorted");

    Ints positions(keys.size());
    std::iota(positions.begin(), positions.end(), 0);
    Ints a = keys;
    Ints b = positions;
    SortByFirstArray2(n, a.data(), b.data());
    Ints statedA = keys;
    const Ints statedB = PlainSort(&statedA);
    Require(statedA == sorted && a == sorted, "keys are sorted");
    Require(b == statedB, "companions end where the partition leaves them");

    Ints rows = keys;
    Ints order = positions;
    const bool changed = OrderRows(n, rows.data(), order.data());
    Require(changed != std::is_sorted(keys.begin(), keys.end()), "what is in order is left alone");
    Require(rows == sorted && order == statedB, "rows end where the partition leaves them");

    Ints column = keys;
    Ints spare(keys.size());
    std::vector<double> reals(keys.begin(), keys.end());
    std::vector<double> spareReals(keys.size());
    ReorderINT(n, column.data(), order.data(), spare.data());
    ReorderDBL(n, reals.data(), order.data(), spareReals.data());
    Require(column == sorted, "a column follows its rows");
    Require(std::equal(reals.begin(), reals.end(), sorted.begin(), [](double x, int k) { return x == k; }),
            "a column follows its rows");
}

void CheckLookUp(const Ints &sorted, const Ints &wanted) {
    const int n = static_cast<int>(sorted.size());
    Ints companions(sorted.size());
    std::iota(companions.begin(), companions.end(), 1000);
    IDIndex index;
    BuildIDIndex(&index, n, sorted.data());
    for (const int id : wanted) {
        const int stated = PlainFind(sorted, id);
        Require(FindIDPositionInTheList(n, sorted.data(), id) == stated, "a number is found where the halving ends");
        Require(FindIDByIndex(&index, id) == stated, "the prepared look-up agrees");
        Require(GetLIDByGID(id, n, sorted.data(), companions.data()) == (stated < 0 ? -1 : 1000 + stated),
                "the companion is that of the number");
        Require((stated >= 0) == std::binary_search(sorted.begin(), sorted.end(), id), "a number there is found");
    }
    ReleaseIDIndex(&index);
}

// Numbers to look for: those of the list, their neighbours, and whatever else.
Ints NumbersToFind(const Ints &keys, Bytes *in) {
    Ints wanted = {0, 1, -1, INT_MAX, INT_MIN};
    for (const int key : keys) {
        wanted.push_back(key);
        wanted.push_back(key == INT_MAX ? key : key + 1);
        wanted.push_back(key == INT_MIN ? key : key - 1);
    }
    for (int i = 0; i < 8; ++i) {
        wanted.push_back(static_cast<int>(Next32(in)));
    }
    return wanted;
}

// The keys cut into blocks: the first block that holds a number is the one where it is found.
void CheckFinder(const Ints &keys, const Ints &wanted, Bytes *in) {
    std::vector<Ints> blocks;
    for (std::size_t at = 0; at < keys.size() || blocks.empty();) {
        const std::size_t n = std::min<std::size_t>(NextByte(in) % 32, keys.size() - at);
        blocks.emplace_back(keys.begin() + static_cast<long>(at), keys.begin() + static_cast<long>(at + n));
        std::sort(blocks.back().begin(), blocks.back().end());
        at += n == 0 ? 1 : n;
    }
    std::vector<const int *> columns;
    Ints counts;
    for (const Ints &block : blocks) {
        columns.push_back(block.data());
        counts.push_back(static_cast<int>(block.size()));
    }
    ABQFinder finder;
    ABQBuildFinder(&finder, static_cast<int>(blocks.size()), columns.data(), counts.data());
    for (const int id : wanted) {
        ABQPlace stated{-1, -1};
        for (std::size_t i = 0; i < blocks.size() && stated.block == -1; ++i) {
            const int row = PlainFind(blocks[i], id);
            stated = row == -1 ? stated : ABQPlace{static_cast<int>(i), row};
        }
        const ABQPlace found = ABQFind(&finder, id);
        Require(found.block == stated.block && found.row == stated.row, "a number is found in the first block");
    }
    ABQReleaseFinder(&finder);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    fake::Reset();
    Bytes in{data, data + size};
    const Ints keys = TakeKeys(&in);
    CheckSorts(keys);
    Ints sorted = keys;
    std::sort(sorted.begin(), sorted.end());
    const Ints wanted = NumbersToFind(keys, &in);
    CheckLookUp(sorted, wanted);
    sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());
    CheckLookUp(sorted, wanted);
    CheckFinder(keys, wanted, &in);
    CheckFinder(sorted, wanted, &in);
    Require(fake::BytesHeld() == 0, "all memory is given back");
    return 0;
}
