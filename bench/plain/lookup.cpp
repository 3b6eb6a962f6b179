// Every look-up halves its way through the list.
#include "support/lookup.h"

#include "support/frame.h"

int FindIDPositionInTheList(int n, const int *list, int id) {
    int low = 0;
    int high = n - 1;
    while (high - low > 1) {
        const int middle = (low + high) / 2;
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

int GetLIDByGID(int gid, int n, const int *gids, const int *lids) {
    const int position = FindIDPositionInTheList(n, gids, gid);
    return position == -1 ? -1 : lids[position];
}

void BuildIDIndex(IDIndex *index, int n, const int *list) {
    *index = IDIndex{};
    index->n = n;
    index->list = list;
    index->kind = kIDPlain;
}

void ReleaseIDIndex(IDIndex *) {}

int FindIDInParts(const IDIndex *index, int id) {
    return FindIDPositionInTheList(index->n, index->list, id);
}
