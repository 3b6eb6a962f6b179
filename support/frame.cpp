// Time stamps, processor time and stream buffers.
#include "support/frame.h"

#include <algorithm>
#include <cstring>
#include <ctime>

void timestamp() {
    static char text[80];
    const std::time_t now = std::time(nullptr);
    const std::tm *local = std::localtime(&now);
    text[0] = '\0';
    if (local != nullptr) {
        std::strftime(text, sizeof text, "%d %B %Y %I:%M:%S %p", local);
    }
    std::printf("%s\n", text);
}

double ProcessorSeconds() {
    return static_cast<double>(std::clock()) / 1e6; // CLOCKS_PER_SEC is a million on every POSIX system
}

void SetIOBuffer(std::FILE *stream, int size) {
    static char *buffer = nullptr;
    if (buffer == nullptr) {
        const auto bytes = static_cast<std::size_t>(std::max(size, static_cast<int>(BUFSIZ)));
        buffer = static_cast<char *>(allocate(nullptr, bytes));
        RequireBlock(buffer);
        std::memset(buffer, 0, bytes);
    }
    std::setbuf(stream, buffer);
}
