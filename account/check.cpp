// The steps of an account, and the report that comes of them.
#include "account/check.h"

#include "account/account.h"
#include "account/log.h"
#include "account/summary.h"

#include "abaqus/abqdeck.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <memory>
#include <tuple>
#include <utility>

namespace account {

namespace {

// Nodes that are given several times: whether the translator takes the right ones, for elements and for sets.
class TwiceJudge {
  public:
    explicit TwiceJudge(const Account &account) : account_(account), mesh_(account.mesh) {
        const deck::Mesh &mesh = account.mesh;
        for (std::size_t i = 0; i < mesh.nodeLine.size(); ++i) {
            byLine_.push_back({mesh.nodeLine[i], i});
        }
        std::sort(byLine_.begin(), byLine_.end());
        for (const ABQNodeBlock *block = ABQDeck()->nodeBlocks; block != nullptr; block = block->next) {
            for (int i = 0; i < block->count; ++i) {
                if (block->i1Tag[i] != 0) {
                    tagged_.push_back(block->i1GID[i]);
                }
            }
        }
        std::sort(tagged_.begin(), tagged_.end());
    }

    // The code for that definition, or false when a later one counts.
    bool Judge(const deck::Finding &finding, Code *code) const {
        const int line = finding.place.line;
        const auto found = std::lower_bound(byLine_.begin(), byLine_.end(), std::make_pair(line, std::size_t{0}));
        if (found == byLine_.end() || found->first != line) {
            return false;
        }
        const std::size_t i = found->second;
        const HeldNode node = account_.heldNodes->Find(mesh_.nodeNumber[i]);
        const bool right = node.block != nullptr && node.block->d1X[node.row] == mesh_.x[i] &&
                           node.block->d1Y[node.row] == mesh_.y[i] && node.block->d1Z[node.row] == mesh_.z[i] &&
                           (node.block->i1Tag[node.row] != 0 || !IsTagged(mesh_.nodeNumber[i]));
        *code = !right                                  ? Code::nodeTwice
                : finding.code == deck::Code::nodeTwice ? Code::nodeRedefined
                                                        : Code::nodeRepeated;
        return true;
    }

  private:
    // Whether some row of that number carries the tag of a set.
    bool IsTagged(int number) const {
        return std::binary_search(tagged_.begin(), tagged_.end(), number);
    }

