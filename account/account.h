// The account in hand: both readings side by side and what is known of their differences.
//
// The steps run in this order (check.cpp) and each leaves behind what the next needs:
//
//     MatchSections   which keyword lines the reader took, refused, never saw; rows compared as they stand in the deck
//     (deck::Assemble, Reading::Resolve: one mesh of all that is meant; sets and surfaces of the reader as tags)
//     AccountFiles, AccountGenerators, AccountInstances, AccountElements, AccountGroups, AccountSets, AccountSurfaces
//
// A difference that follows from one that has been told is left out: rows of a refused section, members of a lost row.
// What remains and has no cause is `differs`.
#ifndef KIVOM_ACCOUNT_ACCOUNT_H
#define KIVOM_ACCOUNT_ACCOUNT_H

#include "account/findings.h"
#include "account/heldnodes.h"
#include "account/reading.h"

#include "abaqus/abqdeck.h"
#include "abaqus/abqfind.h"
#include "deck/assemble.h"
#include "deck/model.h"

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace account {

// What became of a keyword line of the mesh.
enum class CardState : char {
    other,     // of no interest to the reader
    elsewhere, // in an included file
    held,      // a record was made
    refused,   // it was seen and its section left out
    unseen     // something took the line in
};

// A keyword line and the sections of the model that stand below it.
struct CardUse {
    CardState state = CardState::other;
    bool flawed = false;     // its rows differ, and that has been told
    int next = -1;           // the next card of its file; -1: it is the last
    int system = -1;         // the *SYSTEM that moves its nodes; -1: there is none
    int scope = -1;          // of the sections; -1: it has none
    int section = -1;        // the first of them in its table
    int sections = 0;        // how many follow one another
    long long readLine = -1; // the reader's name for the section: the line of its record
};

// The reader's element blocks, found by number as it finds them itself. Only after Reading::Resolve.
struct CellIndex {
    std::vector<ABQCellBlock *> blocks; // in list order
    ABQFinder finder{};
    bool built = false;

    CellIndex() = default;
    CellIndex(const CellIndex &) = delete;
    CellIndex &operator=(const CellIndex &) = delete;
    ~CellIndex() {
        if (built) {
            ABQReleaseFinder(&finder);
        }
    }
};

// Marks of Account::nodeUsed.
constexpr char kUnused = 0;
constexpr char kUsed = 1;
constexpr char kToldUnused = 2;

// What a deck says of lines of its own file, by code; of each code by line.
using SaidByCode = std::array<std::vector<const deck::Finding *>, deck::kCodes>;

struct Account {
    deck::Deck &deck;
    Reading &reading;
    deck::Mesh mesh;
    std::vector<Finding> findings;

    std::vector<CardUse> cards;   // for each of deck.cards
    std::vector<char> passedOver; // for each of deck.files: told as one, at the line that includes it
    std::vector<int> lostRows;    // lines of the deck's own file whose rows the reader does not hold; ascending

    std::vector<char> placedHeld;                     // for each of mesh.placed: the reader's rows stand for it
    std::vector<int> clashingNodes, clashingElements; // numbers that several parts have, ascending
    std::unique_ptr<HeldNodes> heldNodes;             // after Reading::Resolve
    CellIndex cells;                                  // likewise
    std::vector<int> repeatedNodes; // numbers of nodes that either reading has several times, ascending
    std::vector<char>
        nodeUsed; // for each node of the mesh: an element names it (kUsed), or that none does has been told

    SaidByCode remarks;        // of the deck's own file
    SaidByCode told;           // the deck's own findings there
    bool rowsTakenIn = false;  // the reader has rows of nodes or elements that are none to the deck, as has been told
    bool mayBeMissing = false; // the deck lacks something that elements may stand in: what none uses says nothing then

    Account(deck::Deck &d, Reading &r) : deck(d), reading(r) {}
};

// Puts the deck's remarks and findings (those of the mesh too, once there is one) in order for the questions below.
void SortWhatDeckSays(Account *account);

void Add(Account *account, Code code, deck::Place place, std::vector<std::string> words = {}, long long count = 1);

// The card's place, and that of one of its parameters (the card's own where it has none of that name).
deck::Place PlaceOf(const Account &account, int card);
deck::Place PlaceOf(const Account &account, int card, const char *parameter);

// The place of a row in the deck's own file.
deck::Place PlaceOfLine(int line);

// The first of the deck's remarks with that code about the card's lines, or null.
const deck::Finding *RemarkOn(const Account &account, int card, deck::Code code);

// True when one of the deck's own findings with that code speaks of lines from `first` to `last`.
bool DeckSays(const Account &account, deck::Code code, int first, int last);

// The last line that can belong to the card: the next card begins behind it.
int LastLineOf(const Account &account, int card);

// What the section is called in texts: "node set LEFT", "nodes".
std::string SectionName(const Account &account, int card);

// Whether the reader holds the row of that section of the card, as far as is known: not in a refused section, not lost.
bool HoldsRow(const Account &account, int card, int file, int line);

bool HoldsNode(const Account &account, int node);
bool HoldsElement(const Account &account, int element);

std::string NumberText(double value);

// sections.cpp
void MatchSections(Account *account);

// rows.cpp: the rows of a section that is held, against its record.
void CompareNodeRows(Account *account, int card, const ABQNodeBlock &block);
void CompareElementRows(Account *account, int card, const ABQCellBlock &block);
void CompareSetRows(Account *account, int card, const ABQSet &set);
void CompareSurfaceRows(Account *account, int card, const ABQSurface &surface);

// placing.cpp
void AccountFiles(Account *account);
void AccountGenerators(Account *account);
void AccountInstances(Account *account);

// elements.cpp
void AccountElements(Account *account);
void AccountUnusedNodes(Account *account); // behind AccountSets: nodes of sets are told with the set

// groups.cpp
void AccountGroups(Account *account);

// sets.cpp
void AccountSets(Account *account);

// surfaces.cpp
void AccountSurfaces(Account *account);

} // namespace account

#endif
