// Time stamps, stream buffers, and what the system refuses.
#include "tests/support/capture.h"

#include "support/frame.h"
#include "support/system.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>

#include <sys/stat.h>
#include <unistd.h>

namespace {

std::string LocalTime(std::time_t moment) {
    char text[80];
    std::strftime(text, sizeof text, "%d %B %Y %I:%M:%S %p\n", std::localtime(&moment));
    return text;
}

TEST(TimeStamp, IsTheLocalDateAndTimeAndALineEnd) {
    setenv("TZ", "XYZ-5:30", 1); // not the zone of the clock: local time must show
    tzset();
    const std::time_t before = std::time(nullptr);
    const std::string stamp = Printed(timestamp);
    const std::time_t after = std::time(nullptr);
    bool found = false;
    for (std::time_t moment = before; moment <= after; ++moment) {
        found = found || stamp == LocalTime(moment);
    }
    EXPECT_TRUE(found) << stamp;
}

TEST(ProcessorTime, RunsForward) {
    const double start = ProcessorSeconds();
    volatile double sum = 0;
    while (static_cast<double>(std::clock()) / 1e6 < start + 0.02) {
        sum = sum + 1;
    }
    EXPECT_GE(ProcessorSeconds(), start + 0.02);
}

long SizeOnDisk(std::FILE *file) {
    struct stat about {};
    fstat(fileno(file), &about);
    return static_cast<long>(about.st_size);
}

TEST(IOBuffer, IsMadeOnceAndSharedByAllStreams) {
    std::FILE *first = std::tmpfile();
    std::FILE *second = std::tmpfile();
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    SetIOBuffer(first, 100);
    std::fputs("aaaa", first);
    EXPECT_EQ(SizeOnDisk(first), 0) << "the text waits in the buffer";
    SetIOBuffer(second, 1000000);
    std::fputs("bb", second);
    std::fflush(first); // what the first stream had in the buffer, the second has written over
    std::rewind(first);
    char text[10] = "";
    EXPECT_NE(std::fgets(text, sizeof text, first), nullptr);
    EXPECT_STREQ(text, "bbaa");
    std::fclose(first);
    std::fclose(second);
}

TEST(System, RefusalsAreTheAnswer) {
    const int full = SystemOpenToWrite("/dev/full");
    ASSERT_NE(full, -1);
    EXPECT_FALSE(SystemCanSeek(full)) << "a device";
    EXPECT_FALSE(SystemWrite(full, "a", 1));
    EXPECT_FALSE(SystemWriteAt(full, "a", 1, 0));
    EXPECT_TRUE(SystemClose(full));
    EXPECT_FALSE(SystemClose(full));
    EXPECT_FALSE(SystemCanSeek(full)) << "closed";
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    EXPECT_FALSE(SystemSkip(ends[1], 1));
    close(ends[0]);
    close(ends[1]);
}

TEST(System, AFileThatCannotBeCutStaysAsItIs) {
    std::FILE *file = std::tmpfile();
    ASSERT_NE(file, nullptr);
    std::fputs("abc", file);
    std::fflush(file);
    const int reader = SystemOpenToRead(("/proc/self/fd/" + std::to_string(fileno(file))).c_str());
    SystemCut(reader, 1);
    EXPECT_EQ(SizeOnDisk(file), 3);
    SystemCut(fileno(file), 1);
    EXPECT_EQ(SizeOnDisk(file), 1);
    EXPECT_TRUE(SystemClose(reader));
    std::fclose(file);
}

} // namespace
