// Talking to a terminal.
#include "kivodeck/terminal.h"

#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace kivodeck {

namespace {

constexpr int kNamesLength = 60; // of what is shown: it stays on one line

// What the handler of the timer's signal writes; it may use nothing that allocates.
char text[kNamesLength + 1];
volatile std::sig_atomic_t seconds = 0;

void ShowProgress(int) {
    const int error = errno; // of what the signal came into
    seconds = seconds + 1;
    char line[kNamesLength + 32] = "\r";
    std::size_t n = 1;
    for (const char *from = text; *from != '\0'; ++from) {
        line[n++] = *from;
    }
    line[n++] = ' ';
    char digits[12];
    int nDigits = 0;
    for (int rest = seconds; rest > 0; rest /= 10) {
        digits[nDigits++] = static_cast<char>('0' + rest % 10);
    }
    while (nDigits > 0) {
        line[n++] = digits[--nDigits];
    }
    line[n++] = ' ';
    line[n++] = 's';
    const ssize_t shown = write(STDERR_FILENO, line, n);
    static_cast<void>(shown); // a terminal that went away needs no progress
    errno = error;
}

void SetTimer(int every) {
    itimerval timer{};
    timer.it_value.tv_sec = every;
    timer.it_interval.tv_sec = every;
    setitimer(ITIMER_REAL, &timer, nullptr);
}

} // namespace

bool WantsColour() {
    const char *noColour = std::getenv("NO_COLOR");
    return (noColour == nullptr || noColour[0] == '\0') && isatty(STDOUT_FILENO) == 1;
}

Progress::Progress(const std::string &what) : running_(isatty(STDERR_FILENO) == 1) {
    if (!running_) {
        return;
    }
    std::snprintf(text, sizeof text, "%s", what.c_str());
    seconds = 0;
    struct sigaction action {};
    action.sa_handler = ShowProgress;
    action.sa_flags = SA_RESTART; // reads go on as if nothing had been
    sigaction(SIGALRM, &action, nullptr);
    SetTimer(1);
}

Progress::~Progress() {
    if (!running_) {
        return;
    }
    SetTimer(0);
    if (seconds > 0) {
        std::fputs("\r\033[K", stderr);
    }
}

} // namespace kivodeck
