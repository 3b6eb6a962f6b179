// The fake system does what the tests rely on: faults happen when they are asked for, and are counted.
#include "tests/support/fakesystem.h"

#include "support/system.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

namespace {

class FakeSystem : public testing::Test {
  protected:
    void SetUp() override {
        fake::Reset();
    }
};

TEST_F(FakeSystem, FailsTheChosenAllocationOnceOrForGood) {
    void *a = SystemResize(nullptr, 1);
    fake::FailAllocation(2);
    void *b = SystemResize(nullptr, 1);
    EXPECT_EQ(SystemResize(nullptr, 1), nullptr);
    void *c = SystemResize(nullptr, 1);
    EXPECT_NE(c, nullptr);
    EXPECT_EQ(fake::AllocationFaults(), 1);
    fake::FailAllocationsFrom(1);
    EXPECT_EQ(SystemResize(a, 2), nullptr);
    EXPECT_EQ(SystemResize(a, 2), nullptr);
    EXPECT_EQ(fake::AllocationFaults(), 3);
    for (void *block : {a, b, c}) {
        SystemRelease(block);
    }
}

TEST_F(FakeSystem, ReadsAreShortAndFailHalfWay) {
    fake::PutFile("f", "abcdefg");
    fake::ShortReads(3);
    fake::FailReadsAfter(5);
    const int file = SystemOpenToRead("f");
    char to[10];
    EXPECT_EQ(SystemRead(file, to, 10), 3);
    EXPECT_EQ(SystemRead(file, to, 10), 2);
    EXPECT_EQ(std::string(to, 2), "de");
    EXPECT_EQ(SystemRead(file, to, 10), -1);
    EXPECT_EQ(fake::ReadFaults(), 1);
    SystemClose(file);
    EXPECT_EQ(fake::FilesOpen(), 0);
}

TEST_F(FakeSystem, WritesFailWhenTheDiskIsFull) {
    fake::FailWritesAfter(5);
    const int file = SystemOpenToWrite("f");
    EXPECT_TRUE(SystemWrite(file, "abc", 3));
    EXPECT_FALSE(SystemWrite(file, "def", 3));
    EXPECT_EQ(errno, ENOSPC);
    EXPECT_EQ(fake::WriteFaults(), 1);
    EXPECT_EQ(fake::GetFile("f"), "abcde");
    SystemCut(file, 3);
    EXPECT_EQ(fake::GetFile("f"), "abc");
    fake::FailClose(EIO);
    EXPECT_FALSE(SystemClose(file));
    EXPECT_EQ(fake::CloseFaults(), 1);
}

TEST_F(FakeSystem, WritesAtAPlaceLeaveThePosition) {
    const int file = SystemOpenToWrite("f");
    EXPECT_TRUE(SystemWriteAt(file, "xy", 2, 4));
    EXPECT_TRUE(SystemWrite(file, "abc", 3));
    EXPECT_TRUE(SystemSkip(file, 3));
    EXPECT_TRUE(SystemWrite(file, "z", 1));
    EXPECT_EQ(fake::GetFile("f"), std::string("abc\0xyz", 7));
    SystemClose(file);
}

TEST_F(FakeSystem, RefusesToOpen) {
    fake::PutFile("f", "text");
    fake::RefuseToOpen("f", EACCES);
    EXPECT_EQ(SystemOpenToRead("f"), -1);
    EXPECT_EQ(SystemOpenToWrite("f"), -1);
    EXPECT_EQ(errno, EACCES);
    EXPECT_EQ(SystemOpenToRead("g"), -1);
    EXPECT_EQ(errno, ENOENT);
}

} // namespace
