// The rows of a section, as the deck means them and as the reader has them, both in the order of the deck.
#include "account/account.h"
#include "account/align.h"

#include "support/frame.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace account {

namespace {

// Findings of one kind that a section reports row by row; those beyond count with the last of them.
constexpr int kMostRowsTold = 1000;

// The reader cuts a line here, wherever it stands.
constexpr const char *kComment = "**";

// Rows of a table that stand below one keyword line, in the deck's own file.
class RowList {
  public:
    RowList() = default;
    template <class Sections> RowList(const CardUse &use, const Sections &sections) {
        for (int s = use.section; s < use.section + use.sections; ++s) {
            const auto &section = sections[static_cast<std::size_t>(s)];
            if (section.file == 0) {
                Add(section.first, section.count);
            }
        }
    }
    void Add(std::size_t first, std::size_t count) {
        if (count > 0) {
            begins_.push_back(size_);
            firsts_.push_back(first);
            size_ += count;
        }
    }
    std::size_t size() const {
        return size_;
    }
    std::size_t operator[](std::size_t k) const {
        if (firsts_.size() == 1) {
            return firsts_[0] + k;
        }
        const auto range =
            static_cast<std::size_t>(std::upper_bound(begins_.begin(), begins_.end(), k) - begins_.begin() - 1);
        return firsts_[range] + (k - begins_[range]);
    }

  private:
    std::vector<std::size_t> begins_; // row k of the list is in the last range that does not begin behind it
    std::vector<std::size_t> firsts_; // where that range begins in the table
    std::size_t size_ = 0;
};

// Tells of rows, a limited number of times a code.
class Teller {
  public:
    Teller(Account *account, int card) : account_(account), card_(card) {}

    void Tell(Code code, int line, std::vector<std::string> words, long long count = 1) {
        account_->cards[static_cast<std::size_t>(card_)].flawed = true;
        if (code == last_ && told_ >= kMostRowsTold) {
            account_->findings.back().count += count;
            return;
        }
        told_ = code == last_ ? told_ + 1 : 1;
        last_ = code;
        Add(account_, code, line == 0 ? PlaceOf(*account_, card_) : PlaceOfLine(line), std::move(words), count);
    }

    void Lose(int line) {
        account_->cards[static_cast<std::size_t>(card_)].flawed = true;
        account_->lostRows.push_back(line);
    }

    bool Remarked(deck::Code code) const {
        return RemarkOn(*account_, card_, code) != nullptr;
    }

    bool DeckTold(deck::Code code) const {
        return DeckSays(*account_, code, PlaceOf(*account_, card_).line, LastLineOf(*account_, card_));
    }

    // The deck has told of numbers on rows of this section: rows that it drops, and that the reader takes somehow.
    bool DeckSaysOfNumbers() const {
        return DeckTold(deck::Code::badNumber) || DeckTold(deck::Code::numberRange) ||
               DeckTold(deck::Code::fewerNodes) || DeckTold(deck::Code::rowBeforeKeyword);
    }

    bool LongLine() const {
        const std::vector<long long> &lines = account_->reading.longLines();
        const auto first = std::lower_bound(lines.begin(), lines.end(), PlaceOf(*account_, card_).line);
        return first != lines.end() && *first <= LastLineOf(*account_, card_);
    }

    void TakeIn() {
        Flaw();
        account_->rowsTakenIn = true;
    }

    void Flaw() {
        account_->cards[static_cast<std::size_t>(card_)].flawed = true;
    }

    // The comma at the end of the deck's last row before the next section took something in; that is told there.
    bool NextIsUnseen() const {
        const int next = account_->cards[static_cast<std::size_t>(card_)].next;
        if (next != -1) {
            const CardUse &use = account_->cards[static_cast<std::size_t>(next)];
            return use.state == CardState::unseen || use.scope == -1;
        }
        return true;
    }

