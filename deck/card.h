// Keyword lines: what stands on them and which keyword and parameters are meant.
#ifndef KIVOM_DECK_CARD_H
#define KIVOM_DECK_CARD_H

#include "deck/finding.h"

#include <string>
#include <vector>

namespace deck {

// The keywords that make a mesh. ORDER: rows of kKeywords in keywords.cpp.
enum class Keyword {
    other, // no part of the mesh, or misspelt (a finding says so)
    node,
    element,
    nset,
    elset,
    surface,
    part,
    endPart,
    instance,
    endInstance,
    assembly,
    endAssembly,
    include,
    system,
    transform,
    ngen,
    nfill,
    ncopy,
    nmap,
    elgen,
    elcopy,
    parameter,
    section // any "... SECTION" keyword
};

struct Parameter {
    std::string name;    // as meant, in upper case without blanks; as written (folded) where no such parameter is known
    std::string written; // the name as written, blanks left out
    std::string value;   // as meant: quotes off and kept inside; else in upper case without blanks
    std::string text;    // the value as written, blanks around it left out
    bool hasValue = false;
    bool quoted = false;
    bool known = false; // one of the keyword's parameters
    int line = 0;
    int column = 0;
};

struct Card {
    Keyword keyword = Keyword::other;
    std::string
        name; // the keyword as meant ("END PART", "SOLID SECTION"); as written (folded) when it is no mesh keyword
    std::string written;   // as written behind the '*', single blanks between words
    Place place;           // of the '*'
    bool misspelt = false; // name is the keyword meant; its rows are lost unless it only begins or ends a scope
    int lastLine = 0;      // of the keyword line and what continues it
    bool endComma = false; // a comma stands at its end and nothing followed
    std::vector<Parameter> parameters;
};

// The parameter of that full name, or null. The first one where it stands twice.
const Parameter *FindParameter(const Card &card, const char *name);

} // namespace deck

#endif
