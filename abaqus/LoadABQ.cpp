// Reading a deck: the keyword lines, and the steps from what was read to the store.
#include "abaqus/LoadABQ.h"

#include "abaqus/abqcolumns.h"
#include "abaqus/abqdeck.h"
#include "abaqus/abqline.h"

#include "store/COM.h"

#include <cstdio>
#include <cstring>

namespace {

struct Section {
    const char *keyword;
    void (*read)(LineSource *stream);
};

// In the order in which they are sought. Each stands with a comma behind it: "*NODE" then matches neither
// "*NODEOUTPUT" nor "*NODEPRINT".
constexpr Section kSections[] = {
    {"*NODE,", [](LineSource *stream) { ReadNodes(stream, &ABQDeck()->nodeBlocks); }},
    {"*ELEMENT,", [](LineSource *stream) { ReadCells(stream, &ABQDeck()->cellBlocks); }},
    {"*NSET,", [](LineSource *stream) { ReadNodeSets(stream, &ABQDeck()->nodeSets); }},
    {"*ELSET,", [](LineSource *stream) { ReadCellSets(stream, &ABQDeck()->cellSets); }},
    {"*SURFACE,", [](LineSource *stream) { ReadSurfaces(stream, &ABQDeck()->surfaces); }},
};

// The section that the keyword line in hand begins, or null for a keyword of no interest. The keyword may stand
// anywhere on the line; the line counts with a comma appended.
const Section *SectionInHand() {
    char *end = ABQLine() + std::strlen(ABQLine());
    end[0] = ','; // the buffer keeps room for it
    end[1] = '\0';
    const Section *found = nullptr;
    for (const Section &section : kSections) {
        if (Find(ABQLine(), section.keyword) != 0) {
            found = &section;
            break;
        }
    }
    end[0] = '\0';
    return found;
}

// Reads the section whose keyword line is in hand. A keyword of no interest is dropped, and its data lines with
// it: they begin no keyword line.
void ReadSection(LineSource *stream) {
    const Section *section = SectionInHand();
    if (section != nullptr) {
        section->read(stream);
    } else {
        ABQDropLine();
    }
}

void ReadDeck(LineSource *stream) {
    while (ABQNextLine(stream)) {
        while (ABQAtKeyword()) {
            ABQLinkContLines(stream);
            ReadSection(stream);
        }
    }
}

void SortSetNumbers(ABQSet *set) {
    for (; set != nullptr; set = set->next) {
        BinarySort(set->count, set->numbers);
    }
}

void OrderAndNumber() {
    ABQOrderNodeBlocks(ABQDeck()->nodeBlocks);
    ABQOrderCellBlocks(ABQDeck()->cellBlocks);
    SortSetNumbers(ABQDeck()->nodeSets);
    SortSetNumbers(ABQDeck()->cellSets);
    ABQNumberRecords();
}

void HandOver() {
    COM_ArchnDim(ABQDeck()->nDim);
    ABQ2COM_Node();
    ABQ2COM_Cell();
    ABQ2COM_Groups();
}

} // namespace

void LoadABQ(const char *filename) {
    ABQMakeDeck(filename);
    LineSource stream;
    if (!OpenLines(&stream, ABQDeckName())) {
        ABQEndUnreadable();
    }
    std::printf("Reading Abaqus mesh from %s ...\n", ABQDeckName());
    ReadDeck(&stream);
    CloseLines(&stream);
    ABQReleaseSpareColumns();

    OrderAndNumber();
    ABQ_AssignSystDim();
    ABQ_AssignCellMap();
    ABQTagNodes();
    ABQ_SetCellFaceTagByGID();
    HandOver();

    ABQReleaseDeck();
}
