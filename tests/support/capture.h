// What a piece of code prints.
#ifndef KIVOM_TESTS_SUPPORT_CAPTURE_H
#define KIVOM_TESTS_SUPPORT_CAPTURE_H

#include <cstdio>
#include <cstdlib>
#include <string>

// What the call prints to the stream: stdout and stderr are variables in this C library.
template <class Call> std::string PrintedTo(std::FILE *&stream, Call call) {
    char *text = nullptr;
    std::size_t size = 0;
    std::FILE *usual = stream;
    std::fflush(usual);
    stream = open_memstream(&text, &size);
    call();
    std::fclose(stream);
    stream = usual;
    const std::string printed(text, size);
    std::free(text);
    return printed;
}

// Standard output of the call.
template <class Call> std::string Printed(Call call) {
    return PrintedTo(stdout, call);
}

// Standard error of the call.
template <class Call> std::string PrintedToErrors(Call call) {
    return PrintedTo(stderr, call);
}

#endif
