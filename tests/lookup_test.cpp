// Finding numbers in sorted lists.
#include "tests/support/plain/plain.h"

#include "support/frame.h"
#include "support/lookup.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <vector>

namespace {

int Find(const Ints &list, int id) {
    return FindIDPositionInTheList(static_cast<int>(list.size()), list.data(), id);
}

TEST(Lookup, FindsPositionsOrNothing) {
    const Ints list{2, 4, 7, 9};
    EXPECT_EQ(Find(list, 7), 2);
    EXPECT_EQ(Find(list, 2), 0);
    EXPECT_EQ(Find(list, 9), 3);
    EXPECT_EQ(Find(list, 8), -1);
    EXPECT_EQ(Find(list, 1), -1);
    EXPECT_EQ(Find(list, 10), -1);
}

TEST(Lookup, InListsOfNoneAndOne) {
    EXPECT_EQ(Find({}, 1), -1);
    EXPECT_EQ(Find({5}, 5), 0);
    EXPECT_EQ(Find({5}, 4), -1);
    EXPECT_EQ(Find({5}, 6), -1);
}

TEST(Lookup, OfARepeatedNumberIsWhatTheHalvingLeaves) {
    EXPECT_EQ(Find({3, 3, 3}, 3), 1);
    EXPECT_EQ(Find({3, 3}, 3), 1);
    EXPECT_EQ(Find({1, 3, 3, 3}, 3), 1);
}

TEST(Lookup, LocalNumbersByTheirGlobalOnes) {
    const int gids[] = {2, 4, 7, 9};
    const int lids[] = {20, 40, -70, 90};
    EXPECT_EQ(GetLIDByGID(2, 4, gids, lids), 20);
    EXPECT_EQ(GetLIDByGID(7, 4, gids, lids), -70);
    EXPECT_EQ(GetLIDByGID(8, 4, gids, lids), -1);
    EXPECT_EQ(GetLIDByGID(2, 0, gids, lids), -1);
    const int same[] = {3, 3, 3};
    EXPECT_EQ(GetLIDByGID(3, 3, same, lids), 40);
}

// Every number near one of the list, and the extremes.
void ExpectIndexAgrees(const Ints &list, IDIndexKind kind) {
    IDIndex index;
    BuildIDIndex(&index, static_cast<int>(list.size()), list.data());
    EXPECT_EQ(index.kind, kind);
    Ints asked{INT_MIN, INT_MIN + 1, -1, 0, 1, INT_MAX - 1, INT_MAX};
    for (const int number : list) {
        for (const long long near : {-2LL, -1LL, 0LL, 1LL, 2LL}) {
            const long long id = number + near;
            asked.push_back(static_cast<int>(std::clamp<long long>(id, INT_MIN, INT_MAX)));
        }
    }
    for (const int id : asked) {
        ASSERT_EQ(Find(list, id), PlainFind(list, id)) << id;
        ASSERT_EQ(FindIDByIndex(&index, id), PlainFind(list, id)) << id;
    }
    ReleaseIDIndex(&index);
}

TEST(LookupIndex, OfPickedLists) {
    ExpectIndexAgrees({}, kIDPlain);
    ExpectIndexAgrees({7}, kIDConsecutive);
    ExpectIndexAgrees({INT_MIN}, kIDConsecutive);
    ExpectIndexAgrees({INT_MAX}, kIDConsecutive);
    ExpectIndexAgrees({INT_MAX - 2, INT_MAX - 1, INT_MAX}, kIDConsecutive);
    ExpectIndexAgrees({INT_MIN, INT_MIN + 1}, kIDConsecutive);
    ExpectIndexAgrees({-1, 0, 1}, kIDConsecutive);
    ExpectIndexAgrees({INT_MIN, INT_MAX}, kIDParted);
    ExpectIndexAgrees({INT_MIN, 0, INT_MAX}, kIDParted);
    ExpectIndexAgrees({INT_MIN, INT_MIN + 1, INT_MAX - 1, INT_MAX}, kIDParted);
    ExpectIndexAgrees({1, 2, 3, 5}, kIDParted);
    ExpectIndexAgrees({3, 3, 3}, kIDPlain);
    ExpectIndexAgrees({1, 2, 2, 4}, kIDPlain);
}

TEST(LookupIndex, OfClusteredNumbers) {
    Ints clusters;
    for (const int start : {-2000000000, -5, 1000, 1000000, 2000000000}) {
        for (int i = 0; i < 300; ++i) {
            clusters.push_back(start + 3 * i);
        }
    }
    ExpectIndexAgrees(clusters, kIDParted);
}

} // namespace
