// The one way in which the writers reach a file: block-flushed text, number fields, and what failed.
//
// A writer builds a row in place: it asks for room, lays fields one behind the other, and says where the row ends.
//
//     char *at = RowBegin(out);
//     at = FieldInt10(at, i);
//     at = FieldReal24(at, x);
//     RowEnd(out, FieldBytes(at, "\n", 1));
//
// Writing goes on silently after a failure, as if the text had been written: neither the run nor the log change.
// Closing the file then names it and the system's reason on standard error, and TextOutputFailed turns true.
#ifndef KIVOM_OUTPUT_TEXTOUT_H
#define KIVOM_OUTPUT_TEXTOUT_H

#include <cstddef>
#include <cstdint>
#include <cstring>

// Most copies of a text that one pass can write (see StartCopies).
constexpr int kMostCopies = 2;

struct TextOut {
    int file; // descriptor, owned
    char path[512];
    char *buffer;     // owned; `size` bytes and room for one row
    std::size_t size; // bytes at which the buffer is written out
    std::size_t used;
    std::int64_t written; // bytes of the file that have been written without a gap
    int reason;           // errno of the first failure, 0 for none
    int nCopies;
    std::int64_t copyAt[kMostCopies]; // where the copies of the next bytes go
};

// Large writes cost less per byte; below 64 KB with the room for a row, a buffer comes from memory that is used over
// and over instead of fresh pages for each of thousands of files.
constexpr std::size_t kTextBlock = 56 * 1024;

// Longest row, or piece of a row, that may be laid between RowBegin and RowEnd.
constexpr std::size_t kMostRow = 4096;

// Creates or empties the file. False, and nothing held, when the system refuses. `blockSize` is at least 1.
bool OpenText(TextOut *out, const char *path, std::size_t blockSize = kTextBlock);

// Writes out the rest and closes; the failure, if any, is reported here.
void CloseText(TextOut *out);

// True once any file was closed that had failed.
bool TextOutputFailed();

// Writes the buffer out.
void FlushText(TextOut *out);

// Room for one row, and its end.
inline char *RowBegin(TextOut *out) {
    if (out->used >= out->size) {
        FlushText(out);
    }
    return out->buffer + out->used;
}

inline void RowEnd(TextOut *out, const char *end) {
    out->used = static_cast<std::size_t>(end - out->buffer);
}

// Text of any length.
void PutBytes(TextOut *out, const char *bytes, std::size_t size);

inline void PutText(TextOut *out, const char *text) {
    PutBytes(out, text, std::strlen(text)); // counted by the compiler where the text is a literal
}

// A text that stands several times in the file is made once: between StartCopies and StopCopies everything put is
// also written `distance[i]` bytes further on. Later, when the writer gets there, SkipText passes over it. Only
// for files that CanCopy allows: plain ones.
bool CanCopy(const TextOut *out);
void StartCopies(TextOut *out, const std::int64_t *distances, int nCopies);
void StopCopies(TextOut *out);
void SkipText(TextOut *out, std::int64_t distance);

// Bytes of the file before the next thing put; of no meaning once writing has failed.
std::int64_t TextPosition(const TextOut *out);

// Aborts the program, with a word on standard error, when the next thing put would not stand at that byte: a copy would
// then lie where it does not belong, and the file look whole. Writing that has failed is passed over: CloseText tells.
void RequirePosition(const TextOut *out, std::int64_t position);

// Fields. Each lays its text at `at` and returns the place behind it; at most kMostField characters.
constexpr int kMostField = 32;

inline char *FieldBytes(char *at, const char *bytes, std::size_t size) {
    std::memcpy(at, bytes, size);
    return at + size;
}

char *FieldWide(char *at, int value, int width); // "%*d", any value and width up to kMostField
char *FieldReal24(char *at, double value);       // "%24.15e"
char *FieldReal15(char *at, double value);       // "%15.7e"

// Four decimal digits at a time, from tables: with leading blanks, and with leading zeros.
struct DigitTables {
    char blanks[10000][4];
    char zeros[10000][4];
};

extern const DigitTables kDigits;

// "%10d"
inline char *FieldInt10(char *at, int value) {
    const auto number = static_cast<unsigned>(value);
    if (number < 10000) {
        std::memcpy(at, "      ", 6);
        std::memcpy(at + 6, kDigits.blanks[number], 4);
        return at + 10;
    }
    if (number < 100000000) {
        std::memcpy(at, "  ", 2);
        std::memcpy(at + 2, kDigits.blanks[number / 10000], 4);
        std::memcpy(at + 6, kDigits.zeros[number % 10000], 4);
        return at + 10;
    }
    return FieldWide(at, value, 10);
}

// "%5d"
inline char *FieldInt5(char *at, int value) {
    const auto number = static_cast<unsigned>(value);
    if (number < 10000) {
        *at = ' ';
        std::memcpy(at + 1, kDigits.blanks[number], 4);
        return at + 5;
    }
    return FieldWide(at, value, 5);
}

#endif
