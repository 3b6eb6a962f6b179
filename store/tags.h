// The tags of a list of groups, for looking up many nodes or cells.
#ifndef KIVOM_STORE_TAGS_H
#define KIVOM_STORE_TAGS_H

#include "support/lists.h"

#include <algorithm>

struct SortedTags {
    int n;
    int *tags; // [n], ascending, each once; owned, released with AllocINT1D(tags, 0)
};

// Sorts the tags and drops those that repeat.
inline void SortTags(SortedTags *tags) {
    std::sort(tags->tags, tags->tags + tags->n);
    tags->n = static_cast<int>(std::unique(tags->tags, tags->tags + tags->n) - tags->tags);
}

// The tags of all groups of the list.
template <class Group> SortedTags TagsOfGroups(const Group *groups) {
    SortedTags tags{0, NewArray<int>(ListLength(groups))};
    for (; groups != nullptr; groups = groups->next) {
        tags.tags[tags.n++] = groups->iTag;
    }
    SortTags(&tags);
    return tags;
}

// Position of the tag, or -1.
inline int FindTag(const SortedTags &tags, int tag) {
    const int *end = tags.tags + tags.n;
    const int *found = std::lower_bound(static_cast<const int *>(tags.tags), end, tag);
    return found != end && *found == tag ? static_cast<int>(found - tags.tags) : -1;
}

#endif
