// Reports as text and as JSON.
#ifndef KIVOM_KIVODECK_REPORT_H
#define KIVOM_KIVODECK_REPORT_H

#include "account/check.h"

#include <string>
#include <vector>

namespace kivodeck {

constexpr int kSchemaVersion = 1;

struct TextStyle {
    bool colour = false;
    bool all = false; // every finding; else the first ten of a code
};

// What a run wrote or removed besides its report; "" for what it did not.
struct Files {
    std::string plainDeck, mesh, removed;
    std::vector<std::string> failedChecks = {}; // of the mesh, where there is one
    std::vector<std::string> emptyGroups = {};  // of the mesh, as the plain deck has them
};

// The report of one deck: findings one a line, keywords outside the mesh, further lines, the verdict, what is said
// behind it.
std::string TextReport(const account::Report &report, const TextStyle &style, const std::string &lines = "",
                       const std::string &behind = "");

// One object: that of the deck, or for several decks {"schema_version", "decks": [...], "verdict"}.
std::string JsonReport(const std::vector<account::Report> &reports);

// The object of one deck, with its files.
std::string JsonReport(const account::Report &report, const Files &files);

// The object of a run that came to nothing: one finding without a place.
std::string JsonFailure(const std::string &code, const std::string &text);

// All codes, or one, as `explain` shows them. Formats: text, json, man (a section of the manual page), markdown (a
// table).
std::string ExplainAll(const std::string &format);
std::string ExplainOne(account::Code code, const std::string &format);

// "1 node", "2 nodes".
std::string Plural(long long count, const std::string &what);

// A text in lines that fit a terminal, each after the indent; with the last line end.
std::string Wrap(const std::string &text, const std::string &indent);

} // namespace kivodeck

#endif
