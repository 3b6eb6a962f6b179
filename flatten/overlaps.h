// Who keeps a node or a face that several sets or surfaces hold.
#ifndef KIVOM_FLATTEN_OVERLAPS_H
#define KIVOM_FLATTEN_OVERLAPS_H

#include "flatten/making.h"

namespace flatten {

// A set of nodes, or a surface by the positions of its faces in some list.
struct Claim {
    std::string name;       // full, as the deck means it
    std::string plain;      // without its instance
    std::string instance;   // "" without
    std::vector<int> items; // ascending, each once
    long long size = 0;     // members in the deck
    deck::Place place;
    const char *kind = ""; // for changes; "" where the deck has no such record
};

// The claims that hold each item, ascending.
class Holders {
  public:
    Holders(int nItems, const std::vector<Claim> &all);
    std::vector<int> Of(std::size_t item) const;

  private:
    std::vector<std::size_t> first_; // those of item i at [first_[i], first_[i + 1])
    std::vector<int> claims_;
};

// Leaves each of the items to one claim, in the way that the options ask for. Adds findings with that code, or, where
// claims are divided, `overlapDivided`. Items are below nItems.
void ResolveOverlaps(Making *m, Code code, int nItems, std::vector<Claim> *claims);

// The claims' final names, and what is to be told of them.
std::vector<std::string> NameClaims(Making *m, const std::vector<Claim> &claims, unsigned where);

// The final name, given out; a finding and a change where it is another one.
class Names;
std::string NameOne(Making *m, Names *names, const Claim &claim, unsigned where);

} // namespace flatten

#endif
