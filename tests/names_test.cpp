// Comparing names.
#include "tests/support/plain/plain.h"

#include "support/frame.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

TEST(Names, AreComparedWithoutBlanksButNotAlikeAtTheirEnds) {
    EXPECT_EQ(AreNamesSame("SET 1", "SET1"), 1);
    EXPECT_EQ(AreNamesSame("SET1", "SET 1"), 1);
    EXPECT_EQ(AreNamesSame("SET1 ", "SET1"), 1);
    EXPECT_EQ(AreNamesSame("SET1", "SET1 "), 0);
    EXPECT_EQ(AreNamesSame(" SET1", " SET1"), 1);
    EXPECT_EQ(AreNamesSame("", ""), 1);
    EXPECT_EQ(AreNamesSame("  ", ""), 1);
    EXPECT_EQ(AreNamesSame("", " "), 0);
    EXPECT_EQ(AreNamesSame("  ", " "), 0);
    EXPECT_EQ(AreNamesSame("Set1", "SET1"), 0);
    EXPECT_EQ(AreNamesSame("SET1", "SET12"), 0);
    EXPECT_EQ(AreNamesSame("SET12", "SET1"), 0);
    EXPECT_EQ(AreNamesSame("A\tB", "AB"), 0); // a tab is no blank
}

TEST(Names, BeginningsAreComparedWithoutBlanks) {
    EXPECT_EQ(AreNamesSamn("SET1", "SET2", 3), 1);
    EXPECT_EQ(AreNamesSamn("SET1", "SET2", 4), 0);
    EXPECT_EQ(AreNamesSamn("S E T", "SE TX", 3), 1);
    EXPECT_EQ(AreNamesSamn("SE", "SET", 3), 0); // too few characters
    EXPECT_EQ(AreNamesSamn("SET", "SE", 3), 0);
    EXPECT_EQ(AreNamesSamn("", "SET", 0), 1);
    EXPECT_EQ(AreNamesSamn("", "", 1), 0);
    EXPECT_EQ(AreNamesSamn("  ", "SET", 0), 1);
    EXPECT_EQ(AreNamesSamn("SET", "SET", 0), 0); // the count passes 0 at once
}

TEST(Names, AreFoundAsPlainText) {
    EXPECT_EQ(Find("*NODE,NSET=A", "NSET"), 1);
    EXPECT_EQ(Find("NSET", "NSET"), 1);
    EXPECT_EQ(Find("AAB", "AB"), 1);
    EXPECT_EQ(Find("NSE", "NSET"), 0);
    EXPECT_EQ(Find("nset", "NSET"), 0);
    EXPECT_EQ(Find("N SET", "NSET"), 0);
    EXPECT_EQ(Find("ABC", ""), 0);
    EXPECT_EQ(Find("", ""), 0);
    EXPECT_EQ(Find("", "A"), 0);
}

int FindText(const std::string &text, const std::string &pattern) {
    return !pattern.empty() && text.find(pattern) != std::string::npos ? 1 : 0;
}

TEST(Names, FollowTheRulesForAllShortNames) {
    std::vector<std::string> names{""};
    for (std::size_t i = 0; names[i].size() < 5; ++i) { // all of up to five characters
        for (const char c : {'A', 'B', ' '}) {
            names.push_back(names[i] + c);
        }
    }
    for (const std::string &a : names) {
        for (const std::string &b : names) {
            ASSERT_EQ(AreNamesSame(a.c_str(), b.c_str()) == 1, PlainSame(a, b)) << "'" << a << "' '" << b << "'";
            ASSERT_EQ(Find(a.c_str(), b.c_str()), FindText(a, b)) << "'" << a << "' '" << b << "'";
            for (int n = 0; n <= 5; ++n) {
                ASSERT_EQ(AreNamesSamn(a.c_str(), b.c_str(), n) == 1, PlainSamn(a, b, n))
                    << "'" << a << "' '" << b << "' " << n;
            }
        }
    }
}

} // namespace
