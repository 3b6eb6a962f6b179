// What a piece of code prints.
#ifndef KIVOM_TESTS_CAPTURE_H
#define KIVOM_TESTS_CAPTURE_H

#include <gtest/gtest.h>

#include <string>

// Standard output of the call.
template <class Call> std::string Printed(Call call) {
    testing::internal::CaptureStdout();
    call();
    return testing::internal::GetCapturedStdout();
}

// Standard error of the call.
template <class Call> std::string PrintedToErrors(Call call) {
    testing::internal::CaptureStderr();
    call();
    return testing::internal::GetCapturedStderr();
}

#endif
