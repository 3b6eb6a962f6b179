// Whole decks and what is told of them (findings/decks/expected.txt): findings in their order, and both readings in
// figures.
#include "account/check.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <string>
#include <vector>

namespace {

using account::Count;
using account::Report;
using account::Summary;

const std::string kFolder = std::string(KIVOM_FINDINGS) + "/decks/";

struct Entry {
    std::string deck;
    std::vector<std::string> findings;
    std::vector<std::string> meaning, reading; // clauses
    bool readable = true;
};

// In the names of tests.
void PrintTo(const Entry &entry, std::ostream *out) {
    *out << entry.deck;
}

std::vector<std::string> Clauses(const std::string &text) {
    std::vector<std::string> clauses;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find("; ", at), text.size());
        clauses.push_back(text.substr(at, end - at));
        at = end + 2;
    }
    return clauses;
}

std::vector<Entry> Entries() {
    std::vector<Entry> entries;
    std::ifstream in(kFolder + "expected.txt");
    for (std::string line; std::getline(in, line);) {
        const std::string word = line.substr(0, line.find(' '));
        if (word == "##") {
            entries.push_back({line.substr(3), {}, {}, {}});
        } else if (entries.empty() || line.empty()) {
            continue;
        } else if (word == "meaning") {
            entries.back().meaning = Clauses(line.substr(8));
        } else if (line == "reading same") {
            entries.back().reading = entries.back().meaning;
        } else if (word == "reading") {
            entries.back().reading = Clauses(line.substr(8));
        } else if (word == "unreadable") {
            entries.back().readable = false;
        } else {
            entries.back().findings.push_back(line);
        }
    }
    return entries;
}

std::vector<std::string> Told(const Report &report) {
    std::vector<std::string> told;
    for (const account::Finding &finding : report.findings) {
        const account::FindingKind &kind = KindOf(finding.code);
        const std::string path = report.files[static_cast<std::size_t>(std::max(finding.place.file, 0))].path;
        told.push_back((finding.place.file > 0 ? path.substr(path.rfind('/') + 1) + ":" : "") +
                       std::to_string(finding.place.line) + " " + account::LevelWord(kind.level) + " " + kind.word +
                       (finding.count != 1 ? " " + std::to_string(finding.count) : ""));
    }
    return told;
}

std::string Listed(const std::string &kind, std::vector<Count> counts) {
    std::sort(counts.begin(), counts.end(),
              [](const Count &a, const Count &b) { return a.name != b.name ? a.name < b.name : a.count < b.count; });
    std::string text = kind;
    for (const Count &count : counts) {
        text += (text == kind ? " " : ", ") + count.name + " " + std::to_string(count.count);
    }
    return text;
}

// Every clause that is expected is one that the summary makes.
void ExpectClauses(const std::vector<std::string> &clauses, const Summary &summary) {
    const std::map<std::string, std::string> made = {
        {"dimension", "dimension " + std::to_string(summary.dimension)},
        {"nodes", "nodes " + std::to_string(summary.nodes)},
        {"elements", "elements " + std::to_string(summary.elements)},
        {"node_sets", Listed("node_sets", summary.nodeSets)},
        {"element_sets", Listed("element_sets", summary.elementSets)},
        {"surfaces", Listed("surfaces", summary.surfaces)},
        {"cell_groups", Listed("cell_groups", summary.cellGroups)},
    };
    for (const std::string &clause : clauses) {
        EXPECT_EQ(made.at(clause.substr(0, clause.find(' '))), clause);
    }
}

class WholeDecks : public testing::TestWithParam<Entry> {};

TEST_P(WholeDecks, ReportsWhatIsExpected) {
    const Entry &entry = GetParam();
    const Report report = account::CheckDeck(kFolder + entry.deck + ".inp");
    EXPECT_EQ(Told(report), entry.findings);
    EXPECT_EQ(report.readable, entry.readable);
    {
        SCOPED_TRACE("meaning");
        ExpectClauses(entry.meaning, report.meaning);
    }
    SCOPED_TRACE("reading");
    ExpectClauses(entry.reading, report.reading);
}

INSTANTIATE_TEST_SUITE_P(Decks, WholeDecks, testing::ValuesIn(Entries()), [](const auto &param) {
    std::string name = param.param.deck;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
});

TEST(WholeDecks, AreSeventyAndMore) {
    EXPECT_GE(Entries().size(), 70u);
}

} // namespace
