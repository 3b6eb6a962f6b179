// What a deck defines, scope by scope, in arrays: nothing is an object for each node or element.
//
//   Deck ── files, cards (keyword lines of the mesh, in deck order), findings, remarks
//     ├─ scopes[0]   the root: what stands outside of parts and instances (deck level and assembly alike)
//     ├─ scopes[i]   a part, or what stands between an instance's own lines
//     └─ instances   which part, where to
//
// Numbers and names are those of their scope. Rows keep their line, sections their file: a section whose rows go on in
// another file is two sections of one card.
#ifndef KIVOM_DECK_MODEL_H
#define KIVOM_DECK_MODEL_H

#include "deck/card.h"
#include "deck/finding.h"
#include "deck/types.h"

#include <array>
#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace deck {

constexpr int kMostNumber = 999999999;        // of a node or an element
constexpr long long kMostInRange = 100000000; // entries of one range
constexpr int kMostInstances = 10000;

struct File {
    std::string path;      // as opened
    int includedFrom = -1; // file that includes it; -1 for the deck
    int line = 0;          // of the include in that file
};

// Rows [first, first + count) of a node or element table.
struct NodeSection {
    int card; // position in Deck::cards; of NODE, or of the generator that made the rows
    int file; // of its rows
    std::size_t first;
    std::size_t count;
    bool continued; // the card's earlier rows are the section before
};

struct NodeTable {
    std::vector<int> number;
    std::vector<double> x, y, z; // SYSTEM= and *SYSTEM applied
    std::vector<int> line;       // of the row; of the generator's row where it was generated
    std::vector<NodeSection> sections;
};

struct ElementSection {
    int card;
    int file;
    std::size_t first;
    std::size_t count;
    bool continued;
    int type;              // position in Deck::types
    int width;             // nodes a row has
    std::size_t firstNode; // of its connectivity: row r at [firstNode + r * width]
    std::string elset;     // ELSET= of the line, "" without
    int elsetOrder;        // see SetSection::order
};

struct ElementTable {
    std::vector<int> number;
    std::vector<int> line;  // of the row's first line
    std::vector<int> nodes; // node numbers as given; 0 where the row ended early (types of unknown size only)
    std::vector<ElementSection> sections;
};

enum class SetSource {
    rows,     // members as listed
    ranges,   // GENERATE and what generators make: three entries a row, first, last, step (not 0)
    elset,    // *NSET, ELSET=: nodes of that set's elements; `source` is its name
    surface,  // *NSET, SURFACE=
    nodes,    // NSET= on *NODE: the nodes of node section `rowsOf`
    elements, // ELSET= on *ELEMENT: the elements of element section `rowsOf`
    generated // NSET=, NEW SET= of a generator: members as listed
};

// Some members of a set, from one card.
struct SetSection {
    int card;
    int file;
    SetSource source = SetSource::rows;
    int order = 0;            // place in the order of the deck, over all scopes
    std::string instance;     // INSTANCE=, "" without
    std::string sourceName;   // of elset and surface
    int rowsOf = -1;          // section of the scope's node or element table
    std::size_t firstRow = 0; // rows of SetTable
    std::size_t rowCount = 0;
    bool internal = false;
    bool unsorted = false;
};

struct Set {
    std::string name;          // as meant
    std::string written;       // as written first
    std::vector<int> sections; // positions in SetTable::sections, in deck order
};

// Member entries are numbers, or -1 - p for SetTable::names[p] (a set's name, INSTANCE.NAME, INSTANCE.NUMBER).
struct SetTable {
    std::vector<Set> sets; // in the order of their first section
    std::map<std::string, int> byName;
    std::vector<SetSection> sections;
    std::vector<int> rowLine;
    std::vector<std::size_t> rowFirst{0}; // first entry of each row; rowFirst[rows] is entries.size()
    std::vector<int> entries;
    std::vector<std::string> names;
};

enum class Label : signed char { none = -1, s1, s2, s3, s4, s5, s6, e1, e2, e3, e4, spos, sneg, unknown };

enum class SurfaceKind { element, node, combined, refused };
enum class Combine { none, unite, intersect, subtract };

struct SurfaceRow {
    int line;
    int member; // a number, or -1 - p for SurfaceTable::names[p]
    Label label;
    int labelWord; // position in names of an unknown label, else -1
};

struct SurfaceSection {
    int card;
    int file;
    SurfaceKind kind = SurfaceKind::element;
    Combine combine = Combine::none;
    int order = 0;
    std::size_t firstRow = 0;
    std::size_t rowCount = 0;
    bool internal = false;
};

struct Surface {
    std::string name;
    std::string written;
    std::vector<int> sections; // positions in SurfaceTable::sections; more than one is a finding
};

struct SurfaceTable {
    std::vector<Surface> surfaces;
    std::map<std::string, int> byName;
    std::vector<SurfaceSection> sections;
    std::vector<SurfaceRow> rows;
    std::vector<std::string> names;
};

// "*SOLID SECTION, ELSET=..." and its like.
struct Assignment {
    int card;
    std::string elset;
};

enum class ScopeKind { root, part, instance };

struct Scope {
    ScopeKind kind = ScopeKind::root;
    std::string name; // of the part or the instance, as meant
    std::string written;
    int card = -1;
    NodeTable nodes;
    ElementTable elements;
    SetTable nodeSets;
    SetTable elementSets;
    SurfaceTable surfaces;
    std::vector<Assignment> assignments;
};

// Where a part is placed: shifted, then turned about the line from a to b.
struct Instance {
    std::string name;
    std::string written;
    int card = -1;
    int part = -1; // scope of the part; -1 when PART= names none and its own lines hold the mesh
    int own = -1;  // scope of what stands between its lines; -1 where that is nothing
    std::array<double, 3> shift{};
    std::array<double, 3> a{}, b{};
    double degrees = 0;
    bool moved = false; // any of shift is not 0
    bool turned = false;
};

struct TypeName {
    std::string name;    // as meant
    std::string written; // as written first
    ElementType type;
};

struct Deck {
    std::vector<File> files; // [0] is the deck
    std::vector<Card> cards; // keyword lines of the mesh, in the order of the deck; others are counted only
    std::vector<Scope> scopes;
    std::vector<Instance> instances;
    std::vector<TypeName> types;
    std::map<std::string, long long> otherKeywords; // keywords that make no mesh: how often
    std::vector<Finding> findings;
    std::vector<Finding>
        remarks; // spellings that are understood here (see Code); the first of a kind and section, with counts
    long long lines = 0;
    bool readable = true; // false: the deck or an include is missing or could not be read to its end
};

struct Limits {
    long long mostGenerated = kMostInRange; // nodes and elements that all generators of a deck make together
};

// The deck in the file of that path, with all that it includes. Never fails: what cannot be read is a finding
// (`unreadable` for the deck itself) and readable is false then.
Deck ReadDeck(const std::string &path, const Limits &limits = {});

// The position of the set in the table, or -1.
int FindSet(const SetTable &table, const std::string &name);

} // namespace deck

#endif
