// *NODE sections.
#include "abaqus/RefusedWords.h"
#include "abaqus/abqcolumns.h"
#include "abaqus/abqdeck.h"
#include "abaqus/abqline.h"
#include "abaqus/abqrecord.h"
#include "abaqus/abqrows.h"

#include <cstdio>

namespace {

// Columns of a section: number, x, y, z.
enum { kGID, kX, kY, kZ };

// The node on the line in hand. What is missing is reported and 0; two coordinates make a 2-D node.
void ScanNode(int *number, double *x, double *y, double *z) {
    char *cursor = ABQLine();
    if (NextINT(number, &cursor, ',') == 0) {
        std::printf("\n  Error> needed nodal id.\n");
    }
    if (NextDBL(x, &cursor, ',') == 0) {
        std::printf("\n  Error> needed nodal x-coordinate.\n");
    }
    if (NextDBL(y, &cursor, ',') == 0) {
        std::printf("\n  Error> needed nodal y-coordinate.\n");
    }
    NextDBL(z, &cursor, ',');
}

// The next row of the section; false at its end, with the line behind it in hand.
bool NextNode(LineSource *stream, int *number, double *x, double *y, double *z) {
    if (TakeNodeRow(stream, number, x, y, z)) {
        return true;
    }
    if (!ABQNextLine(stream) || ABQAtKeyword()) {
        return false;
    }
    ABQLinkContLines(stream);
    ScanNode(number, x, y, z);
    return true;
}

void ReadRows(LineSource *stream, ABQColumns *rows) {
    int number;
    double x;
    double y;
    double z;
    while (NextNode(stream, &number, &x, &y, &z)) {
        const int row = ABQAddRow(rows);
        ABQIntColumn(rows, kGID)[row] = number;
        ABQDoubleColumn(rows, kX)[row] = x;
        ABQDoubleColumn(rows, kY)[row] = y;
        ABQDoubleColumn(rows, kZ)[row] = z;
    }
}

} // namespace

void ReadNodes(LineSource *stream, ABQNodeBlock **list) {
    auto *block = ABQNewRecord<ABQNodeBlock>();
    block->nLine = ABQLineNumber();
    ABQParseLabel(block->name, "NSET");
    std::printf("  Reading Nodes %s ... ", block->name);
    if (ABQRefuse(stream, kRefusedNodes)) {
        allocate(block, 0);
        return;
    }
    ABQColumns rows{};
    ABQAddColumns(&rows, 1, sizeof(int));
    ABQAddColumns(&rows, 3, sizeof(double));
    ReadRows(stream, &rows);
    std::printf("done with %d nodes.\n", rows.count);
    block->count = block->capacity = rows.count;
    block->i1GID = static_cast<int *>(ABQTakeColumn(&rows, kGID));
    block->d1X = static_cast<double *>(ABQTakeColumn(&rows, kX));
    block->d1Y = static_cast<double *>(ABQTakeColumn(&rows, kY));
    block->d1Z = static_cast<double *>(ABQTakeColumn(&rows, kZ));
    ABQPush(list, block);
}
