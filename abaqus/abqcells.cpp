// *ELEMENT sections.
#include "abaqus/RefusedWords.h"
#include "abaqus/abqcolumns.h"
#include "abaqus/abqdeck.h"
#include "abaqus/abqline.h"
#include "abaqus/abqrecord.h"
#include "abaqus/abqrows.h"

#include "store/families.h"

#include <cstdio>
#include <cstring>

namespace {

struct ElementType {
    const char *name; // value of TYPE
    int type;         // type code of the store
};

// clang-format off
constexpr ElementType kElementTypes[] = {
    {"C3D4",   kTET4},
    {"C3D10",  kTETX},
    {"CPE3",   kTRI3},
    {"CPS3",   kTRI3},
    {"STRI3",  kTRI3},
    {"CPE6",   kTRI6},
    {"CPS6",   kTRI6},
    {"STRI65", kTRI6},
};
// clang-format on

constexpr bool AllCanBeRead() {
    for (const ElementType &known : kElementTypes) {
        bool found = false;
        for (const ElementFamily &family : kFamilies) {
            found = found || (family.type == known.type && family.deck.bKnown);
        }
        if (!found) {
            return false;
        }
    }
    return true;
}

static_assert(AllCanBeRead(), "a type of the deck belongs to a family without the deck's order");

constexpr int kMostNumbers = 1 + kMostNodes; // an element's number and its nodes

const ElementFamily *FindFamily(const char *name) {
    for (const ElementType &known : kElementTypes) {
        if (std::strcmp(known.name, name) == 0) {
            return FamilyOf(known.type);
        }
    }
    return nullptr;
}

void ReportUnrecognized(const char *name) {
    std::printf("\n  Error> Unrecognized element type: %s.\n", name);
    std::printf("         Supports TETs: C3D4, C3D10;\n");
    std::printf("         Supports TRIs: STRI3, STRI65, CPE3, CPS3, CPE6, CPS6.\n");
}

// The element on the line in hand: its number and nNodes nodes. Each that is missing is reported and 0.
void ScanElement(int nNodes, int *numbers) {
    char *cursor = ABQLine();
    for (int i = 0; i <= nNodes; ++i) {
        if (NextINT(&numbers[i], &cursor, ',') == 0) {
            std::printf("\n  Error> Needed to read %d nodes.\n", nNodes);
        }
    }
}

// The next row of the section; false at its end, with the line behind it in hand.
bool NextElement(LineSource *stream, int nNodes, int *numbers) {
    if (TakeElementRow(stream, nNodes + 1, numbers)) {
        return true;
    }
    if (!ABQNextLine(stream) || ABQAtKeyword()) {
        return false;
    }
    ABQLinkContLines(stream);
    ScanElement(nNodes, numbers);
    return true;
}

void ReadRows(LineSource *stream, int nNodes, ABQColumns *rows) {
    int numbers[kMostNumbers];
    while (NextElement(stream, nNodes, numbers)) {
        const int row = ABQAddRow(rows);
        for (int k = 0; k <= nNodes; ++k) {
            ABQIntColumn(rows, k)[row] = numbers[k];
        }
    }
}

// The family of the type named on the keyword line, or null after reporting that there is none such.
const ElementFamily *ParseType(char *name) {
    ABQParseLabel(name, "TYPE");
    const ElementFamily *family = FindFamily(name);
    if (family == nullptr) {
        ReportUnrecognized(name);
    }
    return family;
}

} // namespace

void ReadCells(LineSource *stream, ABQCellBlock **list) {
    auto *block = ABQNewRecord<ABQCellBlock>();
    block->nLine = ABQLineNumber();
    if (ABQParseLabel(block->name, "ELSET") == 0) {
        std::printf("  Warning> Cannot find ELSET name for Cells.\n");
    }
    std::printf("  Reading Elements %s ... ", block->name);
    if (ABQRefuse(stream, kRefusedCells)) {
        allocate(block, 0);
        return;
    }
    char typeName[kNameBuffer];
    const ElementFamily *family = ParseType(typeName);
    if (family == nullptr) {
        ABQNextLine(stream);
        allocate(block, 0);
        return;
    }
    ABQColumns rows{};
    ABQAddColumns(&rows, 1 + family->nNodes, sizeof(int));
    ReadRows(stream, family->nNodes, &rows);
    std::printf("done with %d %ss.\n", rows.count, typeName);
    block->type = family->type;
    block->tag = -1;
    block->nNodes = family->nNodes;
    block->count = block->capacity = rows.count;
    block->i1GID = static_cast<int *>(ABQTakeColumn(&rows, 0));
    block->i2Conn = ABQTakeTable(&rows, 1, family->nNodes);
    ABQPush(list, block);
}
