// Reading in blocks and cutting them at the line ends.
#include "support/lines.h"

#include "support/frame.h"
#include "support/system.h"

#include <cstring>

namespace {

// Reads the next block over the one used up. False at the end of the text.
bool Refill(LineSource *source) {
    if (source->bAtEnd) {
        return false;
    }
    source->blockStart += source->end - source->block;
    const std::ptrdiff_t got = SystemRead(source->file, source->block, source->blockSize);
    source->bFailed = got < 0;
    source->bAtEnd = got <= 0;
    const std::ptrdiff_t size = got > 0 ? got : 0;
    source->at = source->block;
    source->end = source->block + size;
    std::memset(source->block + size, '\n', kLineGuard);
    return size > 0;
}

} // namespace

bool OpenLines(LineSource *source, const char *path, std::size_t blockSize) {
    *source = LineSource{};
    source->file = SystemOpenToRead(path);
    if (source->file == -1) {
        return false;
    }
    source->blockSize = blockSize;
    source->block = static_cast<char *>(allocate(nullptr, blockSize + kLineGuard));
    RequireBlock(source->block);
    source->end = source->block;
    Refill(source);
    if (source->bFailed) {
        CloseLines(source);
        return false;
    }
    return true;
}

void CloseLines(LineSource *source) {
    SystemClose(source->file);
    allocate(source->block, 0);
    source->block = nullptr;
}

bool NextPiece(LineSource *source, const char **begin, const char **end, bool *last) {
    if (source->at == source->end && !Refill(source)) {
        *begin = *end = source->at;
        *last = true;
        const bool unended = source->bInLine;
        source->nLines += unended ? 1 : 0;
        source->bInLine = false;
        return unended;
    }
    const auto left = static_cast<std::size_t>(source->end - source->at);
    const auto *lineEnd = static_cast<const char *>(std::memchr(source->at, '\n', left));
    *begin = source->at;
    *last = lineEnd != nullptr;
    *end = *last ? lineEnd : source->end;
    source->at = *last ? lineEnd + 1 : source->end;
    source->nLines += *last ? 1 : 0;
    source->bInLine = !*last;
    return true;
}
