// Time stamps and stream buffers.
#include "tests/support/capture.h"

#include "support/frame.h"

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

} // namespace