  private:
    Account *account_;
    int card_;
    Code last_ = Code::differs;
    int told_ = 0;
};

// Rows that the deck means and the reader lacks, and nothing in their place.
void TellLost(Teller *teller, int lineBefore, std::size_t count, int firstLost) {
    const std::string rows = count == 1 ? "the next row" : "the next " + std::to_string(count) + " rows";
    const bool longLine = teller->LongLine();
    if (lineBefore == 0) {
        teller->Tell(Code::keywordEndComma, 0, {}, static_cast<long long>(count));
    } else if (!longLine && teller->Remarked(deck::Code::rowEndComma)) {
        teller->Tell(Code::rowEndComma, lineBefore, {rows}, static_cast<long long>(count));
    } else if (!longLine && teller->Remarked(deck::Code::commentInside)) {
        teller->Tell(Code::commentInside, lineBefore, {}, static_cast<long long>(count));
    } else if (longLine || teller->DeckSaysOfNumbers()) {
        teller->Flaw();
    } else {
        teller->Tell(Code::differs, firstLost, {std::to_string(count) + " rows are not held"},
                     static_cast<long long>(count));
    }
}

// A row whose number the reader takes for another.
void TellAltered(Teller *teller, int line, const std::string &meant, const std::string &read) {
    if (teller->Remarked(deck::Code::blanksForCommas)) {
        teller->Tell(Code::blanksForCommas, line, {});
    } else if (teller->Remarked(deck::Code::wholeNumberAsReal)) {
        teller->Tell(Code::wholeNumber, line, {meant, read});
    } else if (teller->Remarked(deck::Code::commentInside)) {
        teller->Tell(Code::commentInside, line, {});
    } else if (teller->LongLine() || teller->DeckSaysOfNumbers()) {
        teller->Flaw();
    } else {
        teller->Tell(Code::differs, line, {"the translator reads " + read + ", not " + meant});
    }
}

// Rows that only the reader has.
void TellExtra(Teller *teller, int line, std::size_t count) {
    teller->TakeIn();
    const bool sectionTold =
        teller->DeckTold(deck::Code::missingParameter) || teller->DeckTold(deck::Code::unknownType);
    if (teller->NextIsUnseen() || teller->DeckSaysOfNumbers() || sectionTold) {
        return;
    }
    teller->Tell(Code::differs, line, {"the translator holds " + std::to_string(count) + " rows more than there are"});
}

// What all sections of rows with numbers have in common: told of every gap.
template <class LineOf, class Meant, class Read>
void TellGaps(Teller *teller, const std::vector<Gap> &gaps, const LineOf &lineOf, const Meant &meant,
              const Read &read) {
    for (const Gap &gap : gaps) {
        const std::size_t lost = gap.meantEnd - gap.meant;
        const std::size_t extra = gap.readEnd - gap.read;
        const int before = gap.meant == 0 ? 0 : lineOf(gap.meant - 1);
        for (std::size_t i = gap.meant; i < gap.meantEnd; ++i) {
            teller->Lose(lineOf(i));
        }
        if (lost == 0) {
            TellExtra(teller, before, extra);
        } else if (lost == extra && !teller->Remarked(deck::Code::rowEndComma)) {
            for (std::size_t i = 0; i < lost; ++i) {
                TellAltered(teller, lineOf(gap.meant + i), std::to_string(meant(gap.meant + i)),
                            std::to_string(read(gap.read + i)));
            }
        } else {
            TellLost(teller, before, lost, lineOf(gap.meant));
            if (extra > 0) {
                teller->TakeIn();
            }
        }
    }
}

// Calls `compare` with each pair of rows that stand side by side.
template <class Compare>
void ForPairs(const std::vector<Gap> &gaps, std::size_t nMeant, std::size_t nRead, const Compare &compare) {
    std::size_t i = 0;
    std::size_t j = 0;
    for (std::size_t g = 0; g <= gaps.size(); ++g) {
        const std::size_t end = g < gaps.size() ? gaps[g].meant : nMeant;
        for (; i < end && j < nRead; ++i, ++j) {
            compare(i, j, g < gaps.size() && i + 1 == end);
        }
        if (g < gaps.size()) {
            i = gaps[g].meantEnd;
            j = gaps[g].readEnd;
        }
    }
}

// The parameter of that one word, where it is cut short: the reader does not know it then, and takes the section in.
bool TellShortParameter(Account *account, Teller *teller, int card, const char *name) {
    const deck::Parameter *parameter = FindParameter(account->deck.cards[static_cast<std::size_t>(card)], name);
    if (parameter == nullptr || parameter->written.size() == std::strlen(name)) {
        return false;
    }
    teller->Flaw();
    Add(account, Code::abbreviatedParameter, PlaceOf(*account, card, name), {parameter->written, name});
    return true;
}

struct NodeRow {
    int line;
    double meant[3];
    double read[3];
};

void TellCoordinates(Teller *teller, const NodeRow &row) {
    constexpr const char *kAxes[] = {"x", "y", "z"};
    int axis = 0;
    while (axis < 2 && row.meant[axis] == row.read[axis]) {
        ++axis;
    }
    const std::string meant = std::string(kAxes[axis]) + " = " + NumberText(row.meant[axis]);
    const std::string read = NumberText(row.read[axis]);
    if (teller->Remarked(deck::Code::blanksForCommas)) {
        teller->Tell(Code::blanksForCommas, row.line, {});
    } else if (teller->Remarked(deck::Code::dExponent)) {
        teller->Tell(Code::dExponent, row.line, {meant, read});
    } else if (teller->Remarked(deck::Code::commentInside)) {
        teller->Tell(Code::commentInside, row.line, {});
    } else if (teller->Remarked(deck::Code::rowEndComma)) {
        teller->Tell(Code::rowEndComma, row.line, {"the next row"});
    } else if (!teller->DeckSaysOfNumbers()) {
        teller->Tell(Code::differs, row.line, {"the translator reads " + read + ", not " + meant});
    }
}

} // namespace

