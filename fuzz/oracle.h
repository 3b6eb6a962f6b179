// What every fuzz target has in common: its entry, and how it says that a rule was broken.
#ifndef KIVOM_FUZZ_ORACLE_H
#define KIVOM_FUZZ_ORACLE_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

// Called for each input: by libFuzzer, or by replay_main.cpp. Returns 0; a broken rule ends the process.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

// Ends the process when the rule does not hold. The fuzzer keeps the input that led here.
inline void Require(bool holds, const char *rule) {
    if (!holds) {
        std::fprintf(stderr, "\nbroken rule: %s\n", rule);
        std::abort();
    }
}

// The bytes of an input, handed out from the front. At the end it gives zeros.
struct Bytes {
    const std::uint8_t *at;
    const std::uint8_t *end;
};

inline unsigned NextByte(Bytes *bytes) {
    return bytes->at < bytes->end ? *bytes->at++ : 0u;
}

inline std::uint32_t Next32(Bytes *bytes) {
    std::uint32_t value = 0;
    for (int i = 0; i < 4; ++i) {
        value = value << 8 | NextByte(bytes);
    }
    return value;
}

inline std::uint64_t Next64(Bytes *bytes) {
    const std::uint64_t high = Next32(bytes);
    return high << 32 | Next32(bytes);
}

#endif
