// Any deck as a plain one that the translator holds whole.
#ifndef KIVOM_FLATTEN_FLATTEN_H
#define KIVOM_FLATTEN_FLATTEN_H

#include "flatten/finding.h"
#include "flatten/plain.h"

#include "deck/assemble.h"
#include "deck/model.h"

#include <string>
#include <vector>

namespace flatten {

enum class Groups {
    lines,    // the ELSET of the *ELEMENT line, else the section that assigns the element, else its instance
    sections, // the section first
    sets      // the sets that hold the element, joined by "+"; where none does, as for lines
};

enum class Overlaps {
    smallest, // a node or face goes to the set with the fewest members; ties: the first of the deck
    first,    // to the first of the deck
    split     // to the set of all that several share
};

struct Options {
    Groups groups = Groups::lines;
    Overlaps overlaps = Overlaps::smallest;
    bool split = true; // false: elements that would have to be split are refused
    double scale = 1;
};

// A number or a name that is another one in the plain deck.
struct Change {
    const char *kind;     // node, element, nset, elset, surface, group
    std::string instance; // "" without
    std::string before;
    std::string after;
};

struct Flat {
    Plain plain;
    std::vector<Finding> findings;
    std::vector<Change> changes; // only where they were asked for
};

// Makes the plain deck of what the deck means. The mesh's coordinates are used up. The findings of the deck and of the
// mesh are not repeated.
Flat Flatten(const deck::Deck &deck, deck::Mesh *mesh, const Options &options, bool wantsChanges);

// Writes the deck into the open file: false when it cannot be written whole.
bool WriteDeck(const Plain &plain, int file);

// The changes as tab-separated text with a line of headings.
bool WriteMap(const std::vector<Change> &changes, int file);

} // namespace flatten

#endif
