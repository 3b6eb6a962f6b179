// Driving the translator's reader section by section, and reading its log.
#include "account/reading.h"

#include "account/log.h"

#include "abaqus/abqcolumns.h"
#include "abaqus/abqdeck.h"
#include "abaqus/abqline.h"
#include "support/lines.h"

#include <cstdlib>
#include <cstring>

namespace account {

namespace {

bool atWork = false;

// What a section's first line of log begins with.
struct Opening {
    const char *words;
    SectionKind kind;
};

constexpr Opening kOpenings[] = {
    {"  Reading Nodes ", SectionKind::kNodes},     {"  Reading Elements ", SectionKind::kElements},
    {"  Reading NSET ", SectionKind::kNodeSet},    {"  Reading ELSET ", SectionKind::kElementSet},
    {"  Reading Surface ", SectionKind::kSurface},
};

// What tells that a section was refused; the word stands behind it, and the line ends in `end`.
struct Message {
    const char *words;
    Refusal refusal;
    const char *end;
};

constexpr Message kRefusals[] = {
    {"  Error> Undesirable parameters: ", Refusal::kWord, "."},
    {"  Error> Unrecognized element type: ", Refusal::kElementType, "."},
    {"  Error> only ELEMENT surface type is supported (", Refusal::kSurfaceType, ")."},
};

constexpr char kLongLine[] = "  Error> line ";
constexpr char kLongValue[] = "  Error> the value of ";

// The rest of the text behind the words, or null when it does not begin with them.
const char *Behind(const std::string &text, const char *words) {
    const std::size_t length = std::strlen(words);
    return text.compare(0, length, words) == 0 ? text.c_str() + length : nullptr;
}

// What one line of the log says of the section in hand.
void TakeLogLine(const std::string &line, ReadSection *section, std::vector<long long> *longLines) {
    for (const Opening &opening : kOpenings) {
        if (Behind(line, opening.words) != nullptr) {
            section->kind = opening.kind;
        }
    }
    for (const Message &message : kRefusals) {
        if (const char *word = Behind(line, message.words)) {
            section->refusal = message.refusal;
            section->word = word;
            section->word.resize(section->word.size() - std::strlen(message.end));
        }
    }
    if (const char *number = Behind(line, kLongLine)) {
        longLines->push_back(std::atoll(number));
    }
    section->longValue = section->longValue || Behind(line, kLongValue) != nullptr;
}

} // namespace

Reading::Reading(const char *path) {
    ReadSection section{};
    LogCatcher log([&](const std::string &line) { TakeLogLine(line, &section, &longLines_); });
    LineSource stream;
    opened_ = ABQOpenDeck(&stream, path);
    if (!opened_) {
        return;
    }
    ABQDeck()->bReadOn = true;
    while (ABQFindSection(&stream)) {
        section.line = ABQLineNumber();
        ABQReadSection(&stream);
        log.Flush();
        if (section.kind != SectionKind::kNone) {
            sections_.push_back(section);
        }
        section = ReadSection{};
    }
    readToEnd_ = !stream.bFailed;
    CloseLines(&stream);
    ABQReleaseSpareColumns();
}

Reading::~Reading() {
    if (opened_) {
        ABQReleaseDeck();
    }
}

void Reading::Resolve() {
    LogCatcher log([](const std::string &) {});
    ABQResolveDeck();
}

AtWork::AtWork() {
    atWork = true;
}

AtWork::~AtWork() {
    atWork = false;
}

bool ReaderAtWork() {
    return atWork;
}

} // namespace account
