// The support library: memory, text scanning, names, time stamps, sorting and look-up.
//
// Text rules below know one blank, the space character (32); tabs and other white space are ordinary
// characters. Comparisons are of bytes and so tell upper from lower case.
//
// Names: a name that is given stands letter for letter, here and everywhere (fgetportableline, GetNextAviableNode,
// ABQ_AssignSystDim); every other function is a verb in CamelCase, with ABQ in front where it belongs to the deck, its
// line or its records, and COM_ where it belongs to the mesh.
//
// No run calls AllocCHR1D, fgetportableline, GrabNextINTFromCHR, GrabNextDBLFromCHR, GrabNextCHRFromCHR, AreNamesSamn,
// SetIOBuffer and GetLIDByGID: they are part of the library's interface.
#ifndef KIVOM_SUPPORT_FRAME_H
#define KIVOM_SUPPORT_FRAME_H

#include <cstdint>
#include <cstdio>

struct LineSource; // support/lines.h

// Longest field, name or parameter value that the program keeps, and the buffer that holds one.
constexpr int kNameLength = 256;
constexpr int kNameBuffer = kNameLength + 1;

// Memory (allocate.cpp) --------------------------------------------------------------------------------
//
// One call obtains, resizes and releases: it takes the block held (or null) and the size wanted and returns
// the block to keep. Size 0 releases and returns null. Contents are kept up to the smaller size; new bytes
// hold whatever the memory held.
//
// On shortage a call prints a warning and tries once more for a fresh block: what the old one held is then
// lost, and the fresh one is zeroed so that no one acts on chance values. After a second failure it prints
// the size and returns null. The allocators never end the process: the caller passes a block through RequireBlock
// before it uses it, and that does.

void *allocate(void *held, std::uint64_t size);   // `size` bytes
char *AllocCHR1D(char *held, int n);              // n strings of 256 characters and a terminator each
int *AllocINT1D(int *held, int n);                // n ints
double *AllocDBL1D(double *held, int n);          // n doubles
int **AllocINT2D(int **held, int columns, int n); // table [columns][n]

// AllocINT2D with fewer than 1 column returns the table held and does nothing else; with n = 0 it releases
// every column and then the table (where none is held, it makes one for that). A table must be resized with the column
// count it was made with.

// The capacity that follows `capacity` where arrays of unknown final length grow: 100000 first, doubled while at
// most 1000000, then a million more each time. Store and reader share the rule.
int NextCapacity(int capacity);

// Ends the process (exit status 1, with a word on standard error) when the block is missing, or when any block has lost
// its contents: its allocator has reported the shortage, and nothing sensible can follow.
void RequireBlock(const void *block);

// The second half of it: for where no block is at hand.
void EndIfContentsLost();

// For tests: no run calls it. Takes the contents lost so far for nothing.
void ForgetLostContents();

// Ends the process (exit status 1) with a word on standard error: a deck asks for more entries of a kind than an int
// can number.
[[noreturn]] void EndForTooMany();

// n new entries of any kind, or the end of the process; null for n = 0. What they hold is undefined. Released with
// allocate(array, 0).
template <class T> T *NewArray(int n) {
    auto *array = static_cast<T *>(allocate(nullptr, static_cast<std::uint64_t>(n) * sizeof(T)));
    if (n != 0) {
        RequireBlock(array);
    }
    return array;
}

// Text scanning (scan.cpp) -----------------------------------------------------------------------------

// The next line of the stream without its '\n', terminated, into `line`, which must be large enough for it.
// At the end of the stream an empty string. A '\r' stays.
void fgetportableline(LineSource *stream, char *line);
void fgetportableline(std::FILE *stream, char *line);

// Each takes the next field out of `line`: the characters up to the separator or the end, blanks left out, at
// most 256 of them. What was taken and the separator are blanked in the line, so that the next call finds the
// next field; characters beyond the 256th stay and begin the next field.
// 1 when the field held anything, else 0; a number that cannot be read is 0 and still counts as found.
int GrabNextINTFromCHR(int *out, char *line, char separator);
int GrabNextDBLFromCHR(double *out, char *line, char separator);
int GrabNextCHRFromCHR(char *out, char *line, char separator); // `out` holds 257 bytes

// The same, by a cursor: it stands at the rest of a line and is moved behind the field's separator. One pass
// over the line finds all its fields, where the functions above begin at its first character each time.
int NextINT(int *out, char **cursor, char separator);
int NextDBL(double *out, char **cursor, char separator);
int NextCHR(char *out, char **cursor, char separator);

// Numbers (numbers.cpp) --------------------------------------------------------------------------------

// What the C library's "%d" makes of the text, 0 where it makes nothing: 64 bits with saturation, then the
// low 32 of them.
int ReadINT(const char *text);

// What the C library's "%le" makes of the text, 0 where it makes nothing.
double ReadDBL(const char *text);

// Names (names.cpp) ------------------------------------------------------------------------------------

// 1 when the names are equal with blanks left out, else 0. The two sides differ at their ends: blanks at the
// end of `a` are passed over, blanks at the end of `b` are not, and an empty `a` equals only an empty `b`.
int AreNamesSame(const char *a, const char *b);

// 1 when the first n characters that are not blank agree, else 0. An empty `a` agrees only for n = 0; an `a`
// with fewer than n such characters does not.
int AreNamesSamn(const char *a, const char *b, int n);

// 1 when the pattern stands somewhere in the text, else 0. An empty pattern is never found.
int Find(const char *text, const char *pattern);

// Time and streams (frame.cpp) -------------------------------------------------------------------------

// Prints the local date and time ("16 November 2026 06:21:06 AM") and a line end.
void timestamp();

// Processor time used so far, in seconds: differences of two readings are what the log prints.
double ProcessorSeconds();

// Gives the stream a buffer of `size` bytes that lives as long as the process. The first call makes it; every
// later call installs that same buffer. Sizes below the C library's BUFSIZ are raised to it, because setbuf
// uses that many bytes whatever it is told.
void SetIOBuffer(std::FILE *stream, int size);

// Sorting (sort.cpp) -----------------------------------------------------------------------------------

// a[0..n-1] ascending, in place. Any 32-bit numbers.
void BinarySort(int n, int *a);

// The same, with b[i] following a[i]. Where keys are equal, the order of their companions is the one that the
// partition leaves (see sort.cpp); it is not that of the input.
void SortByFirstArray2(int n, int *a, int *b);

// Ordering rows (order.cpp) ----------------------------------------------------------------------------

// The order that puts n rows by their keys, as SortByFirstArray2 would leave it: after the call keys[0..n-1] are
// ascending and order[p] is the former row of position p. False, and nothing changed in `keys` nor `order`,
// when the keys are in order already. `order` holds n ints.
bool OrderRows(int n, int *keys, int *order);

// column[0..n-1] rearranged so that position p holds what stood at order[p]; `spare` holds n entries.
void ReorderINT(int n, int *column, const int *order, int *spare);
void ReorderDBL(int n, double *column, const int *order, double *spare);

// Look-up (lookup.cpp; a prepared, faster form in lookup.h) ----------------------------------------------

// Position of `id` in the ascending list, or -1. Where numbers repeat, the position that the halving leaves.
int FindIDPositionInTheList(int n, const int *list, int id);

// lids[p] where gids[p] is `gid`, or -1. `gids` ascending. The order of the arguments is not that of its sister.
int GetLIDByGID(int gid, int n, const int *gids, const int *lids);

#endif
