// Obtaining, resizing and releasing memory, and what is said on shortage.
#include "tests/support/capture.h"
#include "tests/support/fakesystem.h"

#include "support/frame.h"
#include "support/system.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr char kWarning[] = "Warning> trying to allocate memory ... \n";
constexpr char kError[] = "Error> failed to allocate storage with ";

class Allocate : public testing::Test {
  protected:
    void SetUp() override {
        fake::Reset();
        held = fake::BlocksHeld();
    }
    void TearDown() override {
        EXPECT_EQ(fake::BlocksHeld(), held) << "the test left blocks behind";
        ForgetLostContents();
    }
    long held = 0;
};

TEST_F(Allocate, CountZeroReleasesTheBlockAndReturnsNone) {
    void *block = allocate(nullptr, 10);
    char *names = AllocCHR1D(nullptr, 2);
    int *ints = AllocINT1D(nullptr, 3);
    double *doubles = AllocDBL1D(nullptr, 4);
    EXPECT_EQ(fake::BlocksHeld(), held + 4);
    EXPECT_EQ(allocate(block, 0), nullptr);
    EXPECT_EQ(AllocCHR1D(names, 0), nullptr);
    EXPECT_EQ(AllocINT1D(ints, 0), nullptr);
    EXPECT_EQ(AllocDBL1D(doubles, 0), nullptr);
    EXPECT_EQ(fake::BlocksHeld(), held);
}

TEST_F(Allocate, ReleasingNothingIsHarmlessAndSilent) {
    EXPECT_EQ(Printed([] {
                  EXPECT_EQ(allocate(nullptr, 0), nullptr);
                  EXPECT_EQ(AllocCHR1D(nullptr, 0), nullptr);
                  EXPECT_EQ(AllocINT1D(nullptr, 0), nullptr);
                  EXPECT_EQ(AllocDBL1D(nullptr, 0), nullptr);
                  EXPECT_EQ(AllocINT2D(nullptr, 3, 0), nullptr);
              }),
              "");
}

TEST_F(Allocate, EachRoutineAsksForItsBytes) {
    void *block = allocate(nullptr, 13);
    char *names = AllocCHR1D(nullptr, 3); // 256 characters and a terminator each
    int *ints = AllocINT1D(nullptr, 3);
    double *doubles = AllocDBL1D(nullptr, 3);
    int **table = AllocINT2D(nullptr, 2, 5); // two pointers, then two columns
    EXPECT_EQ(fake::AllocationSizes(), (std::vector<std::uint64_t>{13, 771, 12, 24, 16, 20, 20}));
    allocate(block, 0);
    AllocCHR1D(names, 0);
    AllocINT1D(ints, 0);
    AllocDBL1D(doubles, 0);
    AllocINT2D(table, 2, 0);
}

TEST_F(Allocate, ContentsAreKeptUpToTheSmallerSize) {
    int *ints = AllocINT1D(nullptr, 3);
    ints[0] = 7;
    ints[1] = 8;
    ints[2] = 9;
    ints = AllocINT1D(ints, 5);
    EXPECT_EQ(ints[0], 7);
    EXPECT_EQ(ints[1], 8);
    EXPECT_EQ(ints[2], 9);
    ints = AllocINT1D(ints, 2);
    EXPECT_EQ(ints[0], 7);
    EXPECT_EQ(ints[1], 8);
    AllocINT1D(ints, 0);
}

TEST_F(Allocate, NewBytesHoldWhateverTheMemoryHeld) {
    int *ints = AllocINT1D(nullptr, 1);
    EXPECT_EQ(ints[0], fake::kFreshInt);
    ints[0] = 1;
    ints = AllocINT1D(ints, 2);
    EXPECT_EQ(ints[1], fake::kFreshInt);
    AllocINT1D(ints, 0);
    int **table = AllocINT2D(nullptr, 1, 1);
    EXPECT_EQ(table[0][0], fake::kFreshInt);
    AllocINT2D(table, 1, 0);
}

