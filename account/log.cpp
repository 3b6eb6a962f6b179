// Standard output in other hands: `stdout` is a variable in this C library, and a stream can end in a function.
#include "account/log.h"

#include <new>
#include <utility>

namespace account {

namespace {

ssize_t TakeText(void *catcher, const char *text, std::size_t size) {
    static_cast<LogCatcher *>(catcher)->Write(text, size);
    return static_cast<ssize_t>(size);
}

} // namespace

LogCatcher::LogCatcher(std::function<void(const std::string &)> take) : take_(std::move(take)), before_(stdout) {
    cookie_io_functions_t functions{};
    functions.write = TakeText;
    caught_ = fopencookie(this, "w", functions);
    if (caught_ == nullptr) {
        throw std::bad_alloc();
    }
    std::fflush(before_);
    stdout = caught_;
}

LogCatcher::~LogCatcher() {
    stdout = before_;
    std::fclose(caught_);
}

void LogCatcher::Flush() {
    std::fflush(caught_);
}

void LogCatcher::Write(const char *text, std::size_t size) {
    for (const char *end = text + size; text != end; ++text) {
        if (*text == '\n') {
            take_(line_);
            line_.clear();
        } else if (line_.size() < kLongest) {
            line_ += *text;
        }
    }
}

} // namespace account
