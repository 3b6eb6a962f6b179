// Which keyword lines of the mesh the reader took, refused or never saw.
#include "account/account.h"
#include "account/lookback.h"

#include <algorithm>
#include <cstring>

namespace account {

namespace {

using deck::Card;
using deck::Keyword;

struct RefusedWord {
    const char *word; // as the log shows it
    Code code;
};

constexpr RefusedWord kRefusedWords[] = {
    {"GENERATE", Code::noGenerate},     {"INPUT", Code::noInput},
    {"SYSTEM", Code::noSystem},         {"FILE", Code::noFile},
    {"OFFSET", Code::noOffset},         {"SOLIDELEMENTNUMBERING", Code::noSolidElementNumbering},
    {"ELSET", Code::noElset},           {"INSTANCE", Code::noInstance},
    {"INTERNAL", Code::noInternal},     {"UNSORTED", Code::noUnsorted},
    {"COMBINE", Code::noCombine},       {"CROP", Code::noCrop},
    {"DEFINITION", Code::noDefinition}, {"FILLETRADIUS", Code::noFilletRadius},
    {"REGIONTYPE", Code::noRegionType}, {"TRIM", Code::noTrim},
    {"MAXRATIO", Code::noMaxRatio},     {"NOOFFSET", Code::noNoOffset},
    {"NOTHICK", Code::noNoThick},       {"SCALETHICK", Code::noScaleThick},
};

SectionKind KindOf(Keyword keyword) {
    switch (keyword) {
    case Keyword::node:
        return SectionKind::kNodes;
    case Keyword::element:
        return SectionKind::kElements;
    case Keyword::nset:
        return SectionKind::kNodeSet;
    case Keyword::elset:
        return SectionKind::kElementSet;
    case Keyword::surface:
        return SectionKind::kSurface;
    default:
        return SectionKind::kNone;
    }
}

// Notes which sections of the model stand below each card. `owns` tells a card's own sections from those that a
// parameter of another keyword line makes (NSET= on *NODE).
template <class Sections, class Owns>
void NoteSections(Account *account, int scope, const Sections &sections, const Owns &owns) {
    for (std::size_t i = 0; i < sections.size(); ++i) {
        const auto card = static_cast<std::size_t>(sections[i].card);
        if (!owns(account->deck.cards[card].keyword)) {
            continue;
        }
        CardUse &use = account->cards[card];
        use.scope = scope;
        use.section = use.sections == 0 ? static_cast<int>(i) : use.section;
        use.sections += 1;
    }
}

void NoteAllSections(Account *account) {
    for (std::size_t s = 0; s < account->deck.scopes.size(); ++s) {
        const deck::Scope &scope = account->deck.scopes[s];
        const auto is = [](Keyword wanted) { return [wanted](Keyword keyword) { return keyword == wanted; }; };
        const int at = static_cast<int>(s);
        NoteSections(account, at, scope.nodes.sections, is(Keyword::node));
        NoteSections(account, at, scope.elements.sections, is(Keyword::element));
        NoteSections(account, at, scope.nodeSets.sections, is(Keyword::nset));
        NoteSections(account, at, scope.elementSets.sections, is(Keyword::elset));
        NoteSections(account, at, scope.surfaces.sections, is(Keyword::surface));
    }
}

// Whether a parameter of the card, and not a part of a name on it, is the refused word.
bool HasParameter(const Card &card, const std::string &word) {
    return std::any_of(card.parameters.begin(), card.parameters.end(), [&](const deck::Parameter &parameter) {
        std::string name = parameter.name;
        name.erase(std::remove(name.begin(), name.end(), ' '), name.end());
        return name == word;
    });
}

void ReportWord(Account *account, int card, const ReadSection &section) {
    const std::string name = SectionName(*account, card);
    if (HasParameter(account->deck.cards[static_cast<std::size_t>(card)],
                     "INPUT")) { // its file's name may hold the word
        Add(account, Code::noInput, PlaceOf(*account, card), {name});
        return;
    }
    if (!HasParameter(account->deck.cards[static_cast<std::size_t>(card)], section.word)) {
        Add(account, Code::wordInName, PlaceOf(*account, card), {name, section.word});
        return;
    }
    for (const RefusedWord &refused : kRefusedWords) {
        if (section.word == refused.word) {
            Add(account, refused.code, PlaceOf(*account, card), {name});
            return;
        }
    }
    Add(account, Code::differs, PlaceOf(*account, card), {name + " is lost: the translator refuses " + section.word});
}

const char *TranslatorsType(deck::Shape shape) {
    switch (shape) {
    case deck::Shape::tri3:
        return "CPS3";
    case deck::Shape::tri6:
        return "CPS6";
    case deck::Shape::tet4:
        return "C3D4";
    default:
        return "C3D10";
    }
}

// Elements of a type that the reader does not know. A type that nobody knows is one of the deck's own findings; lines
// wait until it shows whether they lie on edges (elements.cpp).
void ReportType(Account *account, int card) {
    const CardUse &use = account->cards[static_cast<std::size_t>(card)];
    if (use.scope == -1) {
        return;
    }
    const deck::ElementSection &section = account->deck.scopes[static_cast<std::size_t>(use.scope)]
                                              .elements.sections[static_cast<std::size_t>(use.section)];
    const deck::TypeName &type = account->deck.types[static_cast<std::size_t>(section.type)];
    const long long count = static_cast<long long>(section.count);
    switch (type.type.kind) {
    case deck::TypeClass::sameShape:
        Add(account, Code::sameShape, PlaceOf(*account, card, "TYPE"), {type.name, TranslatorsType(type.type.shape)},
            count);
        break;
    case deck::TypeClass::split:
        Add(account, Code::mustBeSplit, PlaceOf(*account, card, "TYPE"), {type.name}, count);
        break;
    case deck::TypeClass::noCell:
        Add(account, Code::noCell, PlaceOf(*account, card, "TYPE"), {type.name}, count);
        break;
    case deck::TypeClass::cell:
        if (const deck::Finding *remark = RemarkOn(*account, card, deck::Code::abbreviatedParameter)) {
            Add(account, Code::abbreviatedParameter, remark->place, remark->words);
            break;
        }
        if (DeckSays(*account, deck::Code::misspeltParameter, PlaceOf(*account, card).line,
                     PlaceOf(*account, card).line)) {
            break;
        }
        Add(account, Code::differs, PlaceOf(*account, card),
            {SectionName(*account, card) + " is lost: the translator does not find its type"}, count);
        break;
    default:
        break;
    }
}

void ReportSurfaceType(Account *account, int card, const ReadSection &section) {
    const deck::Place place = PlaceOf(*account, card);
    if (!DeckSays(*account, deck::Code::notMesh, place.line, place.line) &&
        !DeckSays(*account, deck::Code::uncertain, place.line, place.line)) {
        Add(account, Code::surfaceType, PlaceOf(*account, card, "TYPE"), {SectionName(*account, card), section.word});
    }
}

void ReportRefusal(Account *account, int card, const ReadSection &section) {
    switch (section.refusal) {
    case Refusal::kWord:
        ReportWord(account, card, section);
        break;
    case Refusal::kElementType:
        ReportType(account, card);
        break;
    default:
        ReportSurfaceType(account, card, section);
        break;
    }
}

template <class Record> const Record *FindRecord(const Record *list, long long line) {
    for (; list != nullptr && list->nLine != line; list = list->next) {
    }
    return list;
}

// The reader's records in the order of the deck; they are linked newest first.
template <class Record> class Records {
  public:
    explicit Records(const Record *list) {
        for (; list != nullptr; list = list->next) {
            records_.push_back(list);
        }
    }
    // The record of that line; lines are asked for in ascending order.
    const Record *Take(long long line) {
        while (!records_.empty() && records_.back()->nLine < line) {
            records_.pop_back();
        }
        return !records_.empty() && records_.back()->nLine == line ? records_.back() : nullptr;
    }

  private:
    std::vector<const Record *> records_;
};

struct AllRecords {
    Records<ABQNodeBlock> nodes{ABQDeck()->nodeBlocks};
    Records<ABQCellBlock> cells{ABQDeck()->cellBlocks};
    Records<ABQSet> nodeSets{ABQDeck()->nodeSets};
    Records<ABQSet> cellSets{ABQDeck()->cellSets};
    Records<ABQSurface> surfaces{ABQDeck()->surfaces};
};

void CompareHeld(Account *account, int card, long long line, AllRecords *records) {
    switch (account->deck.cards[static_cast<std::size_t>(card)].keyword) {
    case Keyword::node:
        if (const ABQNodeBlock *block = records->nodes.Take(line)) {
            CompareNodeRows(account, card, *block);
        }
        break;
    case Keyword::element:
        if (const ABQCellBlock *block = records->cells.Take(line)) {
            CompareElementRows(account, card, *block);
        }
        break;
    case Keyword::nset:
        if (const ABQSet *set = records->nodeSets.Take(line)) {
            CompareSetRows(account, card, *set);
        }
        break;
    case Keyword::elset:
        if (const ABQSet *set = records->cellSets.Take(line)) {
            CompareSetRows(account, card, *set);
        }
        break;
    default:
        if (const ABQSurface *surface = records->surfaces.Take(line)) {
            CompareSurfaceRows(account, card, *surface);
        }
        break;
    }
}

// For each card the next one of its file, and the *SYSTEM before it.
void FindNeighbours(Account *account) {
    const std::vector<Card> &cards = account->deck.cards;
    std::vector<int> before(account->deck.files.size(), -1);
    int system = -1;
    for (std::size_t c = 0; c < cards.size(); ++c) {
        const Keyword keyword = cards[c].keyword;
        account->cards[c].system = system;
        if (keyword == Keyword::system) {
            system = static_cast<int>(c);
        } else if (keyword == Keyword::part || keyword == Keyword::endPart) {
            system = -1;
        }
        int &last = before[static_cast<std::size_t>(cards[c].place.file)];
        if (last != -1) {
            account->cards[static_cast<std::size_t>(last)].next = static_cast<int>(c);
        }
        last = static_cast<int>(c);
    }
}

// Gives each card of the five kinds in the deck's own file its section of the reader's, as far as there is one.
// Sections that no card explains come back.
std::vector<const ReadSection *> PairSections(Account *account, std::vector<const ReadSection *> *ofCard) {
    const std::vector<ReadSection> &sections = account->reading.sections();
    std::vector<const ReadSection *> strange;
    std::size_t next = 0;
    for (std::size_t c = 0; c < account->deck.cards.size(); ++c) {
        const Card &card = account->deck.cards[c];
        if (card.place.file != 0) {
            account->cards[c].state = CardState::elsewhere;
            continue;
        }
        const SectionKind kind = KindOf(card.keyword);
        while (next < sections.size() && sections[next].line < card.place.line) {
            strange.push_back(&sections[next++]);
        }
        if (kind == SectionKind::kNone) {
            continue;
        }
        account->cards[c].state = CardState::unseen;
        if (next < sections.size() && sections[next].line == card.place.line && sections[next].kind == kind) {
            (*ofCard)[c] = &sections[next++];
        } else if (!strange.empty() && strange.back()->kind == kind &&
                   (c == 0 || account->deck.cards[c - 1].place.line <= strange.back()->line)) {
            (*ofCard)[c] = strange.back(); // the keyword line above, with a comma at its end, took this one in whole
            strange.pop_back();
        }
    }
    for (; next < sections.size(); ++next) {
        strange.push_back(&sections[next]);
    }
    return strange;
}

// A keyword line that the reader never saw: cut short, or taken in by the comma of the line above.
void ReportUnseen(Account *account, int card, Lookback *lines) {
    const Card &keywordLine = account->deck.cards[static_cast<std::size_t>(card)];
    if (const deck::Finding *remark = RemarkOn(*account, card, deck::Code::abbreviated)) {
        Add(account, Code::abbreviated, keywordLine.place, remark->words);
        return;
    }
    const LineBefore before = lines->Before(keywordLine.place.line);
    if (before.endsInComma) {
        Add(account, Code::commaEatsKeyword, PlaceOfLine(before.line), {SectionName(*account, card)});
        return;
    }
    if (RemarkOn(*account, card, deck::Code::commentInside) != nullptr) {
        Add(account, Code::commentInside, keywordLine.place);
        return;
    }
    Add(account, Code::differs, keywordLine.place,
        {SectionName(*account, card) + " is lost: the translator does not see its keyword line"});
}

void NoteStates(Account *account, const std::vector<const ReadSection *> &ofCard) {
    for (std::size_t c = 0; c < ofCard.size(); ++c) {
        CardUse &use = account->cards[c];
        if (use.state == CardState::unseen && ofCard[c] != nullptr) {
            use.state = ofCard[c]->refusal != Refusal::kNone ? CardState::refused : CardState::held;
            use.readLine = use.state == CardState::held ? ofCard[c]->line : -1;
        }
    }
}

} // namespace

void MatchSections(Account *account) {
    account->cards.resize(account->deck.cards.size());
    FindNeighbours(account);
    NoteAllSections(account);
    std::vector<const ReadSection *> ofCard(account->deck.cards.size(), nullptr);
    const std::vector<const ReadSection *> strange = PairSections(account, &ofCard);
    NoteStates(account, ofCard); // of all, before rows are compared: those of one section may have come to another
    Lookback lines(account->deck.files[0].path);
    AllRecords records;
    for (std::size_t c = 0; c < ofCard.size(); ++c) {
        const CardUse &use = account->cards[c];
        const int card = static_cast<int>(c);
        if (use.state == CardState::unseen) {
            ReportUnseen(account, card, &lines);
        } else if (use.state == CardState::refused) {
            ReportRefusal(account, card, *ofCard[c]);
        } else if (use.state == CardState::held) {
            CompareHeld(account, card, use.readLine, &records);
        }
    }
    for (const ReadSection *section : strange) {
        const int line = static_cast<int>(section->line);
        if (!DeckSays(*account, deck::Code::misspelt, line, line)) { // "*NODE** all" is *NODE to the reader
            Add(account, Code::differs, PlaceOfLine(line),
                {"the translator reads a section here, which the deck does not mean"});
        }
    }
    for (const long long line : account->reading.longLines()) {
        Add(account, Code::longLine, PlaceOfLine(static_cast<int>(line)));
    }
    std::sort(account->lostRows.begin(), account->lostRows.end());
}

} // namespace account
