// A text taken from front to back, held against what must stand there, with the place of the first departure.
//
// Every Take... moves on behind what it found and returns true; or it notes the departure, unless one is noted
// already, stays where it is and returns false. So takes are chained with && and the first that fails ends the chain.
#ifndef KIVOM_MESHFILE_INPUT_H
#define KIVOM_MESHFILE_INPUT_H

#include "meshfile/meshfile.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace meshfile {

// The bytes [at, end) are at hand. From a file they lie in `block`, whose rest is filled when more are wanted; a text
// in memory is at hand as a whole.
struct Input {
    int file = -1;
    bool isAtEnd = false; // nothing more to read; true from the start for a text in memory
    std::size_t blockSize = 0;
    std::vector<char> block; // made when the first bytes are wanted
    const char *at = nullptr;
    const char *end = nullptr;
    long long line = 1; // that `at` stands in
    Error error;
};

// Most bytes that HasMore can be asked for: no field, nor any row of fixed width, is longer.
constexpr std::size_t kMostAhead = 128;

// Reads on until `size` bytes are at hand, which are not yet. False when the text ends before.
bool HasMore(Input *in, std::size_t size);

// At least `size` bytes, at most kMostAhead, are at hand; they are read if need be.
inline bool Has(Input *in, std::size_t size) {
    return static_cast<std::size_t>(in->end - in->at) >= size || HasMore(in, size);
}

// Notes a departure, at the line in hand where none is given. Always false.
bool Refuse(Input *in, std::string_view reason);
bool RefuseLine(Input *in, long long line, std::string_view reason);

// A reason with its words and numbers in place, as printf puts them there. What it names is at most kMostAhead long.
[[gnu::format(printf, 1, 2)]] std::string Reason(const char *format, ...);

// The words stand here, or the text ends within them, so that taking them says so. They are not taken; nothing is
// noted. For what may stand here or not.
bool MayFollow(Input *in, std::string_view words);

// Words within a line; the rest of a line with its end; the end alone. `words` has no '\n'.
bool TakeWords(Input *in, std::string_view words);
bool TakeLine(Input *in, std::string_view words);
bool TakeLineEnd(Input *in);

// Everything up to the end of the line, and the end.
bool TakeRest(Input *in, std::string *rest);

// Fields of meshfile/fields.h.
bool TakeInt(Input *in, std::size_t width, int *value);
bool TakeReal(Input *in, double *value);

// A field that must hold this number: the index at the head of a row.
bool TakeIndex(Input *in, std::size_t index);

// Nothing follows.
bool TakeEnd(Input *in);

} // namespace meshfile

#endif
