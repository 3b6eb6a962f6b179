// A text read from front to back in large blocks, handed out line by line.
//
// A line is never copied as a whole and may be of any length: it comes in pieces that lie inside the block in
// hand, the last one marked. Whoever can use a whole line at once, and finds it in the block, reads it there
// through `at` and moves `at` behind it (TakenLines keeps the count).
#ifndef KIVOM_SUPPORT_LINES_H
#define KIVOM_SUPPORT_LINES_H

#include <cstddef>

struct LineSource {
    int file;    // descriptor, owned
    char *block; // owned; blockSize bytes and kLineGuard more
    std::size_t blockSize;
    long long blockStart; // bytes of the text before the block in hand
    const char *at;       // first character not yet handed out
    const char *end;  // end of what was read; kLineGuard times '\n' stands there, so that a scan stops at the latest
    long long nLines; // lines handed out whole so far
    bool bInLine;     // a line has been begun and its end not yet handed out
    bool bAtEnd;      // nothing more to read
    bool bFailed;     // reading failed; the text ends there
};

constexpr std::size_t kLineBlockSize = 256 * 1024;
constexpr std::size_t kLineGuard = 8; // so many bytes may be looked at, at once, wherever a line may go on

// Opens the file and reads its first block. False when it cannot be opened or not be read (a directory, say);
// nothing is held then. The source is made by the caller and closed with CloseLines.
bool OpenLines(LineSource *source, const char *path, std::size_t blockSize = kLineBlockSize);
void CloseLines(LineSource *source);

// The next piece of the line in hand, [*begin, *end), without the '\n'. *last tells whether the line ends with
// it. False when there is no further line: at the end of the text, where a last line without '\n' counts as a
// line and nothing stands behind a last '\n'.
bool NextPiece(LineSource *source, const char **begin, const char **end, bool *last);

// Bytes of the text handed out so far.
inline long long BytesTaken(const LineSource *source) {
    return source->blockStart + (source->at - source->block);
}

// Tells that the reader itself took `count` whole lines, up to `at`, out of the block.
inline void TakenLines(LineSource *source, const char *at, int count) {
    source->at = at;
    source->nLines += count;
}

#endif
