// Making the reader's records.
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

#endif
