// What a reading of a deck has to say, as values: a code, the place that it speaks of and the words that its text
// needs. Texts and levels belong to whoever reports; nothing here prints.
#ifndef KIVOM_DECK_FINDING_H
#define KIVOM_DECK_FINDING_H

#include <string>
#include <vector>

namespace deck {

// A place in a deck. Lines and columns count from 1; 0 where there is none.
struct Place {
    int file = -1; // position in Deck::files, -1: nowhere
    int line = 0;
    int column = 0;
};

// ORDER: whoever reports keeps a table with one row a code, in this order. The words of each code stand behind it.
enum class Code {
    // Files
    unreadable,       // path, reason: the deck itself cannot be opened, or a file not be read to its end
    includeMissing,   // path as written, reason: an included file cannot be opened or read
    includeCycle,     // path, chain of files "a -> b -> a"
    includeEncrypted, // path: PASSWORD
    includeElsewhere, // path as written, path opened: not found in the folder of the deck, but in another one
    // Keywords, parameters, fields
    misspelt,          // keyword as written, keyword meant: its rows are lost
    misspeltParameter, // parameter as written, parameter meant, keyword
    unknownParameter,  // parameter, keyword: it is passed over
    missingParameter,  // parameter, keyword: the section is lost
    badNumber,         // field: no number where one is needed; the row (or the member) is lost
    numberRange,       // field: a number outside 1 ... 999999999; the row (or the member) is lost
    rowBeforeKeyword,  // a data row that belongs to no keyword
    strayRow,          // keyword: a row where the keyword takes none
    uncertain,         // what: its meaning is not certain, so it is refused
    notMesh,           // what: brings nothing that a mesh file can hold (surfaces of other types, imported instances)
    tooMany,           // what: a range of more than 100000000 entries, 10001 instances ...
    // Nodes and elements
    unknownType,   // type
    moreNodes,     // element number, nodes given, nodes of the type: the rest of the row is passed over
    fewerNodes,    // element number, nodes given, nodes of the type: the element is lost
    missingNode,   // element number, node number: count is the number of such elements of the section
    nodeAgain,     // node number: given again alike
    nodeTwice,     // node number: given again with other coordinates, the last counts
    elementTwice,  // element number: given again, the last counts
    generatorEnds, // keyword, what: a generated row that names a node, an element or a set that is not there
    // Sets and surfaces
    missingMember, // member, set or surface: count is the number of such members of the row
    setLater,      // name, set that names it: defined behind it; all of it is taken
    setCycle,      // name: sets that name each other
    surfaceTwice,  // name: a second surface of that name in its scope; both are taken together
    unknownLabel,  // label, surface: no face of these elements has that label
    noLabel,       // set or number, surface: more faces are free in the set than in the mesh; the latter are taken
    // Parts and instances
    scopeEnd,      // keyword, what is open: an end without its beginning, or a beginning inside another
    scopeOpen,     // keyword: never ended
    unknownPart,   // part, instance: the instance is lost
    instanceTwice, // name: of an instance or a part
    partUnused,    // part: no instance uses it
    emptyDeck,     // neither a node nor an element
    // Spellings: what is meant is certain and is taken, but other readers may stumble. In Deck::remarks, not findings.
    abbreviated,          // keyword as written, keyword meant
    abbreviatedParameter, // parameter as written, parameter meant
    rowEndComma,          // a complete row of a node or an element with a comma behind it
    keywordEndComma,      // a keyword line with a comma behind it and no parameters on the next line
    dExponent,            // field: D as the exponent's letter, or none
    wholeNumberAsReal,    // field
    blanksForCommas,      // row cut at its blanks
    quotedName,           // name: stands in quotes
    commentInside,        // "**" behind the first column: part of the text
};
constexpr int kCodes = static_cast<int>(Code::commentInside) + 1;

struct Finding {
    Code code;
    Place place;
    std::vector<std::string> words;
    long long count = 1;
};

} // namespace deck

#endif
