// The deck in hand: making and releasing its records, and what to do when it cannot be read.
#include "abaqus/abqdeck.h"

#include "abaqus/abqcolumns.h"
#include "abaqus/abqrecord.h"

#include "store/families.h"
#include "support/lines.h"

#include <cstdio>
#include <cstdlib>

namespace {

constexpr int kUnreadableStatus = -1;

ABQModel *deck = nullptr;
char c1inpfilename[kNameBuffer];

template <class Record, class Release> void ReleaseList(Record **list, Release release) {
    while (*list != nullptr) {
        Record *record = *list;
        *list = record->next;
        release(record);
        allocate(record, 0);
    }
}

} // namespace

ABQModel *ABQMakeDeck(const char *filename) {
    std::snprintf(c1inpfilename, sizeof c1inpfilename, "%s", filename);
    if (deck == nullptr) {
        deck = ABQNewRecord<ABQModel>();
    }
    return deck;
}

ABQModel *ABQDeck() {
    return deck;
}

const char *ABQDeckName() {
    return c1inpfilename;
}

void ABQEndUnreadable() {
    std::printf("\n Error> cannot open file %s\n", c1inpfilename);
    std::exit(kUnreadableStatus);
}

void ABQRequireReadable(const LineSource *stream) {
    if (stream->bFailed && (deck == nullptr || !deck->bReadOn)) {
        ABQEndUnreadable();
    }
}

int ABQNumFaces(int type) {
    const ElementFamily *family = FamilyOf(type);
    return family == nullptr ? 0 : family->faces.slots.nRows;
}

void ABQReleaseNodeColumns(ABQNodeBlock *block) {
    block->i1Tag = AllocINT1D(block->i1Tag, 0);
    block->i1GID = AllocINT1D(block->i1GID, 0);
    block->d1X = AllocDBL1D(block->d1X, 0);
    block->d1Y = AllocDBL1D(block->d1Y, 0);
    block->d1Z = AllocDBL1D(block->d1Z, 0);
}

void ABQReleaseCellColumns(ABQCellBlock *block) {
    if (block->i2FaceTag != nullptr) {
        block->i2FaceTag = AllocINT2D(block->i2FaceTag, ABQNumFaces(block->type), 0);
    }
    block->i1GID = AllocINT1D(block->i1GID, 0);
    if (block->i2Conn != nullptr) {
        block->i2Conn = AllocINT2D(block->i2Conn, block->nNodes, 0);
    }
}

void ABQReleaseDeck() {
    ABQReleaseSpareColumns();
    ReleaseList(&deck->nodeBlocks, ABQReleaseNodeColumns);
    ReleaseList(&deck->cellBlocks, ABQReleaseCellColumns);
    const auto releaseSet = [](ABQSet *set) { set->numbers = AllocINT1D(set->numbers, 0); };
    ReleaseList(&deck->nodeSets, releaseSet);
    ReleaseList(&deck->cellSets, releaseSet);
    ReleaseList(&deck->surfaces, [](ABQSurface *surface) {
        surface->entryNames = static_cast<char *>(allocate(surface->entryNames, 0));
        surface->faceRows = AllocINT1D(surface->faceRows, 0);
    });
    deck = static_cast<ABQModel *>(allocate(deck, 0));
}
