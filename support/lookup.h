// A sorted list of deck numbers, prepared for many look-ups.
//
// FindIDPositionInTheList halves its way through the list at every call. Deck numbers are mostly consecutive,
// and then a number's position is its distance from the first. Where they are not, the range of values is cut
// into about as many equal parts as there are numbers, and a part tells where to look; a crowded part is still
// halved. No array is sized by a number, only by the count.
#ifndef KIVOM_SUPPORT_LOOKUP_H
#define KIVOM_SUPPORT_LOOKUP_H

enum IDIndexKind {
    kIDPlain,       // empty, or with repeated numbers: FindIDPositionInTheList decides which of them is meant
    kIDConsecutive, // list[p] is list[0] + p
    kIDParted       // strictly ascending
};

struct IDIndex {
    int n;
    const int *list; // not owned; must stay as it is
    IDIndexKind kind;
    unsigned first; // list[0]
    int shift;      // a part spans 2^shift values
    int nParts;
    int *partStart; // [nParts + 1], owned: position of the first number of each part
};

// Prepares the ascending list. The index is released with ReleaseIDIndex.
void BuildIDIndex(IDIndex *index, int n, const int *list);
void ReleaseIDIndex(IDIndex *index);

// The answer of FindIDPositionInTheList, for any index but a consecutive one.
int FindIDInParts(const IDIndex *index, int id);

// The answer of FindIDPositionInTheList.
inline int FindIDByIndex(const IDIndex *index, int id) {
    if (index->kind == kIDConsecutive) {
        const unsigned distance = static_cast<unsigned>(id) - index->first; // wraps far up for smaller numbers
        return distance < static_cast<unsigned>(index->n) ? static_cast<int>(distance) : -1;
    }
    return FindIDInParts(index, id);
}

#endif
