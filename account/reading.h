// The deck as the translator's own reader takes it: the same functions, in this process, with their log caught.
//
// The records stay with the reader (abaqus/abqdeck.h), one deck at a time, from Read until the Reading is destroyed.
#ifndef KIVOM_ACCOUNT_READING_H
#define KIVOM_ACCOUNT_READING_H

#include <string>
#include <vector>

namespace account {

enum class SectionKind : char { kNone, kNodes, kElements, kNodeSet, kElementSet, kSurface };

// Why a section left no record.
enum class Refusal : char { kNone, kWord, kElementType, kSurfaceType };

// One section of the five kinds, as the log tells of it.
struct ReadSection {
    long long line; // at which its keyword line begins, from 1
    SectionKind kind;
    Refusal refusal;
    bool longValue;   // a name was longer than the reader keeps
    std::string word; // the refused word or type
};

class Reading {
  public:
    // Reads the deck of that path. Nothing appears on standard output, which is as before afterwards.
    explicit Reading(const char *path);
    ~Reading();
    Reading(const Reading &) = delete;
    Reading &operator=(const Reading &) = delete;

    bool opened() const {
        return opened_;
    }
    bool readToEnd() const {
        return readToEnd_;
    }

    // Sections in the order of the deck; of keywords that the reader passes over there is none.
    const std::vector<ReadSection> &sections() const {
        return sections_;
    }

    // Lines at which the reader dropped what is beyond its line's length, ascending.
    const std::vector<long long> &longLines() const {
        return longLines_;
    }

    // Orders, numbers and resolves the records: rows are by number then, no longer as they stand in the deck.
    void Resolve();

  private:
    bool opened_ = false;
    bool readToEnd_ = false;
    std::vector<ReadSection> sections_;
    std::vector<long long> longLines_;
};

// The reader's functions, and those of support/ that read decks and look up numbers, end the process when memory is
// short. True while an AtWork lives: whoever must not end so looks here from a function registered with std::atexit.
bool ReaderAtWork();

struct AtWork {
    AtWork();
    ~AtWork();
    AtWork(const AtWork &) = delete;
    AtWork &operator=(const AtWork &) = delete;
};

} // namespace account

#endif
