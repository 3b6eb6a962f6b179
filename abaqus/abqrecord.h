// Making and listing the reader's records.
#ifndef KIVOM_ABAQUS_ABQRECORD_H
#define KIVOM_ABAQUS_ABQRECORD_H

#include "support/frame.h"

// A new record with every field 0, absent or empty.
template <class Record> Record *ABQNewRecord() {
    auto *record = NewArray<Record>(1);
    *record = Record{};
    return record;
}

// Makes the record the first of its list.
template <class Record> void ABQPush(Record **list, Record *record) {
    record->next = *list;
    *list = record;
}

// Number of records in the list.
template <class Record> int ABQListLength(const Record *list) {
    int n = 0;
    for (; list != nullptr; list = list->next) {
        ++n;
    }
    return n;
}

// The records of the list as an array in list order, [ABQListLength]; null for an empty list. The caller releases it.
template <class Record> Record **ABQListArray(Record *list) {
    const int n = ABQListLength(list);
    auto **array = NewArray<Record *>(n);
    for (int i = 0; i < n; ++i, list = list->next) {
        array[i] = list;
    }
    return array;
}

#endif
