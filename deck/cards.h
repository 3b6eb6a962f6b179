// A deck as cards: keyword lines with their parameters, each followed by its rows. Comments, blank lines and includes
// are seen to here.
#ifndef KIVOM_DECK_CARDS_H
#define KIVOM_DECK_CARDS_H

#include "deck/keywords.h"
#include "deck/source.h"
#include "deck/tally.h"
#include "deck/text.h"

#include <map>
#include <vector>

namespace deck {

class CardReader {
  public:
    explicit CardReader(Deck *deck) : deck_(deck), source_(deck, &tally_) {}

    bool Open(const std::string &path) {
        return source_.Open(path);
    }

    // The next keyword line with what continues it; rows of the one before that nobody took are passed over. False at
    // the end of the deck. Misspelt keywords and parameters become findings here.
    bool NextCard(Card *card);

    // The next row of the card in hand: a line that is neither blank nor comment. False where the rows end.
    bool NextRow(Line *row);

    // The row taken last comes again.
    void Back() {
        source_.Back();
    }

    // Rows go on in that file (INPUT= on *NODE and *ELEMENT).
    void ReadRowsFrom(const Card &card);

    // The fields of the row, cut at commas, or at blanks where that is certain (a remark then). Empty fields at the end
    // are left out. The texts live as long as the row.
    const std::vector<Field> &Fields(const Line &row);

    void Find(Code code, const Place &place, std::vector<std::string> words);
    void Remark(Code code, const Place &place, std::vector<std::string> words);

  private:
    bool NextText(Line *line, bool *isKeyword);
    void ReadCard(const Line &line, Card *card);
    bool Continues(const Card &card, const Line &line);
    bool LooksLikeParameter(const Card &card, std::string_view text);
    void AddKeyword(const Field &field, Card *card);
    void AddParameter(const Field &field, const Line &line, Card *card);
    void MeanParameter(Card *card, Parameter *parameter);
    bool TakeInclude(const Line &line);
    const KeywordMeant &Meant(const std::string &text);

    Deck *deck_;
    Tally tally_;
    Source source_;
    std::map<std::string, KeywordMeant> known_; // keywords met before
    std::vector<Field> fields_;
    bool unheaded_ = true; // no keyword yet
};

} // namespace deck

#endif
