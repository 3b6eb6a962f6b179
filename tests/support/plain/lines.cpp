// The reader's rules for lines, fields, names and numbers.
#include "tests/support/plain/plain.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr std::size_t kLongestLine = 5119;
constexpr std::size_t kLongestField = 256;

const std::string kKept = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789*+,-.=_'\"!#$%&()/:<>?@[]^`{|}~\n";

std::string Report(long long line) {
    char text[80];
    std::snprintf(text, sizeof text, "\n  Error> line %lld is longer than 5119 characters.\n", line);
    return text;
}

std::string WithoutBlanks(std::string name) {
    name.erase(std::remove(name.begin(), name.end(), ' '), name.end());
    return name;
}

template <class Value> std::string Formatted(const char *format, Value value) {
    char text[400]; // the longest are doubles without an exponent
    std::snprintf(text, sizeof text, format, value);
    return text;
}

} // namespace

bool PlainNextLine(PlainText *text, std::string *line) {
    line->clear();
    if (text->at >= text->text.size()) {
        return false;
    }
    std::size_t end = text->text.find('\n', text->at);
    end = end == std::string::npos ? text->text.size() : end;
    *line = text->text.substr(text->at, end - text->at);
    *line = line->substr(0, line->find('\0'));
    text->at = end + 1;
    ++text->nLines;
    return true;
}

std::string PlainCompressed(const std::string &line) {
    std::string compressed;
    for (char c : line.substr(0, line.find("**"))) {
        if (c >= 'a' && c <= 'z') {
            c = static_cast<char>(c - 'a' + 'A');
        }
        if (kKept.find(c) != std::string::npos) {
            compressed += c;
        }
    }
    return compressed;
}

bool PlainNextLogical(PlainText *text, PlainLine *line) {
    *line = PlainLine{};
    std::string physical;
    while (PlainNextLine(text, &physical)) {
        const std::string piece = PlainCompressed(physical);
        if (piece.empty()) {
            continue;
        }
        line->text = piece.substr(0, kLongestLine);
        line->bContinues = piece.back() == ',';
        line->bCut = piece.size() > kLongestLine;
        line->log = line->bCut ? Report(text->nLines) : "";
        return true;
    }
    return false;
}

void PlainJoin(PlainText *text, PlainLine *line) {
    std::string physical;
    while (line->bContinues && PlainNextLine(text, &physical)) {
        const std::string piece = PlainCompressed(physical);
        if (piece.empty()) {
            continue;
        }
        line->bContinues = piece.back() == ',';
        if (line->bCut) {
            continue;
        }
        if (line->text.size() + piece.size() > kLongestLine) {
            line->bCut = true;
            line->log += Report(text->nLines);
        } else {
            line->text += piece;
        }
    }
}

bool PlainParameter(const std::string &line, const std::string &name, std::string *value) {
    value->clear();
    const std::size_t at = line.find(name + "=");
    if (at == std::string::npos) {
        return false;
    }
    const std::size_t from = at + name.size() + 1;
    *value = line.substr(from, line.find(',', from) - from);
    return true;
}

std::string PlainGrab(std::string *line, char separator) {
    std::string field;
    for (char &c : *line) {
        if (c == separator) {
            c = ' ';
            break;
        }
        if (c != ' ' && field.size() < kLongestField) {
            field += c;
            c = ' ';
        }
    }
    return field;
}

int PlainINT(const std::string &field) {
    int value = 0;
    std::sscanf(field.c_str(), "%d", &value);
    return value;
}

double PlainDBL(const std::string &field) {
    double value = 0;
    std::sscanf(field.c_str(), "%le", &value);
    return value;
}

bool PlainSame(const std::string &a, const std::string &b) {
    if (WithoutBlanks(a).empty()) {
        return b.empty();
    }
    return (b.empty() || b.back() != ' ') && WithoutBlanks(a) == WithoutBlanks(b);
}

bool PlainSamn(const std::string &a, const std::string &b, int n) {
    const std::string x = WithoutBlanks(a);
    const auto length = static_cast<std::size_t>(n);
    // For n = 0 the walk still compares before it counts: only an `a` of blanks agrees.
    return n == 0 ? x.empty() : x.size() >= length && x.substr(0, length) == WithoutBlanks(b).substr(0, length);
}

std::string PlainField(const char *format, int value) {
    return Formatted(format, value);
}

std::string PlainField(const char *format, double value) {
    return Formatted(format, value);
}
