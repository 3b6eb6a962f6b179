// Finding a deck number's position in a sorted list.
#include "support/lookup.h"

#include "support/frame.h"

namespace {

// The halving shared by the two plain look-ups. Where numbers repeat, what it leaves is part of the result:
// for [3, 3, 3] and 3 it is position 1.
int HalvedPosition(int n, const int *list, int id) {
    int low = 0;
    int high = n - 1;
    while (high - low > 1) {
        const int middle = low + (high - low) / 2;
        if (list[middle] < id) {
            low = middle;
        } else {
            high = middle;
        }
    }
    if (high < 0) {
        return -1;
    }
    if (list[high] == id) {
        return high;
    }
    return list[low] == id ? low : -1;
}

unsigned Distance(const IDIndex *index, int id) {
    return static_cast<unsigned>(id) - index->first;
}

bool IsStrictlyAscending(int n, const int *list) {
    for (int p = 1; p < n; ++p) {
        if (list[p - 1] >= list[p]) {
            return false;
        }
    }
    return true;
}

void BuildParts(IDIndex *index) {
    const unsigned span = Distance(index, index->list[index->n - 1]);
    while ((span >> index->shift) >= static_cast<unsigned>(index->n)) {
        ++index->shift;
    }
    index->nParts = static_cast<int>(span >> index->shift) + 1;
    index->partStart = NewArray<int>(index->nParts + 1);
    int part = 0;
    for (int p = 0; p < index->n; ++p) {
        const int own = static_cast<int>(Distance(index, index->list[p]) >> index->shift);
        while (part <= own) {
            index->partStart[part++] = p;
        }
    }
    index->partStart[index->nParts] = index->n;
}

} // namespace

int FindIDPositionInTheList(int n, const int *list, int id) {
    return HalvedPosition(n, list, id);
}

int GetLIDByGID(int gid, int n, const int *gids, const int *lids) {
    const int position = HalvedPosition(n, gids, gid);
    return position == -1 ? -1 : lids[position];
}

void BuildIDIndex(IDIndex *index, int n, const int *list) {
    *index = IDIndex{};
    index->n = n;
    index->list = list;
    if (n < 1 || !IsStrictlyAscending(n, list)) {
        index->kind = kIDPlain;
        return;
    }
    index->first = static_cast<unsigned>(list[0]);
    if (Distance(index, list[n - 1]) == static_cast<unsigned>(n) - 1) {
        index->kind = kIDConsecutive;
        return;
    }
    index->kind = kIDParted;
    BuildParts(index);
}

void ReleaseIDIndex(IDIndex *index) {
    index->partStart = AllocINT1D(index->partStart, 0);
}

int FindIDInParts(const IDIndex *index, int id) {
    if (index->kind == kIDPlain) {
        return FindIDPositionInTheList(index->n, index->list, id);
    }
    const unsigned part = Distance(index, id) >> index->shift;
    if (id < index->list[0] || part >= static_cast<unsigned>(index->nParts)) {
        return -1;
    }
    int low = index->partStart[part];
    int high = index->partStart[part + 1];
    while (low < high) {
        const int middle = low + (high - low) / 2;
        if (index->list[middle] < id) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return low < index->n && index->list[low] == id ? low : -1;
}