void CompareNodeRows(Account *account, int card, const ABQNodeBlock &block) {
    const CardUse &use = account->cards[static_cast<std::size_t>(card)];
    static const deck::NodeTable kNone;
    const deck::NodeTable &table =
        use.scope == -1 ? kNone : account->deck.scopes[static_cast<std::size_t>(use.scope)].nodes;
    const RowList rows(use, table.sections);
    const auto nRead = static_cast<std::size_t>(block.count);
    const auto meant = [&](std::size_t i) { return table.number[rows[i]]; };
    const auto read = [&](std::size_t j) { return block.i1GID[j]; };
    const auto lineOf = [&](std::size_t i) { return table.line[rows[i]]; };
    const std::vector<Gap> gaps = FindGaps(rows.size(), meant, nRead, read);
    Teller teller(account, card);
    TellGaps(&teller, gaps, lineOf, meant, read);

    long long nMoved = 0;
    bool shortSystem = false;
    const int system = use.system;
    ForPairs(gaps, rows.size(), nRead, [&](std::size_t i, std::size_t j, bool beforeGap) {
        const std::size_t row = rows[i];
        const NodeRow pair{
            table.line[row], {table.x[row], table.y[row], table.z[row]}, {block.d1X[j], block.d1Y[j], block.d1Z[j]}};
        if (std::equal(pair.meant, pair.meant + 3, pair.read)) {
            return;
        }
        const bool tookNext =
            (beforeGap || (i + 1 == rows.size() && teller.NextIsUnseen())) && teller.Remarked(deck::Code::rowEndComma);
        if (tookNext) {
            return;
        }
        if (system != -1) {
            ++nMoved;
            return;
        }
        shortSystem = shortSystem || TellShortParameter(account, &teller, card, "SYSTEM");
        if (!shortSystem) {
            TellCoordinates(&teller, pair);
        }
    });
    if (nMoved > 0) {
        Add(account, Code::noSystemCard, PlaceOf(*account, system), {}, nMoved);
    }
}

void CompareElementRows(Account *account, int card, const ABQCellBlock &block) {
    const CardUse &use = account->cards[static_cast<std::size_t>(card)];
    static const deck::ElementTable kNone;
    const deck::ElementTable &table =
        use.scope == -1 ? kNone : account->deck.scopes[static_cast<std::size_t>(use.scope)].elements;
    const RowList rows(use, table.sections);
    const auto nRead = static_cast<std::size_t>(block.count);
    const auto meant = [&](std::size_t i) { return table.number[rows[i]]; };
    const auto read = [&](std::size_t j) { return block.i1GID[j]; };
    const auto lineOf = [&](std::size_t i) { return table.line[rows[i]]; };
    const std::vector<Gap> gaps = FindGaps(rows.size(), meant, nRead, read);
    Teller teller(account, card);
    TellGaps(&teller, gaps, lineOf, meant, read);
    if (rows.size() == 0) {
        return;
    }
    std::size_t at = static_cast<std::size_t>(use.section); // sections and pairs both ascend
    if (account->deck.types[static_cast<std::size_t>(table.sections[at].type)].type.kind == deck::TypeClass::unknown) {
        teller.TakeIn(); // of such elements the deck knows no face
    }
    ForPairs(gaps, rows.size(), nRead, [&](std::size_t i, std::size_t j, bool) {
        const std::size_t row = rows[i];
        while (row >= table.sections[at].first + table.sections[at].count) {
            ++at;
        }
        const deck::ElementSection &section = table.sections[at];
        const int *nodes =
            &table.nodes[section.firstNode + (row - section.first) * static_cast<std::size_t>(section.width)];
        for (int k = 0; k < block.nNodes && k < section.width; ++k) {
            if (nodes[k] != block.i2Conn[k][j]) {
                teller.Lose(table.line[row]);
                TellAltered(&teller, table.line[row], "node " + std::to_string(nodes[k]),
                            std::to_string(block.i2Conn[k][j]));
                return;
            }
        }
    });
}

