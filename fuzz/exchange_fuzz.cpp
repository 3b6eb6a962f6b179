// The order of blocks against the exchanges that define it.
#include "fuzz/oracle.h"

#include "tests/support/fakesystem.h"
#include "tests/support/plain/plain.h"

#include "abaqus/abqexchange.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    constexpr std::size_t kMostBlocks = 600; // the double loop is quadratic
    fake::Reset();
    Bytes in{data, data + size};
    const unsigned kind = NextByte(&in);
    Ints firsts;
    while (in.at < in.end && firsts.size() < kMostBlocks) {
        firsts.push_back(kind % 3 == 0   ? static_cast<int>(Next32(&in))
                         : kind % 3 == 1 ? static_cast<int>(NextByte(&in))
                                         : static_cast<int>(NextByte(&in) % 5));
    }
    const std::size_t n = firsts.size();

    Ints order(n);
    ABQExchangeOrder(static_cast<int>(n), firsts.data(), order.data());
    Require(order == PlainExchange(firsts), "blocks end where the exchanges leave them");
    Require(fake::BytesHeld() == 0, "all memory is given back");
    return 0;
}
