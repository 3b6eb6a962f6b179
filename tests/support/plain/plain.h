// The translator once more, in the ordinary manner: lists, double loops, the C library, no thought of speed. Tests and
// fuzz targets hold the program against it, and KIVOm_plain (main.cpp) is the program made of it.
//
// It shares nothing with the program: what both say is said twice.
#ifndef KIVOM_TESTS_SUPPORT_PLAIN_H
#define KIVOM_TESTS_SUPPORT_PLAIN_H

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

using Ints = std::vector<int>;

// Whole runs ---------------------------------------------------------------------------------------------

// Takes a file whole; false when it cannot be made.
using PlainPut = std::function<bool(const std::string &path, const std::string &text)>;

// Translates the deck: appends what the log says from "Reading Abaqus mesh" to the last elapsed time (all times are 0),
// and hands out the files in their order. False when "mesh.input" could not be made, and then the log ends there.
bool PlainTranslate(const std::string &name, const std::string &deck, bool bVTK, const PlainPut &put, std::string *log);

// Lines and fields (lines.cpp) ------------------------------------------------------------------------------

// The text as physical lines: cut at '\n', a last line without one counts, nothing stands behind a last '\n'. A NUL
// ends its line's text.
struct PlainText {
    std::string text;
    std::size_t at;
    long long nLines; // lines handed out
};

bool PlainNextLine(PlainText *text, std::string *line);

// Comment cut at the first "**", blanks and unwanted bytes dropped, letters made capital.
std::string PlainCompressed(const std::string &line);

// The logical line in hand.
struct PlainLine {
    std::string text;
    bool bContinues; // its last physical line ended in a comma
    bool bCut;       // it passed the limit
    std::string log; // what was reported
};

bool PlainNextLogical(PlainText *text, PlainLine *line); // the next line that is not empty
void PlainJoin(PlainText *text, PlainLine *line);        // its continuation lines

// The value of a parameter: what follows "name=", up to the next comma.
bool PlainParameter(const std::string &line, const std::string &name, std::string *value);

// Takes the next field and blanks it, from the line's first character on.
std::string PlainGrab(std::string *line, char separator);

// Names whose blanks count nowhere but at the end of the second; the first n characters of names without blanks.
bool PlainSame(const std::string &a, const std::string &b);
bool PlainSamn(const std::string &a, const std::string &b, int n);

// Numbers as the C library reads and writes them.
int PlainINT(const std::string &field);
double PlainDBL(const std::string &field);
std::string PlainField(const char *format, int value);
std::string PlainField(const char *format, double value);

// Order (order.cpp) -----------------------------------------------------------------------------------------

// Sorts by splitting the range of values; the order in which rows that go with the keys end.
Ints PlainSort(Ints *keys);

// The position that halving leaves, or -1.
int PlainFind(const Ints &list, int id);

// Blocks by their first numbers: each with all behind it, exchanged where it is larger. The order in which they end.
Ints PlainExchange(Ints firsts);

#endif
