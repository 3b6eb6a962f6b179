// What each finding means, in the forms that `explain` and the documents need.
#include "account/kinds.h"
#include "kivodeck/report.h"

#include <nlohmann/json.hpp>

namespace kivodeck {

namespace {

using account::FindingKind;
using nlohmann::ordered_json;

constexpr std::size_t kWidth = 76; // of a terminal's line, with room to spare

// A text with its places for words shown as "...".
std::string PlainText(const FindingKind &kind) {
    return account::FilledText(kind, false, [](char) { return std::string("..."); });
}

std::string Indent(const std::string &text, const std::string &indent) {
    std::string out;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = text.find('\n', at);
        out += indent + text.substr(at, end - at) + "\n";
        at = end + 1;
    }
    return out;
}

std::string AsText(const FindingKind &kind) {
    std::string text = std::string(kind.word) + " (" + account::LevelWord(kind.level) + ")\n" +
                       Wrap(PlainText(kind), "  ") + "\n" + Wrap(kind.explanation, "  ");
    if (kind.example != nullptr) {
        text += "\n  A deck with this finding:\n\n" + Indent(kind.example, "    ");
    }
    return text + "\n" + Wrap(std::string("What to do: ") + kind.remedy, "  ");
}

ordered_json AsJson(const FindingKind &kind) {
    ordered_json object = {{"code", kind.word},       {"level", account::LevelWord(kind.level)},
                           {"text", PlainText(kind)}, {"explanation", kind.explanation},
                           {"example", nullptr},      {"remedy", kind.remedy}};
    if (kind.example != nullptr) {
        object["example"] = kind.example;
    }
    return object;
}

// A text for roff: hyphens are minus signs in codes, and no line begins with a dot or an apostrophe.
std::string ForRoff(const std::string &text) {
    std::string out;
    for (const char c : text) {
        out += c == '-' || c == '\\' ? "\\" + std::string(1, c == '\\' ? 'e' : c) : std::string(1, c);
    }
    return !out.empty() && (out[0] == '.' || out[0] == '\'') ? "\\&" + out : out;
}

std::string AsMan(const FindingKind &kind) {
    return ".TP\n.BR " + ForRoff(kind.word) + " \" (" + account::LevelWord(kind.level) + ")\"\n" +
           ForRoff(std::string(kind.explanation) + " " + kind.remedy) + "\n";
}

std::string AsMarkdown(const FindingKind &kind) {
    std::string row = "| `" + std::string(kind.word) + "` | " + account::LevelWord(kind.level) + " | ";
    for (const std::string &cell : {PlainText(kind), std::string(kind.remedy)}) {
        for (const char c : cell) {
            row += (c == '|' || c == '*' || c == '_' ? "\\" : "") + std::string(1, c);
        }
        row += " | ";
    }
    row.pop_back();
    return row + "\n";
}

std::string AsListLine(const FindingKind &kind) {
    std::string line = kind.word;
    line.resize(std::max<std::size_t>(line.size() + 1, 28), ' ');
    line += account::LevelWord(kind.level);
    line.resize(std::max<std::size_t>(line.size() + 1, 37), ' ');
    return line + PlainText(kind) + "\n";
}

} // namespace

std::string Wrap(const std::string &text, const std::string &indent) {
    std::string out = indent;
    std::size_t column = indent.size();
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find(' ', at), text.size());
        if (column + (end - at) > kWidth && column > indent.size()) {
            out += "\n" + indent;
            column = indent.size();
        }
        out += (column > indent.size() ? " " : "") + text.substr(at, end - at);
        column += end - at + 1;
        at = end + 1;
    }
    return out + "\n";
}

std::string ExplainAll(const std::string &format) {
    if (format == "json") {
        ordered_json codes = ordered_json::array();
        for (const FindingKind &kind : account::kKinds) {
            codes.push_back(AsJson(kind));
        }
        const ordered_json object = {{"schema_version", kSchemaVersion}, {"codes", codes}};
        return object.dump(2) + "\n";
    }
    std::string text = format == "markdown" ? "| code | level | what it says | what to do |\n|---|---|---|---|\n" : "";
    for (const FindingKind &kind : account::kKinds) {
        text += format == "man" ? AsMan(kind) : (format == "markdown" ? AsMarkdown(kind) : AsListLine(kind));
    }
    return text;
}

std::string ExplainOne(account::Code code, const std::string &format) {
    const FindingKind &kind = account::KindOf(code);
    if (format == "json") {
        ordered_json object = AsJson(kind);
        object["schema_version"] = kSchemaVersion;
        return object.dump(2) + "\n";
    }
    return format == "man" ? AsMan(kind) : (format == "markdown" ? AsMarkdown(kind) : AsText(kind));
}

} // namespace kivodeck
