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

// In the order in which they are sought.
constexpr Section kSections[] = {
    {"*NODE", [](LineSource *stream) { ReadNodes(stream, &ABQDeck()->nodeBlocks); }},
    {"*ELEMENT", [](LineSource *stream) { ReadCells(stream, &ABQDeck()->cellBlocks); }},
    {"*NSET", [](LineSource *stream) { ReadNodeSets(stream, &ABQDeck()->nodeSets); }},
    {"*ELSET", [](LineSource *stream) { ReadCellSets(stream, &ABQDeck()->cellSets); }},
    {"*SURFACE", [](LineSource *stream) { ReadSurfaces(stream, &ABQDeck()->surfaces); }},
};

// True when the text holds the keyword with a comma or the text's end behind it: "*NODE" stands in neither
// "*NODEOUTPUT" nor "*NODEPRINT".
bool HoldsKeyword(const char *text, const char *keyword) {
    const std::size_t length = std::strlen(keyword);
    while ((text = std::strstr(text, keyword)) != nullptr) {
        if (text[length] == ',' || text[length] == '\0') {
            return true;
        }
        ++text;
    }
    return false;
}

// The section that the keyword line in hand begins, or null for a keyword of no interest. The keyword may stand
// anywhere on the line.
const Section *SectionInHand() {
    for (const Section &section : kSections) {
        if (HoldsKeyword(ABQLine(), section.keyword)) {
            return &section;
        }
    }
    return nullptr;
}

// From the records to the store.
void HandOver() {
    COM_ArchnDim(ABQDeck()->nDim);
    ABQArchNodes();
    ABQ2COM_Cell();
    ABQArchGroups();
}

} // namespace

bool ABQOpenDeck(LineSource *stream, const char *path) {
    ABQMakeDeck(path);
    ABQDropLine();
    if (OpenLines(stream, ABQDeckName())) {
        return true;
    }
    ABQReleaseDeck();
    return false;
}

bool ABQFindSection(LineSource *stream) {
    while (!ABQAtKeyword()) {
        if (!ABQNextLine(stream)) {
            return false;
        }
    }
    ABQLinkContLines(stream);
    return true;
}

void ABQReadSection(LineSource *stream) {
    const Section *section = SectionInHand();
    if (section != nullptr) {
        section->read(stream);
    } else {
        ABQDropLine();
    }
}

void ABQResolveDeck() {
    ABQOrderDeck();
    ABQNumberRecords();
    ABQ_AssignSystDim();
    ABQ_AssignCellMap();
    ABQTagNodes();
    ABQ_SetCellFaceTagByGID();
}

void LoadABQ(const char *filename) {
    LineSource stream;
    if (!ABQOpenDeck(&stream, filename)) {
        ABQEndUnreadable();
    }
    std::printf("Reading Abaqus mesh from %s ...\n", ABQDeckName());
    while (ABQFindSection(&stream)) {
        ABQReadSection(&stream);
    }
    CloseLines(&stream);
    ABQReleaseSpareColumns();

    ABQResolveDeck();
    HandOver();
    ABQReleaseDeck();
}
