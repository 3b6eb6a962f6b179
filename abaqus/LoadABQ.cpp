// Reading a deck: the keyword lines, and the steps from what was read to the store.
#include "abaqus/LoadABQ.h"

#include "abaqus/abqcolumns.h"
#include "abaqus/abqdeck.h"
#include "abaqus/abqline.h"
#include "abaqus/abqrecord.h"

#include "store/COM.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int kUnreadableStatus = -1;

ABQModel *deck = nullptr;
char c1inpfilename[kNameBuffer];

[[noreturn]] void EndUnreadable() {
    std::printf("\n Error> cannot open file %s\n", c1inpfilename);
    std::exit(kUnreadableStatus);
}

struct Section {
    const char *keyword;
    void (*read)(LineSource *stream);
};

// In the order in which they are sought. Each stands with a comma behind it: "*NODE" then matches neither
// "*NODEOUTPUT" nor "*NODEPRINT".
constexpr Section kSections[] = {
    {"*NODE,", [](LineSource *stream) { ReadNodes(stream, &deck->nodeBlocks); }},
    {"*ELEMENT,", [](LineSource *stream) { ReadCells(stream, &deck->cellBlocks); }},
    {"*NSET,", [](LineSource *stream) { ReadNodeSets(stream, &deck->nodeSets); }},
    {"*ELSET,", [](LineSource *stream) { ReadCellSets(stream, &deck->cellSets); }},
    {"*SURFACE,", [](LineSource *stream) { ReadSurfaces(stream, &deck->surfaces); }},
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
    ABQOrderNodeBlocks(deck->nodeBlocks);
    ABQOrderCellBlocks(deck->cellBlocks);
    SortSetNumbers(deck->nodeSets);
    SortSetNumbers(deck->cellSets);
    ABQNumberRecords();
}

void HandOver() {
    COM_ArchnDim(deck->nDim);
    ABQ2COM_Node();
    ABQ2COM_Cell();
    ABQ2COM_Groups();
}

} // namespace

ABQModel *ABQDeck() {
    return deck;
}

void ABQRequireReadable(const LineSource *stream) {
    if (stream->bFailed) {
        EndUnreadable();
    }
}

void LoadABQ(const char *filename) {
    std::snprintf(c1inpfilename, sizeof c1inpfilename, "%s", filename);
    if (deck == nullptr) {
        deck = ABQNewRecord<ABQModel>();
    }
    LineSource stream;
    if (!OpenLines(&stream, c1inpfilename)) {
        EndUnreadable();
    }
    std::printf("Reading Abaqus mesh from %s ...\n", c1inpfilename);
    ReadDeck(&stream);
    CloseLines(&stream);
    ABQReleaseSpareColumns();

    OrderAndNumber();
    ABQ_AssignSystDim();
    ABQ_AssignCellMap();
    ABQTagNodes();
    ABQ_SetCellFaceTagByGID();
    HandOver();

    ABQReleaseDeck(deck);
    deck = nullptr;
}
