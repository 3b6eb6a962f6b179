// The table of findings and the catalogue of mistakes (findings/catalogue.txt), each entry proved by a run of the
// translator.
#include "account/check.h"
#include "account/kinds.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

using account::CheckDeck;
using account::Finding;
using account::KindOf;
using account::Report;

std::string ReadFile(const fs::path &path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

std::vector<std::string> Lines(const std::string &text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

// A folder for one deck and one run of the translator.
class Workshop {
  public:
    explicit Workshop(const std::string &name)
        : folder_(fs::temp_directory_path() / ("kivom_findings_" + name + std::to_string(getpid()))) {
        fs::remove_all(folder_);
        fs::create_directories(folder_);
    }
    ~Workshop() {
        fs::remove_all(folder_);
    }

    std::string Write(const std::string &file, const std::string &text) const {
        std::ofstream(folder_ / file, std::ios::binary) << text;
        return (folder_ / file).string();
    }

    // Translates deck.inp of the folder: the log.
    std::string Translate() const {
        const std::string command = "cd '" + folder_.string() + "' && '" KIVOM_PROGRAM "' deck.inp >log 2>&1";
        EXPECT_EQ(std::system(command.c_str()), 0);
        return ReadFile(folder_ / "log");
    }

    std::string MeshFile() const {
        return ReadFile(folder_ / "mesh.input");
    }

  private:
    fs::path folder_;
};

// "line level code" of each finding of the deck itself.
std::vector<std::string> Told(const Report &report) {
    std::vector<std::string> told;
    for (const Finding &finding : report.findings) {
        const account::FindingKind &kind = KindOf(finding.code);
        told.push_back(std::to_string(finding.place.line) + " " + account::LevelWord(kind.level) + " " + kind.word +
                       ": " + account::TextOf(finding));
    }
    return told;
}

std::string Joined(const std::vector<std::string> &words) {
    std::string text;
    for (const std::string &word : words) {
        text += word + "\n";
    }
    return text;
}

// The table -------------------------------------------------------------------------------------------------------

TEST(Findings, TableIsInOrderAndItsWordsAreUnique) {
    std::set<std::string> words;
    for (int i = 0; i < account::kCodes; ++i) {
        EXPECT_EQ(static_cast<int>(account::kKinds[i].code), i) << account::kKinds[i].word;
        words.insert(account::kKinds[i].word);
    }
    EXPECT_EQ(static_cast<int>(words.size()), account::kCodes);
}

class Examples : public testing::TestWithParam<int> {};

TEST_P(Examples, CausesItsFindingAndNoOther) {
    const account::FindingKind &kind = account::kKinds[GetParam()];
    const Workshop workshop("example_" + std::string(kind.word));
    const Report report = CheckDeck(workshop.Write("example.inp", kind.example));
    EXPECT_FALSE(report.findings.empty());
    for (const Finding &finding : report.findings) {
        EXPECT_STREQ(KindOf(finding.code).word, kind.word) << Joined(Told(report));
    }
}

TEST(Findings, OfRowsBeyondAThousandAreCountedWithTheLast) {
    std::string deck = "*Node\n";
    for (int i = 1; i <= 1200; ++i) {
        deck += std::to_string(i) + ", " + std::to_string(i) + ".D1, " + std::to_string(i % 2) + ".\n";
    }
    const Workshop workshop("thousand");
    const Report report = CheckDeck(workshop.Write("deck.inp", deck + "*Element, type=CPS3, elset=A\n1, 1, 2, 3\n"));
    int nTold = 0;
    long long nRows = 0;
    for (const Finding &finding : report.findings) {
        if (finding.code == account::Code::dExponent) {
            ++nTold;
            nRows += finding.count;
        }
    }
    EXPECT_EQ(nTold, 1000);
    EXPECT_EQ(nRows, 1200);
}

TEST(Summaries, NameAllTypesOfAGroup) {
    const Workshop workshop("types");
    const Report report = CheckDeck(workshop.Write(
        "deck.inp", "*Node\n1, 0., 0.\n2, 2., 0.\n3, 0., 2.\n4, 1., 0.\n5, 1., 1.\n6, 0., 1.\n7, 2., 2.\n"
                    "*Element, type=CPS6, elset=A\n1, 1, 2, 3, 4, 5, 6\n*Element, type=CPS3, elset=A\n2, 2, 7, 3\n"));
    ASSERT_EQ(report.meaning.cellGroups.size(), 1u);
    EXPECT_EQ(report.meaning.cellGroups[0].type, "CPS6+CPS3");
    EXPECT_EQ(report.meaning.cellGroups[0].count, 2);
}

std::vector<int> CodesWithExample() {
    std::vector<int> codes;
    for (int i = 0; i < account::kCodes; ++i) {
        if (account::kKinds[i].example != nullptr) {
            codes.push_back(i);
        }
    }
    return codes;
}

std::string NameOf(std::string word) {
    std::replace_if(
        word.begin(), word.end(), [](char c) { return c == '-' || c == '.'; }, '_');
    return word;
}

INSTANTIATE_TEST_SUITE_P(All, Examples, testing::ValuesIn(CodesWithExample()),
                         [](const auto &param) { return NameOf(account::kKinds[param.param].word); });

// The catalogue ---------------------------------------------------------------------------------------------------

struct Entry {
    std::string name;
    std::vector<std::string> decks; // empty: all
    std::vector<std::string> edits; // lines that begin with "-" or "+"
    std::string proof;
};

std::vector<std::string> Families() {
    std::vector<std::string> families;
    for (const auto &file : fs::directory_iterator(KIVOM_FINDINGS)) {
        if (file.path().extension() == ".inp") {
            families.push_back(file.path().stem().string());
        }
    }
    std::sort(families.begin(), families.end());
    return families;
}

std::vector<Entry> Catalogue() {
    std::vector<Entry> entries;
    for (const std::string &line : Lines(ReadFile(fs::path(KIVOM_FINDINGS) / "catalogue.txt"))) {
        if (line.compare(0, 3, "## ") == 0) {
            entries.push_back({line.substr(3), {}, {}, ""});
        } else if (!entries.empty() && (line[0] == '-' || line[0] == '+')) {
            entries.back().edits.push_back(line);
        } else if (!entries.empty() && line.compare(0, 6, "proof ") == 0) {
            entries.back().proof = line.substr(6);
        } else if (!entries.empty() && line.compare(0, 3, "on ") == 0) {
            std::istringstream words(line.substr(3));
            for (std::string deck; words >> deck;) {
                entries.back().decks.push_back(deck);
            }
        }
    }
    return entries;
}

// A line of the deck that is being edited, and what is to be reported on it.
struct DeckLine {
    std::string text;
    std::string expected;
};

// The line that a "-" line of the catalogue means: the text itself, or a row by number.
std::size_t FindLine(const std::vector<DeckLine> &deck, const std::string &wanted) {
    if (wanted[0] != '@') {
        for (std::size_t i = 0; i < deck.size(); ++i) {
            if (deck[i].text == wanted) {
                return i;
            }
        }
        return deck.size();
    }
    const std::string section = wanted.substr(1, wanted.find(' ') - 1) == "node" ? "*Node" : "*Element";
    const std::string row = wanted.substr(wanted.find(' ') + 1) + ",";
    bool inside = false;
    for (std::size_t i = 0; i < deck.size(); ++i) {
        inside = deck[i].text[0] == '*' ? deck[i].text.compare(0, section.size(), section) == 0 : inside;
        if (inside && deck[i].text.compare(0, row.size(), row) == 0) {
            return i;
        }
    }
    return deck.size();
}

// Applies an entry's edits: a run of "-" lines goes, the "+" lines behind it come in their place.
std::vector<DeckLine> Edited(const std::string &clean, const Entry &entry) {
    std::vector<DeckLine> deck;
    for (const std::string &line : Lines(clean)) {
        deck.push_back({line, ""});
    }
    std::size_t at = deck.size();
    std::string taken;
    for (const std::string &edit : entry.edits) {
        if (edit[0] == '-') {
            const std::string wanted = edit.substr(edit[1] == ' ' ? 2 : 1);
            at = FindLine(deck, wanted);
            if (at == deck.size()) {
                ADD_FAILURE() << entry.name << ": the deck has no line " << wanted;
                return deck;
            }
            taken = deck[at].text;
            deck.erase(deck.begin() + static_cast<std::ptrdiff_t>(at));
            continue;
        }
        const std::size_t mark = edit.find("    <- ");
        std::string text = edit.substr(2, mark == std::string::npos ? mark : mark - 2);
        if (const std::size_t sign = text.find('@'); sign != std::string::npos) {
            text.replace(sign, 1, taken);
        }
        const std::string expected = mark == std::string::npos ? "" : edit.substr(mark + 7);
        deck.insert(deck.begin() + static_cast<std::ptrdiff_t>(at++), {text, expected});
    }
    return deck;
}

// What the entry claims of the translator's run.
void Prove(const Entry &entry, const Workshop &workshop, const std::string &cleanMesh) {
    const std::string log = workshop.Translate();
    const std::string mesh = workshop.MeshFile();
    const std::string kind = entry.proof.substr(0, entry.proof.find(' '));
    const std::string text = kind.size() < entry.proof.size() ? entry.proof.substr(kind.size() + 1) : "";
    if (kind == "mesh") {
        EXPECT_NE(mesh, cleanMesh);
    } else if (kind == "same") {
        EXPECT_EQ(mesh, cleanMesh);
    } else if (kind == "log") {
        EXPECT_NE(log.find(text), std::string::npos) << log;
    } else if (kind == "lacks") {
        EXPECT_EQ(mesh.find(text), std::string::npos) << mesh;
    } else {
        EXPECT_EQ(kind, "holds");
        EXPECT_NE(mesh.find(text), std::string::npos) << mesh;
    }
}

class Catalogued : public testing::TestWithParam<std::string> {};

TEST_P(Catalogued, CleanDeckReportsNothing) {
    const Workshop workshop(GetParam() + "_clean");
    const Report report =
        CheckDeck(workshop.Write("deck.inp", ReadFile(fs::path(KIVOM_FINDINGS) / (GetParam() + ".inp"))));
    EXPECT_EQ(Joined(Told(report)), "");
    EXPECT_TRUE(report.readable);
}

TEST_P(Catalogued, EachMistakeIsToldOnItsLineAndNothingElse) {
    const std::string clean = ReadFile(fs::path(KIVOM_FINDINGS) / (GetParam() + ".inp"));
    const bool returns = clean.find('\r') != std::string::npos;
    std::string plain = clean;
    plain.erase(std::remove(plain.begin(), plain.end(), '\r'), plain.end());
    const Workshop workshop(GetParam());
    workshop.Write("deck.inp", clean);
    workshop.Translate();
    const std::string cleanMesh = workshop.MeshFile();
    int nEntries = 0;
    for (const Entry &entry : Catalogue()) {
        if (!entry.decks.empty() && std::count(entry.decks.begin(), entry.decks.end(), GetParam()) == 0) {
            continue;
        }
        SCOPED_TRACE(GetParam() + ": " + entry.name);
        ++nEntries;
        std::string text;
        std::vector<std::string> expected;
        int line = 0;
        for (const DeckLine &deckLine : Edited(plain, entry)) {
            ++line;
            text += deckLine.text + (returns ? "\r\n" : "\n");
            if (!deckLine.expected.empty()) {
                expected.push_back(std::to_string(line) + " " + deckLine.expected);
            }
        }
        const Report report = CheckDeck(workshop.Write("deck.inp", text));
        std::vector<std::string> told = Told(report);
        for (std::string &words : told) {
            words.erase(words.find(": "));
        }
        EXPECT_EQ(Joined(told), Joined(expected)) << Joined(Told(report)) << text;
        Prove(entry, workshop, cleanMesh);
    }
    EXPECT_GE(nEntries, 40);
}

INSTANTIATE_TEST_SUITE_P(Decks, Catalogued, testing::ValuesIn(Families()),
                         [](const auto &param) { return NameOf(param.param); });

TEST(Catalogue, HasNinetyEntriesAndMore) {
    EXPECT_GE(Catalogue().size(), 90u);
}

} // namespace
