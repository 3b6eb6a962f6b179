// *NSET and *ELSET sections: plain lists of numbers.
#include "abaqus/RefusedWords.h"
#include "abaqus/abqcolumns.h"
#include "abaqus/abqdeck.h"
#include "abaqus/abqline.h"
#include "abaqus/abqrecord.h"
#include "abaqus/abqrows.h"

#include <cstdio>

namespace {

// A line holds at most this many numbers: 5119 characters of one digit and one comma in turn.
constexpr int kMostPerLine = (kLineLength + 1) / 2;

void Append(ABQColumns *rows, int number) {
    const int row = ABQAddRow(rows);
    ABQIntColumn(rows, 0)[row] = number;
}

// Lines are taken one by one: a comma at the end of a line joins nothing here. An empty field ends a line.
void ReadRows(LineSource *stream, ABQColumns *rows) {
    int numbers[kMostPerLine];
    for (;;) {
        const int plain = TakeSetRow(stream, kMostPerLine, numbers);
        for (int i = 0; i < plain; ++i) {
            Append(rows, numbers[i]);
        }
        if (plain >= 0) {
            continue;
        }
        if (!ABQNextLine(stream) || ABQAtKeyword()) {
            return;
        }
        char *cursor = ABQLine();
        int number;
        while (NextINT(&number, &cursor, ',') != 0) {
            Append(rows, number);
        }
    }
}

// `parameter` holds the set's name; `members` is what the log calls its numbers.
template <std::size_t nRefused>
void ReadSet(LineSource *stream, ABQSet **list, const char *parameter, const char *members,
             const char *const (&refused)[nRefused]) {
    auto *set = ABQNewRecord<ABQSet>();
    set->nLine = ABQLineNumber();
    ABQParseLabel(set->name, parameter);
    std::printf("  Reading %s %s ... ", parameter, set->name);
    if (ABQRefuse(stream, refused)) {
        allocate(set, 0);
        return;
    }
    ABQColumns rows{};
    ABQAddColumns(&rows, 1, sizeof(int));
    ReadRows(stream, &rows);
    std::printf("done with %d %s.\n", rows.count, members);
    set->tag = -1;
    set->count = set->capacity = rows.count;
    set->numbers = static_cast<int *>(ABQTakeColumn(&rows, 0));
    ABQPush(list, set);
}

} // namespace

void ReadNodeSets(LineSource *stream, ABQSet **list) {
    ReadSet(stream, list, "NSET", "nodes", kRefusedNodeSet);
}

void ReadCellSets(LineSource *stream, ABQSet **list) {
    ReadSet(stream, list, "ELSET", "cells", kRefusedCellSet);
}
