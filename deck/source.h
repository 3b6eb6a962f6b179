// The physical lines of a deck, through all the files that it includes.
#ifndef KIVOM_DECK_SOURCE_H
#define KIVOM_DECK_SOURCE_H

#include "deck/model.h"
#include "deck/tally.h"
#include "support/lines.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace deck {

// One line without its end; *end is '\n'. It stays until the next line is taken.
struct Line {
    const char *begin = nullptr;
    const char *end = nullptr;
    int file = -1;
    int number = 0;

    std::string_view Text() const {
        return {begin, static_cast<std::size_t>(end - begin)};
    }
};

class Source {
  public:
    // Lines, files and what they cause go into the deck.
    Source(Deck *deck, Tally *tally) : deck_(deck), tally_(tally) {}
    ~Source();
    Source(const Source &) = delete;
    Source &operator=(const Source &) = delete;

    // The deck itself. False, with a finding, when it cannot be opened.
    bool Open(const std::string &path);

    // The next line, of the innermost file that has one. False at the end of the deck.
    bool Next(Line *line);

    // The line taken last comes again with the next call.
    void Back() {
        again_ = true;
    }

    // Goes on in the file named, looked for in the folder of the deck, of the including file and in the current one.
    // A file that is missing, or is being read already by whatever path, is a finding at `place` and no more; so is one
    // too many of them.
    void Include(const std::string &name, const Place &place);

  private:
    struct Open_ {
        LineSource lines;
        int file;
    };

    std::string OpenFile(const std::string &path, int line); // "", or the reason why not
    bool IsOpen(const std::string &path) const;
    std::string Chain(const std::string &path) const;
    void Close();
    bool TakeLine(Open_ *from, Line *line);

    Deck *deck_;
    Tally *tally_;                             // of the findings
    std::vector<std::unique_ptr<Open_>> open_; // the innermost last
    std::string whole_;                        // a line that does not lie in one block
    Line last_;
    bool again_ = false;
};

} // namespace deck

#endif
