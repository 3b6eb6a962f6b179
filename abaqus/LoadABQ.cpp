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

// Each keyword is sought with a comma behind it, on the line with a comma appended: "*NODE" then matches neither
// "*NODEOUTPUT" nor "*NODEPRINT".
bool IsKeyword(const char *keyword) {
    char *line = ABQLine();
    const std::size_t length = std::strlen(line);
    line[length] = ','; // the buffer keeps room for it
    line[length + 1] = '\0';
    const bool found = Find(line, keyword) != 0;
    line[length] = '\0';
    return found;
}

// Reads the section whose keyword line is in hand. A keyword of no interest is dropped, and its data lines with
// it: they begin no keyword line.
void ReadSection(LineSource *stream) {
    if (IsKeyword("*NODE,")) {
        ReadNodes(stream, &deck->nodeBlocks);
    } else if (IsKeyword("*ELEMENT,")) {
        ReadCells(stream, &deck->cellBlocks);
    } else if (IsKeyword("*NSET,")) {
        ReadNodeSets(stream, &deck->nodeSets);
    } else if (IsKeyword("*ELSET,")) {
        ReadCellSets(stream, &deck->cellSets);
    } else if (IsKeyword("*SURFACE,")) {
        ReadSurfaces(stream, &deck->surfaces);
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
