// The reader's one line in hand: cleaned of blanks and comments, joined with its continuation lines.
//
// What counts is the compressed line. A logical line holds at most 5119 characters; what goes beyond is read and
// dropped up to the end of that logical line, and reported once.
#ifndef KIVOM_ABAQUS_ABQLINE_H
#define KIVOM_ABAQUS_ABQLINE_H

#include "support/frame.h"
#include "support/lines.h"

constexpr int kLineBuffer = 5120;
constexpr int kLineLength = kLineBuffer - 1;

// Cleans the line in place: cuts it at the first "**", drops blanks, control characters, ";", "\" and all
// bytes above "~", turns lower case into upper case. Returns the new length. No run calls it: the lines of a deck are
// cleaned on their way into the buffer.
int ABQCompressLine(char *line);

// The line in hand, terminated, at the same place at every call. Writable: the scanning functions blank separators
// in it.
char *ABQLine();

// The two functions below read the deck; when that fails the deck in hand decides (abqdeck.h, bReadOn) whether the
// process ends as for a deck that cannot be opened or the deck counts as ended there. A null stream is at its end.

// Replaces the line in hand by the next line that is not empty after compression: true. At the end of the
// deck the line in hand is left empty: false.
bool ABQNextLine(LineSource *stream);

// Joins continuation lines onto the line in hand while it ends in a comma. Lines that compress to nothing are
// passed over. A null stream joins nothing.
void ABQLinkContLines(LineSource *stream);

// Where the line in hand begins in the deck: the number of its first physical line, from 1, and the bytes before it.
// Of no meaning while the line in hand is empty.
long long ABQLineNumber();
long long ABQLineOffset();

// Empties the line in hand.
void ABQDropLine();

// The value of the parameter `name` on the line in hand ("TYPE" of "*ELEMENT,TYPE=C3D4"), up to the next comma,
// into `value` (257 bytes or more). Returns 1 when the line holds name and "=" anywhere, also inside a longer word;
// else 0 and an empty value. A value of more than 256 characters is cut and reported.
int ABQParseLabel(char *value, const char *name);

// True when one of the words stands anywhere on the line in hand: the first found is reported, and the next
// line becomes the line in hand. The words of each section: RefusedWords.h.
bool ABQRefuse(LineSource *stream, const char *const *words, int nWords);

template <std::size_t nWords> bool ABQRefuse(LineSource *stream, const char *const (&words)[nWords]) {
    return ABQRefuse(stream, words, static_cast<int>(nWords));
}

// True when the line in hand begins a keyword line.
inline bool ABQAtKeyword() {
    return ABQLine()[0] == '*';
}

#endif