namespace {

// A set's entry that is a name, where the reader has a number.
void TellName(Account *account, Teller *teller, int card, int line, const std::string &name) {
    if (name.find(kComment) != std::string::npos) {
        teller->Tell(Code::commentInside, line, {});
        return;
    }
    const std::size_t dot = name.find('.');
    const auto isInstance = [&](const deck::Instance &instance) { return name.compare(0, dot, instance.name) == 0; };
    if (dot != std::string::npos &&
        std::any_of(account->deck.instances.begin(), account->deck.instances.end(), isInstance)) {
        teller->Tell(Code::instanceMember, line, {name});
    } else {
        teller->Tell(Code::setByName, line, {SectionName(*account, card), name});
    }
}

} // namespace

namespace {

// Entries of a set's section: numbers, or names, which the reader takes for 0.
struct Entries {
    const deck::SetTable *table;
    RowList rows;           // positions in table->entries
    bool commented = false; // a name holds what the reader takes for the begin of a comment

    int operator()(std::size_t i) const {
        const int entry = table->entries[rows[i]];
        return entry < 0 ? 0 : entry;
    }
    const std::string *NameOf(std::size_t i) const {
        const int entry = table->entries[rows[i]];
        return entry < 0 ? &table->names[static_cast<std::size_t>(-1 - entry)] : nullptr;
    }
    int LineOf(std::size_t i) const {
        const auto &first = table->rowFirst;
        const auto row = std::upper_bound(first.begin(), first.end(), rows[i]) - first.begin() - 1;
        return table->rowLine[static_cast<std::size_t>(row)];
    }
};

bool HoldsCommentInside(const Entries &entries) {
    for (std::size_t i = 0; i < entries.rows.size() && !entries.table->names.empty(); ++i) {
        const std::string *name = entries.NameOf(i);
        if (name != nullptr && name->find(kComment) != std::string::npos) {
            return true;
        }
    }
    return false;
}

void TellSetGap(Account *account, Teller *teller, int card, const Entries &meant, const ABQSet &set, const Gap &gap) {
    const std::size_t extra = gap.readEnd - gap.read;
    for (std::size_t i = gap.meant; i < gap.meantEnd; ++i) {
        const int line = meant.LineOf(i);
        const std::size_t j = gap.read + (i - gap.meant);
        if (const std::string *name = meant.NameOf(i)) {
            TellName(account, teller, card, line, *name);
        } else if (meant.commented || DeckSays(*account, deck::Code::badNumber, line, line) ||
                   DeckSays(*account, deck::Code::numberRange, line, line)) {
            teller->Flaw(); // it is said what is wrong with the row, or with one about it
        } else {
            TellAltered(teller, line, std::to_string(meant(i)),
                        j < gap.readEnd ? std::to_string(set.numbers[j]) : "nothing");
        }
    }
    if (gap.meant != gap.meantEnd || extra == 0) {
        return;
    }
    teller->Flaw();
    if (!teller->DeckSaysOfNumbers() && !meant.commented) {
        teller->Tell(Code::differs, 0,
                     {SectionName(*account, card) + ": the translator reads more members than there are"},
                     static_cast<long long>(extra));
    }
}

// Sections that are no lists of members, and that the reader takes for one.
void TellNoList(Account *account, Teller *teller, int card, deck::SetSource source) {
    if (source == deck::SetSource::surface) {
        teller->Tell(Code::noSurface, 0, {SectionName(*account, card)});
    } else if (!TellShortParameter(account, teller, card, source == deck::SetSource::elset ? "ELSET" : "GENERATE")) {
        teller->Tell(Code::differs, 0, {SectionName(*account, card) + " is read as a list"});
    }
}

} // namespace

