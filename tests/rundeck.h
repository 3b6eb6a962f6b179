// Running the program kivodeck from a shell.
#ifndef KIVOM_TESTS_RUNDECK_H
#define KIVOM_TESTS_RUNDECK_H

#include <cstdio>
#include <string>

#include <sys/wait.h>

// What a shell's command line left.
struct Outcome {
    int status; // -1 when it did not end by itself
    std::string out;
};

inline Outcome RunShell(const std::string &command) {
    std::FILE *pipe = popen(command.c_str(), "r");
    Outcome outcome{-1, ""};
    char block[4096];
    for (std::size_t got; (got = std::fread(block, 1, sizeof block, pipe)) > 0;) {
        outcome.out.append(block, got);
    }
    const int status = pclose(pipe);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return outcome;
}

inline std::string LastLine(const std::string &text) {
    const std::size_t end = text.find_last_not_of('\n');
    return text.substr(text.rfind('\n', end) + 1, end - text.rfind('\n', end));
}

#endif
