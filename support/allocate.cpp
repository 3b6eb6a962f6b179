// Every block of memory in the program is obtained, resized and released here.
#include "support/frame.h"

#include "support/system.h"

#include <climits>
#include <cstdlib>
#include <cstring>

namespace {

bool contentsLost = false; // a block held could not grow: the fresh one holds zeros instead

[[noreturn]] void EndForShortage() {
    std::fprintf(stderr, "KIVOm: shortage of memory\n");
    std::exit(EXIT_FAILURE);
}

void ReportShortage(std::uint64_t size) {
    const auto bytes = static_cast<double>(size);
    std::printf("Error> failed to allocate storage with ");
    if (size > 1048575) {
        std::printf("%.3f Megabytes .\n", bytes * 0x1p-20);
    } else if (size >= 1024) {
        std::printf("%.3f Kilobytes .\n", bytes / 1024);
    } else {
        std::printf("%.0f Bytes .\n", bytes);
    }
}

// The bytes of n entries, formed in 64 bits from the signed count.
std::uint64_t Bytes(int n, int entry) {
    return static_cast<std::uint64_t>(static_cast<std::int64_t>(n) * entry);
}

} // namespace

void *allocate(void *held, std::uint64_t size) {
    if (size == 0) {
        SystemRelease(held);
        return nullptr;
    }
    if (void *block = SystemResize(held, size)) {
        return block;
    }
    std::printf("Warning> trying to allocate memory ... \n");
    void *fresh = SystemResize(nullptr, size);
    if (fresh == nullptr) {
        ReportShortage(size);
        return nullptr;
    }
    if (held != nullptr) {
        std::memset(fresh, 0, size); // its contents are lost: zeros at least are no wild indices or pointers
        contentsLost = true;
    }
    return fresh;
}

char *AllocCHR1D(char *held, int n) {
    return static_cast<char *>(allocate(held, Bytes(n, kNameBuffer)));
}

int *AllocINT1D(int *held, int n) {
    return static_cast<int *>(allocate(held, Bytes(n, sizeof(int))));
}

double *AllocDBL1D(double *held, int n) {
    return static_cast<double *>(allocate(held, Bytes(n, sizeof(double))));
}

int **AllocINT2D(int **held, int columns, int n) {
    if (columns < 1) {
        return held;
    }
    auto **table = static_cast<int **>(allocate(held, Bytes(columns, sizeof(int *))));
    if (table == nullptr) {
        return nullptr;
    }
    for (int k = 0; k < columns; ++k) {
        table[k] = AllocINT1D(held == nullptr ? nullptr : table[k], n);
    }
    if (n > 0) {
        return table;
    }
    return static_cast<int **>(allocate(table, 0));
}

int NextCapacity(int capacity) {
    constexpr int kFirst = 100000;
    constexpr int kLastDoubled = 1000000;
    constexpr int kLargeStep = 1000000;
    if (capacity == 0) {
        return kFirst;
    }
    if (capacity <= kLastDoubled) {
        return capacity * 2;
    }
    return capacity > INT_MAX - kLargeStep ? INT_MAX : capacity + kLargeStep;
}

void EndForTooMany() {
    std::fprintf(stderr, "KIVOm: more entries of a kind than can be numbered\n");
    std::exit(EXIT_FAILURE);
}

void RequireBlock(const void *block) {
    if (block == nullptr) {
        EndForShortage();
    }
    EndIfContentsLost();
}

void EndIfContentsLost() {
    if (contentsLost) {
        EndForShortage();
    }
}

void ForgetLostContents() {
    contentsLost = false;
}