void CompareSetRows(Account *account, int card, const ABQSet &set) {
    const CardUse &use = account->cards[static_cast<std::size_t>(card)];
    Teller teller(account, card);
    if (use.scope == -1) {
        return;
    }
    const deck::Scope &scope = account->deck.scopes[static_cast<std::size_t>(use.scope)];
    const bool ofNodes = account->deck.cards[static_cast<std::size_t>(card)].keyword == deck::Keyword::nset;
    const deck::SetTable &table = ofNodes ? scope.nodeSets : scope.elementSets;
    Entries meant{&table, RowList(), false};
    for (int s = use.section; s < use.section + use.sections; ++s) {
        const deck::SetSection &section = table.sections[static_cast<std::size_t>(s)];
        if (section.file != 0) {
            teller.Flaw();
        } else if (section.source != deck::SetSource::rows) {
            TellNoList(account, &teller, card, section.source);
            return;
        } else {
            const std::size_t first = table.rowFirst[section.firstRow];
            meant.rows.Add(first, table.rowFirst[section.firstRow + section.rowCount] - first);
        }
    }
    const auto nRead = static_cast<std::size_t>(set.count);
    const auto read = [&](std::size_t j) { return set.numbers[j]; };
    const std::vector<Gap> gaps = FindGaps(meant.rows.size(), meant, nRead, read);
    meant.commented = !gaps.empty() && HoldsCommentInside(meant);
    for (const Gap &gap : gaps) {
        TellSetGap(account, &teller, card, meant, set, gap);
    }
    if (table.names.empty()) {
        return;
    }
    ForPairs(gaps, meant.rows.size(), nRead, [&](std::size_t i, std::size_t, bool) {
        if (const std::string *name = meant.NameOf(i)) {
            TellName(account, &teller, card, meant.LineOf(i), *name);
        }
    });
}

namespace {

// A surface's row as one number: which member, which face. Names count by their letters.
int KeyOf(const char *name, int faceRow) {
    unsigned key = static_cast<unsigned>(faceRow) * 2654435761u;
    const long number = std::strtol(name, nullptr, 10);
    if (number > 0) {
        return static_cast<int>(key ^ static_cast<unsigned>(number));
    }
    for (; *name != '\0'; ++name) {
        key = key * 31 + static_cast<unsigned char>(*name);
    }
    return static_cast<int>(key);
}

// What the reader has of a name: quotes stay, blanks go (one name is all that is compared here).
int KeyOf(const deck::SurfaceTable &table, const deck::SurfaceRow &row) {
    const std::string name =
        row.member > 0 ? std::to_string(row.member)
                       : (row.member < 0 ? table.names[static_cast<std::size_t>(-1 - row.member)] : std::string());
    return KeyOf(name.c_str(), static_cast<int>(row.label) % static_cast<int>(deck::Label::e1));
}

} // namespace

void CompareSurfaceRows(Account *account, int card, const ABQSurface &surface) {
    const CardUse &use = account->cards[static_cast<std::size_t>(card)];
    if (use.scope == -1) {
        return;
    }
    const deck::SurfaceTable &table = account->deck.scopes[static_cast<std::size_t>(use.scope)].surfaces;
    std::vector<int> meantKeys;
    std::vector<int> lines;
    for (int s = use.section; s < use.section + use.sections; ++s) {
        const deck::SurfaceSection &section = table.sections[static_cast<std::size_t>(s)];
        for (std::size_t r = section.firstRow; r < section.firstRow + section.rowCount && section.file == 0; ++r) {
            const deck::SurfaceRow &row = table.rows[r];
            if (row.label >= deck::Label::s1 &&
                row.label <= deck::Label::e4) { // the reader takes rows with such labels
                meantKeys.push_back(KeyOf(table, row));
                lines.push_back(row.line);
            }
        }
    }
    std::vector<int> readKeys;
    const char *name = surface.entryNames;
    for (int i = 0; i < surface.count; ++i, name += std::strlen(name) + 1) {
        readKeys.push_back(KeyOf(name, surface.faceRows[i]));
    }
    Teller teller(account, card);
    if (meantKeys.size() < readKeys.size() && teller.NextIsUnseen()) {
        teller.Flaw(); // its rows have come to this surface
    }
    if (meantKeys.size() <= readKeys.size()) {
        return; // whether each names what it should shows in the faces
    }
    const auto meant = [&](std::size_t i) { return meantKeys[i]; };
    const auto read = [&](std::size_t j) { return readKeys[j]; };
    for (const Gap &gap : FindGaps(meantKeys.size(), meant, readKeys.size(), read)) {
        for (std::size_t i = gap.meant; i < gap.meantEnd; ++i) {
            teller.Lose(lines[i]);
        }
        const std::size_t lost = gap.meantEnd - gap.meant;
        if (lost > 0) {
            const std::string rows = lost == 1 ? "the next row" : "the next " + std::to_string(lost) + " rows";
            teller.Tell(gap.meant == 0 ? Code::keywordEndComma : Code::rowEndComma,
                        gap.meant == 0 ? 0 : lines[gap.meant - 1], {rows}, static_cast<long long>(lost));
        }
    }
}

} // namespace account
