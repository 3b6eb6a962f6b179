// Lists of records that are linked by their field `next`.
#ifndef KIVOM_SUPPORT_LISTS_H
#define KIVOM_SUPPORT_LISTS_H

#include "support/frame.h"

// Number of records in the list.
template <class Record> int ListLength(const Record *list) {
    int n = 0;
    for (; list != nullptr; list = list->next) {
        ++n;
    }
    return n;
}

// The records of the list as an array in list order, [ListLength]; null for an empty list. The caller releases it.
template <class Record> Record **ListArray(Record *list) {
    auto **array = NewArray<Record *>(ListLength(list));
    for (int i = 0; list != nullptr; ++i, list = list->next) {
        array[i] = list;
    }
    return array;
}

#endif