TEST_F(Allocate, AfterOneFailureAFreshBlockIsTriedAndTheOldOneIsNotReleased) {
    int *old = AllocINT1D(nullptr, 2);
    old[0] = 11;
    old[1] = 12;
    fake::FailAllocation(1);
    int *fresh = nullptr;
    EXPECT_EQ(Printed([&] { fresh = AllocINT1D(old, 4); }), kWarning);
    EXPECT_EQ(fake::AllocationFaults(), 1);
    ASSERT_NE(fresh, nullptr);
    EXPECT_NE(fresh, old);
    EXPECT_EQ(fake::BlocksHeld(), held + 2);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(fresh[i], 0) << "the old contents are not carried over, and nothing is left to chance";
    }
    EXPECT_EQ(old[0], 11);
    EXPECT_EQ(old[1], 12);
    AllocINT1D(fresh, 0);
    AllocINT1D(old, 0);
}

TEST_F(Allocate, AfterTwoFailuresTheSizeIsPrintedAndNoneReturned) {
    double *old = AllocDBL1D(nullptr, 1);
    old[0] = 2.5;
    const long before = fake::Allocations();
    fake::FailAllocationsFrom(1);
    EXPECT_EQ(Printed([&] { EXPECT_EQ(AllocDBL1D(old, 125), nullptr); }),
              std::string(kWarning) + kError + "1000 Bytes .\n");
    EXPECT_EQ(fake::Allocations(), before + 2) << "one retry, no more";
    EXPECT_EQ(fake::AllocationFaults(), 2);
    EXPECT_EQ(old[0], 2.5) << "the block held is still held";
    AllocDBL1D(old, 0);
}

TEST_F(Allocate, TheUnitFollowsTheByteCount) {
    const struct {
        std::uint64_t size;
        const char *text;
    } cases[] = {
        {3000000, "2.861 Megabytes .\n"},
        {1048576, "1.000 Megabytes .\n"},
        {1048575, "1023.999 Kilobytes .\n"},
        {4096, "4.000 Kilobytes .\n"},
        {1024, "1.000 Kilobytes .\n"},
        {1023, "1023 Bytes .\n"},
        {1000, "1000 Bytes .\n"},
        {1, "1 Bytes .\n"},
    };
    for (const auto &wanted : cases) {
        fake::Reset();
        fake::FailAllocationsFrom(1);
        EXPECT_EQ(Printed([&] { EXPECT_EQ(allocate(nullptr, wanted.size), nullptr); }),
                  std::string(kWarning) + kError + wanted.text);
        EXPECT_EQ(fake::AllocationFaults(), 2);
    }
}

TEST_F(Allocate, TheByteCountIsFormedIn64BitsFromTheSignedCount) {
    // -1 ints are 2^64 - 4 bytes: as a double 2^64, which is 2^44 megabytes. 2^31 - 1 names are 257 times that.
    EXPECT_EQ(Printed([] { EXPECT_EQ(AllocINT1D(nullptr, -1), nullptr); }),
              std::string(kWarning) + kError + "17592186044416.000 Megabytes .\n");
    EXPECT_EQ(fake::AllocationSizes().front(), UINT64_MAX - 3);
    fake::Reset();
    Printed([] { EXPECT_EQ(AllocCHR1D(nullptr, INT_MAX), nullptr); });
    EXPECT_EQ(fake::AllocationSizes().front(), std::uint64_t{257} * INT_MAX);
}

TEST_F(Allocate, TableWithFewerThanOneColumnIsReturnedAsItIs) {
    int **table = AllocINT2D(nullptr, 1, 2);
    const long before = fake::Allocations();
    EXPECT_EQ(AllocINT2D(table, 0, 2), table);
    EXPECT_EQ(AllocINT2D(table, 0, 0), table) << "not released even when asked for no entries";
    EXPECT_EQ(AllocINT2D(table, -1, 0), table);
    EXPECT_EQ(AllocINT2D(nullptr, 0, 5), nullptr);
    EXPECT_EQ(fake::Allocations(), before);
    EXPECT_EQ(fake::BlocksHeld(), held + 2);
    AllocINT2D(table, 1, 0);
}

TEST_F(Allocate, TableGrowsColumnByColumnAndKeepsItsEntries) {
    int **table = AllocINT2D(nullptr, 2, 2);
    for (int k = 0; k < 2; ++k) {
        for (int e = 0; e < 2; ++e) {
            table[k][e] = 10 * k + e;
        }
    }
    table = AllocINT2D(table, 2, 1000);
    for (int k = 0; k < 2; ++k) {
        for (int e = 0; e < 2; ++e) {
            EXPECT_EQ(table[k][e], 10 * k + e);
        }
        table[k][999] = 1;
    }
    EXPECT_EQ(AllocINT2D(table, 2, 0), nullptr) << "no entries: released whole";
    EXPECT_EQ(fake::BlocksHeld(), held);
}

