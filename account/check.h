// The account of a deck: what it means, what the translator holds of it, and every difference.
#ifndef KIVOM_ACCOUNT_CHECK_H
#define KIVOM_ACCOUNT_CHECK_H

#include "account/findings.h"

#include "deck/model.h"

#include <map>
#include <string>
#include <vector>

namespace account {

// A set, a surface or a cell group with the number of its members, faces or elements.
struct Count {
    std::string name;
    std::string type; // of cell groups: the names of their element types, joined by "+"
    long long count;
};

struct Summary {
    int dimension = 0;
    long long nodes = 0;
    long long elements = 0;
    std::vector<Count> nodeSets, elementSets, surfaces, cellGroups; // in the order of the deck
};

struct Report {
    std::string path;
    bool readable = false; // false: the deck or a file that it includes cannot be opened, or not be read to its end
    std::vector<deck::File> files;
    std::vector<Finding> findings; // in the order of the deck
    Summary meaning, reading;
    std::map<std::string, long long> otherKeywords; // those that are no part of a mesh: how often
    long long errors = 0, warnings = 0, notes = 0;  // findings of each level
};

// Reads the deck of that path in both ways and compares them. Standard output stays as it is.
Report CheckDeck(const std::string &path, const deck::Limits &limits = {});

// Puts the findings of a report into the order of the deck and counts its levels.
void PutInOrder(Report *report);

} // namespace account

#endif
