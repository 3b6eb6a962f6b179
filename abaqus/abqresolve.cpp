// Numbering what was read, and turning sets and surfaces into tags of nodes and faces.
//
// Lists are newest first and numbered from 1 in that order, so the section read last has tag 1. Tags are
// written in list order too, the later ones over the earlier: where sections of the deck compete for a node or a
// face, the one read first wins.
#include "abaqus/abqdeck.h"
#include "abaqus/abqfind.h"

#include "store/families.h"
#include "support/lists.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

template <class Record> void NumberList(Record *list) {
    int tag = 0;
    for (; list != nullptr; list = list->next) {
        list->tag = ++tag;
    }
}

template <class Block> void BuildBlockFinder(ABQFinder *finder, Block *const *blocks, int nBlocks) {
    auto **columns = NewArray<const int *>(nBlocks);
    auto *counts = NewArray<int>(nBlocks);
    for (int i = 0; i < nBlocks; ++i) {
        columns[i] = blocks[i]->i1GID;
        counts[i] = blocks[i]->count;
    }
    ABQBuildFinder(finder, nBlocks, columns, counts);
    allocate(columns, 0);
    allocate(counts, 0);
}

void ClearNodeTags(ABQNodeBlock *blocks) {
    for (; blocks != nullptr; blocks = blocks->next) {
        blocks->i1Tag = NewArray<int>(blocks->count);
        std::fill_n(blocks->i1Tag, blocks->count, 0);
    }
}

// Results of applying an element set with one face row: how many of its elements were found but have no such
// face. Each of them is reported anew whenever a surface names set and row again.
constexpr int kNotApplied = -1;
constexpr int kRowKinds = kMostFaces + 1; // rows that an element can have, and all others, which no element has

struct AppliedSet {
    int misses[kRowKinds];
};

struct FaceTagger {
    ABQFinder elements;
    ABQCellBlock **blocks; // in list order
    ABQSet **sets;         // [nSets] sorted by name, in list order where names are equal
    int nSets;
    AppliedSet *applied; // [nSets] likewise
};

bool HasSmallerName(const ABQSet *a, const char *name) {
    return std::strcmp(a->name, name) < 0;
}

void SortSetsByName(FaceTagger *tagger, ABQSet *list) {
    tagger->nSets = ListLength(list);
    tagger->sets = ListArray(list);
    // The list position decides among equal names; std::sort keeps no order by itself, and std::stable_sort
    // takes memory of its own.
    for (int i = 0; i < tagger->nSets; ++i) {
        tagger->sets[i]->tag = i;
    }
    std::sort(tagger->sets, tagger->sets + tagger->nSets, [](const ABQSet *a, const ABQSet *b) {
        const int order = std::strcmp(a->name, b->name);
        return order != 0 ? order < 0 : a->tag < b->tag;
    });
    tagger->applied = NewArray<AppliedSet>(tagger->nSets);
    for (int i = 0; i < tagger->nSets; ++i) {
        std::fill_n(tagger->applied[i].misses, kRowKinds, kNotApplied);
    }
}

// Index into tagger->sets of the first set in list order that has the name, or -1. Deck names hold no blanks,
// so names are the same exactly when their bytes are.
int FindSet(const FaceTagger *tagger, const char *name) {
    ABQSet **end = tagger->sets + tagger->nSets;
    ABQSet **found = std::lower_bound(tagger->sets, end, name, HasSmallerName);
    const bool same = found != end && std::strcmp((*found)->name, name) == 0;
    return same ? static_cast<int>(found - tagger->sets) : -1;
}

// The whole number that the entry begins with: "7ABC" is element 7, "ABC" is element 0. False when it lies outside
// 32 bits: no element has such a number.
bool ElementNumber(const char *entry, int *number) {
    const long value = std::strtol(entry, nullptr, 10);
    *number = static_cast<int>(value);
    return value >= INT_MIN && value <= INT_MAX;
}

int *FaceTagRow(ABQCellBlock *block, int row) {
    if (block->i2FaceTag == nullptr) {
        block->i2FaceTag = AllocINT2D(nullptr, ABQNumFaces(block->type), block->count);
        RequireBlock(block->i2FaceTag);
        for (int k = 0; k < ABQNumFaces(block->type); ++k) {
            RequireBlock(block->i2FaceTag[k]);
            std::fill(block->i2FaceTag[k], block->i2FaceTag[k] + block->count, 0);
        }
    }
    return block->i2FaceTag[row];
}

