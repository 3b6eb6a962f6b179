// The reader's rules for lines and fields, written down step by step as they are stated, with no thought of speed.
// The targets hold the program against them.
#ifndef KIVOM_FUZZ_PLAIN_H
#define KIVOM_FUZZ_PLAIN_H

#include <cstddef>
#include <string>

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

int PlainINT(const std::string &field);
double PlainDBL(const std::string &field);

#endif