    const Account &account_;
    const deck::Mesh &mesh_;
    std::vector<std::pair<int, std::size_t>> byLine_;
    std::vector<int> tagged_; // numbers of the reader's rows with a tag, ascending
};

// Elements that the reader holds of each part, by file and line of the part's keyword line.
std::map<std::pair<int, int>, long long> CountHeld(const Account &account) {
    std::map<std::pair<int, int>, long long> counts;
    for (const deck::Scope &scope : account.deck.scopes) {
        if (scope.card == -1) {
            continue;
        }
        const deck::Place place = PlaceOf(account, scope.card);
        long long &count = counts[{place.file, place.line}];
        for (const deck::ElementSection &section : scope.elements.sections) {
            const bool held = account.cards[static_cast<std::size_t>(section.card)].state == CardState::held;
            count += held && section.file == 0 ? static_cast<long long>(section.count) : 0;
        }
    }
    return counts;
}

// What the deck itself has to say becomes part of the report. Without a file that it needs, what is missing in the rest
// says nothing.
void TakeDeckFindings(Account *account, const std::vector<deck::Finding> &findings) {
    const auto isTwice = [](const deck::Finding &finding) {
        return finding.code == deck::Code::nodeTwice || finding.code == deck::Code::nodeAgain;
    };
    std::unique_ptr<TwiceJudge> judge;
    if (std::any_of(findings.begin(), findings.end(), isTwice)) {
        judge = std::make_unique<TwiceJudge>(*account);
    }
    const std::map<std::pair<int, int>, long long> held = CountHeld(*account);
    for (const deck::Finding &finding : findings) {
        const bool follows = finding.code == deck::Code::missingNode || finding.code == deck::Code::missingMember ||
                             finding.code == deck::Code::emptyDeck || finding.code == deck::Code::generatorEnds;
        if (!account->deck.readable && follows) {
            continue;
        }
        account->findings.push_back(FromDeck(finding));
        if (isTwice(finding) && !judge->Judge(finding, &account->findings.back().code)) {
            account->findings.pop_back();
        }
        if (finding.code != deck::Code::partUnused) {
            continue;
        }
        const auto found = held.find({finding.place.file, finding.place.line});
        if (found != held.end() && found->second > 0) {
            account->findings.back().code = Code::partHeld;
            account->findings.back().count = found->second;
        }
    }
}

void IndexCells(CellIndex *index) {
    std::vector<const int *> columns;
    std::vector<int> counts;
    for (ABQCellBlock *block = ABQDeck()->cellBlocks; block != nullptr; block = block->next) {
        index->blocks.push_back(block);
        columns.push_back(block->i1GID);
        counts.push_back(block->count);
    }
    ABQBuildFinder(&index->finder, static_cast<int>(columns.size()), columns.data(), counts.data());
    index->built = true;
}

void NoteRepeatedNodes(Account *account) {
    for (const std::vector<deck::Finding> *findings : {&account->deck.findings, &account->mesh.findings}) {
        for (const deck::Finding &finding : *findings) {
            if (finding.code == deck::Code::nodeTwice || finding.code == deck::Code::nodeAgain) {
                account->repeatedNodes.push_back(std::atoi(finding.words[0].c_str()));
            }
        }
    }
    const std::vector<int> &held = account->heldNodes->numbers();
    for (std::size_t i = 1; i < held.size(); ++i) { // a row that is none of a node to the deck may give one again
        if (held[i] == held[i - 1]) {
            account->repeatedNodes.push_back(held[i]);
        }
    }
    std::sort(account->repeatedNodes.begin(), account->repeatedNodes.end());
}

// What a file that is passed over as a whole says of itself counts all the same.
bool IsOfFile(Code code) {
    return code == Code::includeMissing || code == Code::includeCycle || code == Code::includeEncrypted ||
           code == Code::includeElsewhere || code == Code::unreadable;
}

bool IsOfMembers(Code code) {
    return code == Code::missingMember || code == Code::emptySet || code == Code::emptySurface ||
           code == Code::setWithoutGroup || code == Code::unknownLabel;
}

// Sections of elements without any row, in both readings, and nothing told that could be why.
bool HasNoElements(const Account &account) {
    for (const ABQCellBlock *block = ABQDeck()->cellBlocks; block != nullptr; block = block->next) {
        if (block->count > 0) {
            return false;
        }
    }
    return account.mesh.elementNumber.empty() &&
           std::none_of(account.findings.begin(), account.findings.end(),
                        [](const Finding &finding) { return KindOf(finding.code).level == Level::error; });
}

// A deck that has not even a keyword line of elements, or rows of none, and nothing that could hide one.
void AccountEmptyDeck(Account *account) {
    const auto isOfElements = [](const deck::Card &card) {
        return card.keyword == deck::Keyword::element || card.keyword == deck::Keyword::elgen ||
               card.keyword == deck::Keyword::elcopy;
    };
    const std::vector<deck::Card> &cards = account->deck.cards;
    const bool empty = (std::none_of(cards.begin(), cards.end(), isOfElements) || HasNoElements(*account)) &&
                       account->deck.readable && !account->mayBeMissing;
    if (!empty) {
        return;
    }
    const auto follows = [](const Finding &finding) {
        return IsOfMembers(finding.code) || finding.code == Code::emptyDeck;
    };
    account->findings.erase(std::remove_if(account->findings.begin(), account->findings.end(), follows),
                            account->findings.end());
    Add(account, Code::emptyDeck, {0, 0, 0});
}

// Leaves out what only follows: of two findings about a row the one that tells more stays.
void DropFollowing(Account *account) {
    std::vector<int> toldLines; // of findings that say that a row or a section is lost
    for (const Finding &finding : account->findings) {
        const bool loses = finding.code <= Code::surfaceType || finding.code == Code::setByName ||
                           finding.code == Code::instanceMember || finding.code == Code::noLabel;
        if (loses && finding.place.file == 0) {
            toldLines.push_back(finding.place.line);
        }
    }
    std::sort(toldLines.begin(), toldLines.end());
    const auto follows = [&](const Finding &finding) {
        if (finding.place.file > 0 && account->passedOver[static_cast<std::size_t>(finding.place.file)] != 0) {
            return !IsOfFile(finding.code);
        }
        const int line = finding.place.line;
        const bool told = finding.place.file == 0 && std::binary_search(toldLines.begin(), toldLines.end(), line);
        switch (finding.code) {
        case Code::setLater:
        case Code::freeFaces:
        case Code::uncertain:
        case Code::notMesh:
            return told;
        case Code::setByName:
        case Code::instanceMember:
        case Code::noSurface:
            return DeckSays(*account, deck::Code::missingMember, line, line) ||
                   DeckSays(*account, deck::Code::setCycle, line, line);
        default:
            return false;
        }
    };
    account->findings.erase(std::remove_if(account->findings.begin(), account->findings.end(), follows),
                            account->findings.end());
}

// Findings by where a reader of the deck meets them: those of an included file at the line that includes it.
void SortFindings(const std::vector<deck::File> &files, std::vector<Finding> *findings) {
    std::vector<int> rootLine(files.size(), 0);
    for (std::size_t f = 1; f < files.size(); ++f) {
        const int from = files[f].includedFrom;
        rootLine[f] = from > 0 && from < static_cast<int>(f) ? rootLine[static_cast<std::size_t>(from)] : files[f].line;
    }
    const auto key = [&](const Finding &finding) {
        const deck::Place &place = finding.place;
        const int root = place.file > 0 ? rootLine[static_cast<std::size_t>(place.file)] : place.line;
        return std::make_tuple(root, place.file, place.line, place.column);
    };
    std::stable_sort(findings->begin(), findings->end(),
                     [&](const Finding &a, const Finding &b) { return key(a) < key(b); });
}

void CountLevels(Report *report) {
    report->errors = report->warnings = report->notes = 0;
    for (const Finding &finding : report->findings) {
        switch (KindOf(finding.code).level) {
        case Level::error:
            ++report->errors;
            break;
        case Level::warning:
            ++report->warnings;
            break;
        default:
            ++report->notes;
            break;
        }
    }
}

void CompareReadings(deck::Deck *deck, Reading *reading, Report *report) {
    Account account(*deck, *reading);
    SortWhatDeckSays(&account);
    MatchSections(&account); // rows are in the order of the deck until both readings are resolved
    account.mesh = Assemble(*deck);
    reading->Resolve();
    SortWhatDeckSays(&account);
    account.heldNodes = std::make_unique<HeldNodes>();
    IndexCells(&account.cells);
    NoteRepeatedNodes(&account);
    AccountFiles(&account);
    AccountGenerators(&account);
    AccountInstances(&account);
    AccountElements(&account);
    AccountGroups(&account);
    AccountSets(&account);
    AccountSurfaces(&account);
    AccountUnusedNodes(&account);
    TakeDeckFindings(&account, deck->findings);
    TakeDeckFindings(&account, account.mesh.findings);
    DropFollowing(&account);
    AccountEmptyDeck(&account);
    report->meaning = SumUpMeaning(account);
    report->reading = SumUpReading(account);
    report->findings = std::move(account.findings);
}

} // namespace

Report CheckDeck(const std::string &path, const deck::Limits &limits) {
    const AtWork work;
    const LogCatcher silence([](const std::string &) {}); // of the words that go with a shortage
    Report report;
    report.path = path;
    deck::Deck deck = deck::ReadDeck(path, limits);
    if (deck.files.empty()) { // it was not opened, and may be what is better left alone
        report.findings.push_back(FromDeck(deck.findings.front()));
    } else {
        Reading reading(path.c_str());
        if (reading.opened()) {
            CompareReadings(&deck, &reading, &report);
        }
        report.readable = deck.readable && reading.opened() && reading.readToEnd();
        if (!report.readable && deck.readable) { // the file went away, or became unreadable, between the two readings
            report.findings.push_back({Code::unreadable, {0, 0, 0}, {path, "it cannot be read again"}, 1});
        }
    }
    report.files = deck.files;
    if (report.files.empty()) {
        report.files.push_back({path, -1, 0});
    }
    report.otherKeywords = deck.otherKeywords;
    PutInOrder(&report);
    return report;
}

void PutInOrder(Report *report) {
    SortFindings(report->files, &report->findings);
    CountLevels(report);
}

} // namespace account
