// Text files: blocks, copies, failures.
#include "output/textout.h"

#include "support/frame.h"
#include "support/system.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace {

bool anyFailed = false;

void NoteFailure(TextOut *out) {
    if (out->reason == 0) {
        out->reason = errno != 0 ? errno : EIO;
    }
}

void WriteCopies(TextOut *out) {
    for (int i = 0; i < out->nCopies && out->reason == 0; ++i) {
        if (!SystemWriteAt(out->file, out->buffer, out->used, out->copyAt[i])) {
            NoteFailure(out);
        }
        out->copyAt[i] += static_cast<std::int64_t>(out->used);
    }
}

} // namespace

bool OpenText(TextOut *out, const char *path, std::size_t blockSize) {
    *out = TextOut{};
    out->file = SystemOpenToWrite(path);
    if (out->file == -1) {
        return false;
    }
    std::snprintf(out->path, sizeof out->path, "%s", path);
    out->size = blockSize;
    out->buffer = static_cast<char *>(allocate(nullptr, blockSize + kMostRow));
    RequireBlock(out->buffer);
    return true;
}

void CloseText(TextOut *out) {
    FlushText(out);
    if (out->reason != 0) {
        // Copies may have been written beyond the failure: without them the file ends where it broke off.
        SystemCut(out->file, out->written);
    }
    if (!SystemClose(out->file)) {
        NoteFailure(out);
    }
    allocate(out->buffer, 0);
    out->buffer = nullptr;
    if (out->reason != 0) {
        std::fprintf(stderr, "KIVOm: cannot write %s: %s\n", out->path, std::strerror(out->reason));
        anyFailed = true;
    }
}

bool TextOutputFailed() {
    return anyFailed;
}

void FlushText(TextOut *out) {
    errno = 0;
    if (out->reason == 0 && out->used > 0) {
        if (SystemWrite(out->file, out->buffer, out->used)) {
            out->written += static_cast<std::int64_t>(out->used);
            WriteCopies(out);
        } else {
            NoteFailure(out);
        }
    }
    out->used = 0;
}

void PutBytes(TextOut *out, const char *bytes, std::size_t size) {
    while (size > 0) {
        char *at = RowBegin(out);
        const std::size_t part = size < kMostRow ? size : kMostRow;
        RowEnd(out, FieldBytes(at, bytes, part));
        bytes += part;
        size -= part;
    }
}

bool CanCopy(const TextOut *out) {
    return SystemCanSeek(out->file);
}

void StartCopies(TextOut *out, const std::int64_t *distances, int nCopies) {
    FlushText(out);
    for (int i = 0; i < nCopies; ++i) {
        out->copyAt[i] = out->written + distances[i];
    }
    out->nCopies = nCopies;
}

void StopCopies(TextOut *out) {
    FlushText(out);
    out->nCopies = 0;
}

void SkipText(TextOut *out, std::int64_t distance) {
    FlushText(out);
    errno = 0;
    if (out->reason != 0) {
        return;
    }
    if (SystemSkip(out->file, distance)) {
        out->written += distance;
    } else {
        NoteFailure(out);
    }
}

std::int64_t TextPosition(const TextOut *out) {
    return out->written + static_cast<std::int64_t>(out->used);
}

void RequirePosition(const TextOut *out, std::int64_t position) {
    if (out->reason == 0 && TextPosition(out) != position) {
        std::fprintf(stderr, "KIVOm: rows of %s are not as long as they were taken for\n", out->path);
        std::abort();
    }
}
