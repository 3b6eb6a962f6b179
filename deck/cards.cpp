// Keyword lines, their continuation, and the rows between them.
#include "deck/cards.h"

namespace deck {

namespace {

// Keywords whose meaning is kept: decks have few, hostile ones a million.
constexpr std::size_t kMostKnown = 1000;

enum class LineKind { nothing, row, keyword };

// "**" in the first two columns makes a comment. Behind blanks it can be nothing else, since no keyword begins so.
LineKind KindOf(const Line &line) {
    const char *at = SkipBlanks(line.begin);
    if (at >= line.end) {
        return LineKind::nothing;
    }
    if (*at != '*') {
        return LineKind::row;
    }
    return at[1] == '*' ? LineKind::nothing : LineKind::keyword;
}

bool StartsWithInclude(const Line &line) {
    const char *at = SkipBlanks(SkipBlanks(line.begin) + 1);
    return ToUpper(at[0]) == 'I' && ToUpper(at[1]) == 'N' && ToUpper(at[2]) == 'C';
}

bool EndsInComma(const Line &line) {
    const std::string_view text = Trim(line.Text());
    return !text.empty() && text.back() == ',';
}

// A file's name: quotes around it left out, everything else as it is.
std::string FileName(const Parameter &parameter) {
    const std::string &text = parameter.text;
    if (text.size() >= 2 && text.front() == '"' && text.back() == '"') {
        return text.substr(1, text.size() - 2);
    }
    return text;
}

// The '=' outside quotes, or npos.
std::size_t EqualSign(std::string_view text) {
    const std::size_t at = text.find('=');
    return text.find('"') < at ? std::string_view::npos : at;
}

void Unquote(Parameter *parameter) {
    parameter->value = MeantName(parameter->text);
    parameter->quoted = parameter->text.find('"') != std::string::npos;
}

std::string Spaced(std::string_view text) {
    std::string spaced;
    for (const char c : text) {
        if (!IsBlank(c)) {
            spaced += c;
        } else if (!spaced.empty() && spaced.back() != ' ') {
            spaced += ' ';
        }
    }
    return spaced;
}

} // namespace

const Parameter *FindParameter(const Card &card, const char *name) {
    for (const Parameter &parameter : card.parameters) {
        if (parameter.known && parameter.name == name) {
            return &parameter;
        }
    }
    return nullptr;
}

void CardReader::Find(Code code, const Place &place, std::vector<std::string> words) {
    tally_.Add(&deck_->findings, {code, place, std::move(words), 1});
}

void CardReader::Remark(Code code, const Place &place, std::vector<std::string> words) {
    tally_.Add(&deck_->remarks, {code, place, std::move(words), 1});
}

const KeywordMeant &CardReader::Meant(const std::string &text) {
    const auto found = known_.find(text);
    if (found != known_.end()) {
        return found->second;
    }
    if (known_.size() >= kMostKnown) {
        known_.clear();
    }
    return known_[text] = FindKeyword(text);
}

void CardReader::AddKeyword(const Field &field, Card *card) {
    card->written = Spaced(field.text);
    KeywordMeant meant = Meant(card->written);
    const std::size_t comment = card->written.find("**");
    if (meant.spelling == Spelling::unknown && comment != std::string::npos) { // no comment stands behind a keyword
        const KeywordMeant before = Meant(Spaced(Trim(std::string_view(card->written).substr(0, comment))));
        meant =
            before.keyword == Keyword::other ? meant : KeywordMeant{Keyword::other, before.name, Spelling::misspelt};
    }
    card->keyword = meant.keyword;
    card->name = meant.name;
    if (meant.spelling == Spelling::misspelt) {
        card->misspelt = true;
        Find(Code::misspelt, card->place, {Clip(card->written), meant.name});
    } else if (meant.spelling == Spelling::abbreviated) {
        Remark(Code::abbreviated, card->place, {Clip(card->written), meant.name});
    }
}

void CardReader::MeanParameter(Card *card, Parameter *parameter) {
    const std::string folded = Fold(parameter->written);
    const ParameterMeant meant = FindParameterName(card->keyword, folded);
    const Place place{card->place.file, parameter->line, parameter->column};
    parameter->name = meant.name;
    parameter->known = meant.spelling != Spelling::unknown;
    if (meant.spelling == Spelling::abbreviated) {
        Remark(Code::abbreviatedParameter, place, {Clip(parameter->written), meant.name});
    } else if (meant.spelling == Spelling::misspelt) {
        Find(Code::misspeltParameter, place, {Clip(parameter->written), meant.name, card->name});
    } else if (meant.spelling == Spelling::unknown && HasParameterList(card->keyword)) {
        Find(Code::unknownParameter, place, {Clip(parameter->written), card->name});
    }
}

void CardReader::AddParameter(const Field &field, const Line &line, Card *card) {
    if (field.text.empty()) {
        return;
    }
    Parameter parameter;
    const std::size_t sign = EqualSign(field.text);
    parameter.written = Spaced(Trim(field.text.substr(0, sign)));
    parameter.line = line.number;
    parameter.column = field.column;
    if (sign != std::string_view::npos) {
        parameter.hasValue = true;
        parameter.text = std::string(Trim(field.text.substr(sign + 1)));
        Unquote(&parameter);
    }
    MeanParameter(card, &parameter);
    if (field.text.find("**") != std::string_view::npos) {
        Remark(Code::commentInside, {line.file, line.number, field.column}, {Clip(field.text)});
    }
    if (parameter.quoted) {
        Remark(Code::quotedName, {line.file, line.number, field.column}, {Clip(parameter.text)});
    }
    card->parameters.push_back(std::move(parameter));
}

bool CardReader::LooksLikeParameter(const Card &card, std::string_view text) {
    if (EqualSign(text) != std::string_view::npos) {
        return true;
    }
    const ParameterMeant meant = FindParameterName(card.keyword, Fold(text));
    return meant.spelling == Spelling::full || meant.spelling == Spelling::abbreviated;
}

bool CardReader::Continues(const Card &card, const Line &line) {
    if (KindOf(line) != LineKind::row) {
        return false;
    }
    SplitFields(line.Text(), &fields_);
    bool any = false;
    for (const Field &field : fields_) {
        if (!field.text.empty() && !LooksLikeParameter(card, field.text)) {
            return false;
        }
        any = any || !field.text.empty();
    }
    return any;
}

void CardReader::ReadCard(const Line &first, Card *card) {
    *card = Card{};
    const char *star = SkipBlanks(first.begin);
    const int shift = static_cast<int>(star + 1 - first.begin);
    card->place = {first.file, first.number, shift};
    Line line = first;
    bool more = EndsInComma(line);
    card->lastLine = line.number;
    SplitFields({star + 1, static_cast<std::size_t>(line.end - star - 1)}, &fields_);
    AddKeyword(fields_[0], card);
    for (std::size_t i = 1; i < fields_.size(); ++i) {
        AddParameter({fields_[i].text, fields_[i].column + shift}, line, card);
    }
    while (more) {
        if (!source_.Next(&line)) {
            break;
        }
        if (KindOf(line) == LineKind::nothing) {
            continue;
        }
        if (line.file != first.file || !Continues(*card, line)) {
            source_.Back();
            break;
        }
        more = EndsInComma(line);
        card->lastLine = line.number;
        for (const Field &field : fields_) {
            AddParameter(field, line, card);
        }
    }
    card->endComma = more;
    if (more && card->keyword != Keyword::other) {
        Remark(Code::keywordEndComma, card->place, {card->name});
    }
}

void CardReader::ReadRowsFrom(const Card &card) {
    const Parameter *input = FindParameter(card, "INPUT");
    if (input == nullptr) {
        return;
    }
    const Place place{card.place.file, input->line, input->column};
    if (FindParameter(card, "PASSWORD") != nullptr) {
        Find(Code::includeEncrypted, place, {FileName(*input)});
    } else if (FileName(*input).empty()) {
        Find(Code::missingParameter, place, {"INPUT", card.name});
    } else {
        source_.Include(FileName(*input), place);
    }
}

bool CardReader::TakeInclude(const Line &line) {
    if (!StartsWithInclude(line)) {
        return false;
    }
    const std::string_view text = Trim(line.Text()).substr(1);
    if (Meant(Spaced(Trim(text.substr(0, text.find(','))))).keyword != Keyword::include) {
        return false;
    }
    Card card;
    ReadCard(line, &card);
    deck_->cards.push_back(card);
    if (FindParameter(card, "INPUT") == nullptr) {
        Find(Code::missingParameter, card.place, {"INPUT", card.name});
    }
    ReadRowsFrom(card);
    return true;
}

bool CardReader::NextText(Line *line, bool *isKeyword) {
    while (source_.Next(line)) {
        const LineKind kind = KindOf(*line);
        if (kind == LineKind::nothing || (kind == LineKind::keyword && TakeInclude(*line))) {
            continue;
        }
        *isKeyword = kind == LineKind::keyword;
        return true;
    }
    return false;
}

bool CardReader::NextCard(Card *card) {
    Line line;
    bool isKeyword = false;
    while (NextText(&line, &isKeyword)) {
        if (isKeyword) {
            unheaded_ = false;
            ReadCard(line, card);
            return true;
        }
        if (unheaded_) {
            unheaded_ = false; // once is enough
            Find(Code::rowBeforeKeyword, {line.file, line.number, 1}, {});
        }
    }
    return false;
}

bool CardReader::NextRow(Line *row) {
    bool isKeyword = false;
    if (!NextText(row, &isKeyword)) {
        return false;
    }
    if (isKeyword) {
        source_.Back();
    }
    return !isKeyword;
}

const std::vector<Field> &CardReader::Fields(const Line &row) {
    const std::string_view text = row.Text();
    if (text.find(',') == std::string_view::npos && SplitAtBlanks(text, &fields_)) {
        Remark(Code::blanksForCommas, {row.file, row.number, fields_[1].column}, {});
        return fields_;
    }
    SplitFields(text, &fields_);
    while (fields_.size() > 1 && fields_.back().text.empty()) {
        fields_.pop_back();
    }
    return fields_;
}

} // namespace deck
