// Growing columns, and the spare ones kept between sections.
#include "abaqus/abqcolumns.h"

#include "support/frame.h"

#include <climits>
#include <cstring>

namespace {

// Up to this many rows a section counts as short: copying them costs less than giving the pages of a large
// column back and asking for new ones.
constexpr int kShortSection = 4096;

// Spare columns all have the first capacity. A row has at most kMostColumns of them; entries of other sizes
// come to a few more.
constexpr int kMostSpares = 2 * kMostColumns;
ABQColumn spares[kMostSpares];

std::uint64_t ColumnBytes(int rows, int entry) {
    return static_cast<std::uint64_t>(rows) * static_cast<std::uint64_t>(entry);
}

// A spare column for these entries, or null.
char *TakeSpare(int entry) {
    for (ABQColumn &spare : spares) {
        if (spare.data != nullptr && spare.entry == entry) {
            char *data = spare.data;
            spare.data = nullptr;
            return data;
        }
    }
    return nullptr;
}

void KeepSpare(char *data, int entry) {
    for (ABQColumn &spare : spares) {
        if (spare.data == nullptr) {
            spare = {data, entry};
            return;
        }
    }
    allocate(data, 0);
}

char *CutColumn(char *data, int rows, int capacity, int entry) {
    if (rows > kShortSection || capacity != NextCapacity(0)) {
        return static_cast<char *>(allocate(data, ColumnBytes(rows, entry)));
    }
    auto *exact = static_cast<char *>(allocate(nullptr, ColumnBytes(rows, entry)));
    if (exact != nullptr) {
        std::memcpy(exact, data, ColumnBytes(rows, entry));
    }
    KeepSpare(data, entry);
    return exact;
}

} // namespace

void ABQAddColumns(ABQColumns *rows, int count, int entry) {
    for (int i = 0; i < count; ++i) {
        rows->columns[rows->nColumns++] = {nullptr, entry};
    }
}

void ABQGrowColumns(ABQColumns *rows) {
    if (rows->capacity == INT_MAX) {
        EndForTooMany();
    }
    const bool first = rows->capacity == 0;
    rows->capacity = NextCapacity(rows->capacity);
    for (int k = 0; k < rows->nColumns; ++k) {
        ABQColumn &column = rows->columns[k];
        char *spare = first ? TakeSpare(column.entry) : nullptr;
        column.data = spare != nullptr
                          ? spare
                          : static_cast<char *>(allocate(column.data, ColumnBytes(rows->capacity, column.entry)));
        RequireBlock(column.data);
    }
}

void *ABQTakeColumn(ABQColumns *rows, int k) {
    if (rows->count == 0) {
        return nullptr;
    }
    ABQColumn &column = rows->columns[k];
    char *data = CutColumn(column.data, rows->count, rows->capacity, column.entry);
    RequireBlock(data);
    column.data = nullptr;
    return data;
}

int **ABQTakeTable(ABQColumns *rows, int first, int count) {
    if (rows->count == 0) {
        return nullptr;
    }
    auto **table = static_cast<int **>(allocate(nullptr, static_cast<std::uint64_t>(count) * sizeof(int *)));
    RequireBlock(table);
    for (int k = 0; k < count; ++k) {
        table[k] = static_cast<int *>(ABQTakeColumn(rows, first + k));
    }
    return table;
}

void ABQReleaseSpareColumns() {
    for (ABQColumn &spare : spares) {
        spare.data = static_cast<char *>(allocate(spare.data, 0));
    }
}
