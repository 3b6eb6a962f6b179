// A deck in the making: what the readers of its sections share.
#ifndef KIVOM_DECK_BUILDING_H
#define KIVOM_DECK_BUILDING_H

#include "deck/cards.h"
#include "deck/model.h"
#include "deck/placement.h"

#include <array>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace deck {

// Positions by number, for tables that still grow: the last row of a number counts.
class NumberTable {
  public:
    // Takes in the rows behind those that it knows.
    void Update(const std::vector<int> &numbers);

    // The position in that same list, or -1.
    int Find(const std::vector<int> &numbers, int number) const;

  private:
    void Grow(const std::vector<int> &numbers, std::size_t wanted);
    std::size_t SlotOf(const std::vector<int> &numbers, int number) const;

    std::vector<int> slots_; // positions, -1 for none; a power of two of them
    std::size_t known_ = 0;  // rows taken in
};

struct Building {
    Building(Deck *deckMade, const Limits &limitsGiven) : deck(deckMade), cards(deckMade), limits(limitsGiven) {}

    Deck *deck;
    CardReader cards;
    Limits limits;
    int scope = 0;
    int order = 0;           // of the next section of a set or surface
    long long generated = 0; // rows made by generators so far
    long long looked = 0;    // see MayLook
    bool hasSystem = false;  // a *SYSTEM is in force
    Frame system;
    std::map<std::string, int> typeByName; // positions in Deck::types
    std::map<std::string, int> partByName; // scopes
    std::map<std::string, int> instanceByName;
    std::map<int, std::array<NumberTable, 2>> numbersOf; // by scope: nodes, elements; made when a generator asks

    Scope &Here() {
        return deck->scopes[static_cast<std::size_t>(scope)];
    }
    const Card &At(int card) const {
        return deck->cards[static_cast<std::size_t>(card)];
    }
    // Whether generators may look at so many more members of sets: each asks for the whole set. A finding where not.
    bool MayLook(std::size_t count) {
        looked += static_cast<long long>(count);
        if (looked > kMostInRange) {
            cards.Find(Code::tooMany, deck->cards.back().place, {deck->cards.back().name});
        }
        return looked <= kMostInRange;
    }
};

// Fields and numbers (fields.cpp) --------------------------------------------------------------------------

Place PlaceOf(const Line &row, const Field &field);

// A number of a node or element; 0, with a finding, where the field is none.
int DeckNumber(Building *b, const Line &row, const Field &field);

// A whole number, the default where the field is missing or empty. False, with a finding, where it is none.
bool WholeField(Building *b, const Line &row, const std::vector<Field> &fields, std::size_t i, int missing, int *value);

// A real, 0 where the field is missing or empty. False, with a finding, where it is none.
bool RealField(Building *b, const Line &row, const std::vector<Field> &fields, std::size_t i, double *value);

// The value of a parameter; "" without it.
std::string ValueOf(const Card &card, const char *name);

// Sets (setrows.cpp) ---------------------------------------------------------------------------------------

// A section of the set of that name, which begins with no row.
SetSection *BeginSetSection(Building *b, SetTable *table, int card, const Parameter &name, SetSource source);

// One row with its entries.
void AddSetRow(SetTable *table, int line, const std::vector<int> &entries);

// The numbers that the set holds at this point of the deck, ascending unless every section of it is UNSORTED, each
// once: of ranges and sets of sections those that are there. False where there is no such set.
bool SetNow(Building *b, SetTable *table, const std::string &name, std::vector<int> *numbers, bool *unsorted);

// Sections: each reads the rows of the card in hand, which is the last of Deck::cards --------------------------

void ReadNodes(Building *b, int card);
void ReadElements(Building *b, int card);
void ReadSet(Building *b, int card, bool ofNodes);
void ReadSurface(Building *b, int card);
void ReadSystem(Building *b, int card);
void BeginPart(Building *b, int card);
void BeginInstance(Building *b, int card);
void GenerateLine(Building *b, int card);     // *NGEN
void GenerateFill(Building *b, int card);     // *NFILL
void CopyNodes(Building *b, int card);        // *NCOPY
void GenerateElements(Building *b, int card); // *ELGEN
void CopyElements(Building *b, int card);     // *ELCOPY

int PositionOfNode(Building *b, int number);    // now, in this scope; -1
int PositionOfElement(Building *b, int number); // likewise

// The section that the element's row belongs to.
const ElementSection &SectionOf(const ElementTable &elements, std::size_t position);

// Whether so many more rows may be generated; a finding where not.
bool MayGenerate(Building *b, const Place &place, const char *keyword, long long count);

} // namespace deck

#endif
