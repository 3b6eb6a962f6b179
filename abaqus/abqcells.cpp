// *ELEMENT sections.
#include "abaqus/abqcolumns.h"
#include "abaqus/abqdeck.h"
#include "abaqus/abqline.h"
#include "abaqus/abqrecord.h"
#include "abaqus/abqrows.h"

#include "store/sys.h"

#include <cstdio>
#include <cstring>

namespace {

constexpr const char *kRefused[] = {"FILE", "INPUT", "OFFSET", "SOLIDELEMENTNUMBERING"};

struct ElementType {
    const char *name; // value of TYPE
    int type;         // type code of the store
    int nNodes;
};

// clang-format off
constexpr ElementType kElementTypes[] = {
    {"C3D4",   kTET4,  4},
    {"C3D10",  kTETX, 10},
    {"CPE3",   kTRI3,  3},
    {"CPS3",   kTRI3,  3},
    {"STRI3",  kTRI3,  3},
    {"CPE6",   kTRI6,  6},
    {"CPS6",   kTRI6,  6},
    {"STRI65", kTRI6,  6},
};
// clang-format on

constexpr int kMostNumbers = kMostColumns; // element number and up to ten nodes

const ElementType *FindElementType(const char *name) {
    for (const ElementType &known : kElementTypes) {
        if (std::strcmp(known.name, name) == 0) {
            return &known;
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

// The type named on the keyword line, or null after reporting that there is none such.
const ElementType *ParseType(char *name) {
    ABQParseLabel(name, "TYPE");
    const ElementType *type = FindElementType(name);
    if (type == nullptr) {
        ReportUnrecognized(name);
    }
    return type;
}

} // namespace

void ReadCells(LineSource *stream, ABQCellBlock **list) {
    auto *block = ABQNewRecord<ABQCellBlock>();
    block->nLine = ABQLineNumber();
    if (ABQParseLabel(block->name, "ELSET") == 0) {
        std::printf("  Warning> Cannot find ELSET name for Cells.\n");
    }
    std::printf("  Reading Elements %s ... ", block->name);
    if (ABQRefuse(stream, kRefused, 4)) {
        allocate(block, 0);
        return;
    }
    char typeName[kNameBuffer];
    const ElementType *type = ParseType(typeName);
    if (type == nullptr) {
        ABQNextLine(stream);
        allocate(block, 0);
        return;
    }
    ABQColumns rows{};
    ABQAddColumns(&rows, 1 + type->nNodes, sizeof(int));
    ReadRows(stream, type->nNodes, &rows);
    std::printf("done with %d %ss.\n", rows.count, typeName);
    block->type = type->type;
    block->tag = -1;
    block->nNodes = type->nNodes;
    block->count = block->capacity = rows.count;
    block->i1GID = static_cast<int *>(ABQTakeColumn(&rows, 0));
    block->i2Conn = ABQTakeTable(&rows, 1, type->nNodes);
    ABQPush(list, block);
}
