// The order of blocks against the exchanges that define it.
#include "fuzz/memorysystem.h"
#include "fuzz/oracle.h"

#include "abaqus/abqexchange.h"

#include <numeric>
#include <utility>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    constexpr std::size_t kMostBlocks = 600; // the double loop is quadratic
    ResetSystem();
    Bytes in{data, data + size};
    const unsigned kind = NextByte(&in);
    std::vector<int> firsts;
    while (in.at < in.end && firsts.size() < kMostBlocks) {
        firsts.push_back(kind % 3 == 0   ? static_cast<int>(Next32(&in))
                         : kind % 3 == 1 ? static_cast<int>(NextByte(&in))
                                         : static_cast<int>(NextByte(&in) % 5));
    }
    const std::size_t n = firsts.size();

    std::vector<int> numbers = firsts;
    std::vector<int> stated(n);
    std::iota(stated.begin(), stated.end(), 0);
    for (std::size_t a = 0; a < n; ++a) {
        for (std::size_t b = a + 1; b < n; ++b) {
            if (numbers[a] > numbers[b]) {
                std::swap(numbers[a], numbers[b]);
                std::swap(stated[a], stated[b]);
            }
        }
    }
    std::vector<int> order(n);
    ABQExchangeOrder(static_cast<int>(n), firsts.data(), order.data());
    Require(order == stated, "blocks end where the exchanges leave them");
    Require(TheSystem()->held == 0, "all memory is given back");
    return 0;
}