TEST_F(Allocate, TableReportsTheColumnThatCouldNotBeHad) {
    fake::FailAllocationsFrom(3); // pointers, first column; the second fails twice
    int **table = nullptr;
    EXPECT_EQ(Printed([&] { table = AllocINT2D(nullptr, 2, 5); }), std::string(kWarning) + kError + "20 Bytes .\n");
    EXPECT_EQ(fake::AllocationFaults(), 2);
    ASSERT_NE(table, nullptr);
    EXPECT_NE(table[0], nullptr);
    EXPECT_EQ(table[1], nullptr);
    fake::Reset();
    AllocINT2D(table, 2, 0);
}

TEST_F(Allocate, TableReportsThePointersThatCouldNotBeHad) {
    fake::FailAllocationsFrom(1);
    EXPECT_EQ(Printed([] { EXPECT_EQ(AllocINT2D(nullptr, 2, 1000), nullptr); }),
              std::string(kWarning) + kError + "16 Bytes .\n");
    EXPECT_EQ(fake::AllocationFaults(), 2);
}

TEST_F(Allocate, TableColumnThatFailsOnceIsFresh) {
    int **table = AllocINT2D(nullptr, 1, 1);
    int *old = table[0];
    old[0] = 99;
    fake::FailAllocation(2); // the pointers first, then the column
    EXPECT_EQ(Printed([&] { table = AllocINT2D(table, 1, 3); }), kWarning);
    EXPECT_EQ(fake::AllocationFaults(), 1);
    EXPECT_NE(table[0], old);
    EXPECT_EQ(std::vector<int>(table[0], table[0] + 3), (std::vector<int>{0, 0, 0}));
    EXPECT_EQ(old[0], 99);
    AllocINT1D(old, 0);
    AllocINT2D(table, 1, 0);
}

TEST_F(Allocate, CapacitiesDoubleUpToAMillionAndThenGoUpByAMillion) {
    int capacity = 0;
    for (const int next : {100000, 200000, 400000, 800000, 1600000, 2600000, 3600000}) {
        capacity = NextCapacity(capacity);
        EXPECT_EQ(capacity, next);
    }
    EXPECT_EQ(NextCapacity(1000000), 2000000);
    EXPECT_EQ(NextCapacity(1000001), 2000001);
    EXPECT_EQ(NextCapacity(INT_MAX - 999999), INT_MAX) << "no int is larger";
}

TEST_F(Allocate, AMissingBlockEndsTheProcessAndAPresentOneDoesNot) {
    int present = 0;
    RequireBlock(&present);
    EndIfContentsLost();
    EXPECT_EXIT(RequireBlock(nullptr), testing::ExitedWithCode(1), "KIVOm: shortage of memory");
}

TEST_F(Allocate, LostContentsEndTheProcessAtTheNextBlockThatItUses) {
    int *old = AllocINT1D(nullptr, 1);
    fake::FailAllocation(1);
    int *fresh = nullptr;
    EXPECT_EQ(Printed([&] { fresh = AllocINT1D(old, 2); }), kWarning) << "the allocator itself goes on";
    EXPECT_EXIT(RequireBlock(fresh), testing::ExitedWithCode(1), "KIVOm: shortage of memory");
    EXPECT_EXIT(EndIfContentsLost(), testing::ExitedWithCode(1), "KIVOm: shortage of memory");
    AllocINT1D(fresh, 0);
    AllocINT1D(old, 0);
}

TEST_F(Allocate, ARetryForAFreshBlockLosesNothing) {
    fake::FailAllocation(1);
    int *fresh = nullptr;
    EXPECT_EQ(Printed([&] { fresh = AllocINT1D(nullptr, 2); }), kWarning);
    RequireBlock(fresh);
    AllocINT1D(fresh, 0);
}

TEST_F(Allocate, ATableOfNoEntriesIsMadeAndReleased) {
    EXPECT_EQ(AllocINT2D(nullptr, 2, 0), nullptr);
    EXPECT_EQ(fake::AllocationSizes(), (std::vector<std::uint64_t>{16}));
    fake::FailAllocationsFrom(1);
    EXPECT_EQ(Printed([] { EXPECT_EQ(AllocINT2D(nullptr, 2, 0), nullptr); }),
              std::string(kWarning) + kError + "16 Bytes .\n");
}

} // namespace
