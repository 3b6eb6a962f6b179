// The columns in which a section's rows are collected while its length is unknown.
//
// They grow in the store's large steps and are cut to length at the section's end. Decks have anything from one
// section with millions of rows to thousands of sections with a few: a short section's columns are copied to
// exact ones, and the large ones are kept aside for the next section.
#ifndef KIVOM_ABAQUS_ABQCOLUMNS_H
#define KIVOM_ABAQUS_ABQCOLUMNS_H

#include "store/families.h"

// An element's number and its nodes: the widest row there is.
constexpr int kMostColumns = 1 + kMostNodes;

struct ABQColumn {
    char *data;
    int entry; // bytes of an entry
};

struct ABQColumns {
    int nColumns;
    int count;    // rows
    int capacity; // rows that fit
    ABQColumn columns[kMostColumns];
};

// Makes empty columns: `count` of them, from position nColumns on, with entries of `entry` bytes.
void ABQAddColumns(ABQColumns *rows, int count, int entry);

void ABQGrowColumns(ABQColumns *rows);

// Reserves the next row and returns its position. The caller writes every column of it.
inline int ABQAddRow(ABQColumns *rows) {
    const int row = rows->count++;
    if (rows->count >= rows->capacity) { // one row early: a free one is always left
        ABQGrowColumns(rows);
    }
    return row;
}

inline int *ABQIntColumn(ABQColumns *rows, int k) {
    return reinterpret_cast<int *>(rows->columns[k].data);
}

inline double *ABQDoubleColumn(ABQColumns *rows, int k) {
    return reinterpret_cast<double *>(rows->columns[k].data);
}

// Hands out column k, cut to the rows it has; null where there are none. The caller owns it.
void *ABQTakeColumn(ABQColumns *rows, int k);

// Hands out the columns first, ..., first + count - 1 as a table [count][rows]; null where there are no rows.
int **ABQTakeTable(ABQColumns *rows, int first, int count);

// Releases the columns that are kept aside between sections.
void ABQReleaseSpareColumns();

#endif