// Gives the element's face the tag, unless a surface further down the list has: those win, and they have been
// here before. 1 when the element exists but has no such face, else 0.
int TagFace(FaceTagger *tagger, int number, int row, int tag) {
    const ABQPlace place = ABQFind(&tagger->elements, number);
    if (place.block == -1) {
        return 0;
    }
    ABQCellBlock *block = tagger->blocks[place.block];
    if (row < 0 || row >= ABQNumFaces(block->type)) {
        return 1;
    }
    int &faceTag = FaceTagRow(block, row)[place.row];
    faceTag = faceTag == 0 ? tag : faceTag;
    return 0;
}

int TagFacesOfSet(FaceTagger *tagger, int set, int row, int tag) {
    const int kind = row >= 0 && row < kMostFaces ? row : kMostFaces;
    int &misses = tagger->applied[set].misses[kind];
    if (misses == kNotApplied) { // a second time would find every face tagged
        misses = 0;
        for (int i = 0; i < tagger->sets[set]->count; ++i) {
            misses += TagFace(tagger, tagger->sets[set]->numbers[i], row, tag);
        }
    }
    return misses;
}

// Number of elements that the entry names and that have no such face.
int TagFacesOfEntry(FaceTagger *tagger, const char *entry, int row, int tag) {
    const int set = FindSet(tagger, entry);
    if (set != -1) {
        return TagFacesOfSet(tagger, set, row, tag);
    }
    int number;
    return ElementNumber(entry, &number) ? TagFace(tagger, number, row, tag) : 0;
}

} // namespace

void ABQNumberRecords() {
    NumberList(ABQDeck()->nodeSets);
    NumberList(ABQDeck()->surfaces);
    NumberList(ABQDeck()->cellBlocks);
}

void ABQTagNodes() {
    ClearNodeTags(ABQDeck()->nodeBlocks);
    ABQNodeBlock **blocks = ListArray(ABQDeck()->nodeBlocks);
    ABQFinder nodes;
    BuildBlockFinder(&nodes, blocks, ListLength(ABQDeck()->nodeBlocks));
    for (const ABQSet *set = ABQDeck()->nodeSets; set != nullptr; set = set->next) {
        for (int i = 0; i < set->count; ++i) {
            const ABQPlace place = ABQFind(&nodes, set->numbers[i]);
            if (place.block != -1) {
                blocks[place.block]->i1Tag[place.row] = set->tag;
            }
        }
    }
    ABQReleaseFinder(&nodes);
    allocate(blocks, 0);
}

// Surfaces in reverse list order, the first tag of a face counting, give what list order with the last tag
// counting gives. This way a set that many entries name is walked through only once for each of its faces.
void ABQ_SetCellFaceTagByGID() {
    if (ABQDeck()->surfaces == nullptr) {
        return;
    }
    FaceTagger tagger{};
    tagger.blocks = ListArray(ABQDeck()->cellBlocks);
    BuildBlockFinder(&tagger.elements, tagger.blocks, ListLength(ABQDeck()->cellBlocks));
    SortSetsByName(&tagger, ABQDeck()->cellSets);
    const int nSurfaces = ListLength(ABQDeck()->surfaces);
    ABQSurface **surfaces = ListArray(ABQDeck()->surfaces);
    for (int s = nSurfaces - 1; s >= 0; --s) {
        const char *entry = surfaces[s]->entryNames;
        for (int i = 0; i < surfaces[s]->count; ++i, entry += std::strlen(entry) + 1) {
            const int misses = TagFacesOfEntry(&tagger, entry, surfaces[s]->faceRows[i], surfaces[s]->tag);
            for (int m = 0; m < misses; ++m) {
                std::printf("\n  Error> in ABQ_SetCellFaceTagByGID\n");
            }
        }
    }
    allocate(surfaces, 0);
    allocate(tagger.applied, 0);
    allocate(tagger.sets, 0);
    allocate(tagger.blocks, 0);
    ABQReleaseFinder(&tagger.elements);
}
