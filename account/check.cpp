// The steps of an account, and the report that comes of them.
#include "account/check.h"

#include "account/account.h"
#include "account/summary.h"

#include "abaqus/abqdeck.h"
#include "support/frame.h"

#include <algorithm>
#include <memory>
#include <tuple>

namespace account {

namespace {

// The coordinates that an element of the reader's gets for the number; false when there is no such node.
class NodesByNumber {
  public:
    NodesByNumber() {
        for (const ABQNodeBlock *block = ABQDeck()->nodeBlocks; block != nullptr; block = block->next) {
            if (block->count > 0) {
                blocks_.push_back(block);
                firsts_.push_back(static_cast<int>(numbers_.size()));
                numbers_.insert(numbers_.end(), block->i1GID, block->i1GID + block->count);
            }
        }
        order_.resize(numbers_.size());
        sorted_ = !OrderRows(static_cast<int>(numbers_.size()), numbers_.data(), order_.data());
    }

    bool Find(int number, double *xyz) const {
        int at = FindIDPositionInTheList(static_cast<int>(numbers_.size()), numbers_.data(), number);
        if (at == -1) {
            return false;
        }
        at = sorted_ ? at : order_[static_cast<std::size_t>(at)];
        const auto block = std::upper_bound(firsts_.begin(), firsts_.end(), at) - firsts_.begin() - 1;
        const ABQNodeBlock *held = blocks_[static_cast<std::size_t>(block)];
        const int row = at - firsts_[static_cast<std::size_t>(block)];
        xyz[0] = held->d1X[row];
        xyz[1] = held->d1Y[row];
        xyz[2] = held->d1Z[row];
        return true;
    }

  private:
    std::vector<const ABQNodeBlock *> blocks_;
    std::vector<int> firsts_;
    std::vector<int> numbers_;
    std::vector<int> order_;
    bool sorted_ = false;
};

// Nodes that are given twice with different coordinates: whether the translator happens to take the right ones.
class TwiceJudge {
  public:
    explicit TwiceJudge(const deck::Mesh &mesh) : mesh_(mesh) {
        for (std::size_t i = 0; i < mesh.nodeLine.size(); ++i) {
            byLine_.push_back({mesh.nodeLine[i], i});
        }
        std::sort(byLine_.begin(), byLine_.end());
    }

    // The code for the definition of that line, or false when a later one counts.
    bool Judge(int line, Code *code) const {
        const auto found = std::lower_bound(byLine_.begin(), byLine_.end(), std::make_pair(line, std::size_t{0}));
        if (found == byLine_.end() || found->first != line) {
            return false;
        }
        const std::size_t i = found->second;
        double xyz[3];
        const bool right = nodes_.Find(mesh_.nodeNumber[i], xyz) && xyz[0] == mesh_.x[i] && xyz[1] == mesh_.y[i] &&
                           xyz[2] == mesh_.z[i];
        *code = right ? Code::nodeRepeated : Code::nodeTwice;
        return true;
    }

  private:
    const deck::Mesh &mesh_;
    NodesByNumber nodes_;
    std::vector<std::pair<int, std::size_t>> byLine_;
};

// What the deck itself has to say becomes part of the report. Without a file that it needs, what is missing in the rest
// says nothing.
void TakeDeckFindings(Account *account, const std::vector<deck::Finding> &findings) {
    const auto isTwice = [](const deck::Finding &finding) { return finding.code == deck::Code::nodeTwice; };
    std::unique_ptr<TwiceJudge> judge;
    if (std::any_of(findings.begin(), findings.end(), isTwice)) {
        judge = std::make_unique<TwiceJudge>(account->mesh);
    }
    for (const deck::Finding &finding : findings) {
        const bool follows = finding.code == deck::Code::missingNode || finding.code == deck::Code::missingMember ||
                             finding.code == deck::Code::emptyDeck || finding.code == deck::Code::generatorEnds;
        if (!account->deck.readable && follows) {
            continue;
        }
        account->findings.push_back(FromDeck(finding));
        if (isTwice(finding) && !judge->Judge(finding.place.line, &account->findings.back().code)) {
            account->findings.pop_back();
        }
    }
}

template <class Block> void Index(BlockIndex<Block> *index, Block *list) {
    std::vector<const int *> columns;
    std::vector<int> counts;
    for (; list != nullptr; list = list->next) {
        index->blocks.push_back(list);
        columns.push_back(list->i1GID);
        counts.push_back(list->count);
    }
    ABQBuildFinder(&index->finder, static_cast<int>(columns.size()), columns.data(), counts.data());
    index->built = true;
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
    Index(&account.nodeBlocks, ABQDeck()->nodeBlocks);
    Index(&account.cellBlocks, ABQDeck()->cellBlocks);
    AccountFiles(&account);
    AccountGenerators(&account);
    AccountInstances(&account);
    AccountElements(&account);
    AccountGroups(&account);
    AccountSets(&account);
    AccountSurfaces(&account);
    TakeDeckFindings(&account, deck->findings);
    TakeDeckFindings(&account, account.mesh.findings);
    report->meaning = SumUpMeaning(account);
    report->reading = SumUpReading(&account);
    report->findings = std::move(account.findings);
}

} // namespace

Report CheckDeck(const std::string &path) {
    Report report;
    report.path = path;
    deck::Deck deck = deck::ReadDeck(path);
    Reading reading(path.c_str());
    if (reading.opened() && !deck.files.empty()) {
        CompareReadings(&deck, &reading, &report);
    } else {
        for (const deck::Finding &finding : deck.findings) {
            report.findings.push_back(FromDeck(finding));
        }
    }
    report.readable = deck.readable && reading.opened() && reading.readToEnd();
    if (!report.readable && deck.readable) { // the file went away, or became unreadable, between the two readings
        report.findings.push_back({Code::unreadable, {0, 0, 0}, {path, "it cannot be read again"}, 1});
    }
    report.files = deck.files;
    if (report.files.empty()) {
        report.files.push_back({path, -1, 0});
    }
    SortFindings(report.files, &report.findings);
    report.otherKeywords = deck.otherKeywords;
    CountLevels(&report);
    return report;
}

} // namespace account
