// What the checks and measures of an audit ask for.
#include "kivodeck/audit.h"
#include "kivodeck/report.h"

#include <nlohmann/json.hpp>

#include <cstdio>

namespace kivodeck {

namespace {

using audit::CheckKind;
using audit::MeasureKind;
using nlohmann::ordered_json;

std::string RangeText(const audit::Range &range) {
    char text[64];
    std::snprintf(text, sizeof text, "%g to %g", range.least, range.most);
    return text;
}

std::string Acceptable(const MeasureKind &kind) {
    return "acceptable: " + RangeText(kind.acceptable[0]) + " (triangles), " + RangeText(kind.acceptable[1]) +
           " (tetrahedra); Sandia report SAND2007-1751";
}

std::string CheckText(const CheckKind &kind) {
    return std::string(kind.word) + " (check)\n" + Wrap(kind.fault, "  ") + "\n" + Wrap(kind.explanation, "  ") + "\n" +
           Wrap(std::string("What to do: ") + kind.remedy, "  ");
}

std::string MeasureText(const MeasureKind &kind) {
    std::string text = std::string(kind.word) + " (measure)\n";
    const std::string formulas = kind.formulas;
    for (std::size_t at = 0; at < formulas.size();) {
        const std::size_t end = std::min(formulas.find('\n', at), formulas.size());
        text += Wrap(formulas.substr(at, end - at), "  ");
        at = end + 1;
    }
    return text + "\n" + Wrap(kind.explanation, "  ") + "\n" + Wrap(Acceptable(kind), "  ");
}

ordered_json CheckJson(const CheckKind &kind) {
    return {{"check", kind.word}, {"text", kind.fault}, {"explanation", kind.explanation}, {"remedy", kind.remedy}};
}

ordered_json MeasureJson(const MeasureKind &kind) {
    const auto range = [](const audit::Range &r) { return ordered_json::array({r.least, r.most}); };
    return {{"measure", kind.word},
            {"formulas", kind.formulas},
            {"explanation", kind.explanation},
            {"acceptable", {{"triangles", range(kind.acceptable[0])}, {"tetrahedra", range(kind.acceptable[1])}}}};
}

std::string Show(const std::string &text, ordered_json json, const std::string &format) {
    json["schema_version"] = kSchemaVersion;
    return format == "json" ? json.dump(2) + "\n" : text;
}

std::string ListLine(const char *word, const char *kind, const std::string &text) {
    char line[64];
    std::snprintf(line, sizeof line, "%-27s %-8s ", word, kind);
    return line + text + "\n";
}

} // namespace

bool ExplainAudit(const std::string &name, const std::string &format, std::string *text) {
    audit::Check check{};
    audit::Measure measure{};
    if (audit::FindCheck(name, &check)) {
        const CheckKind &kind = audit::KindOf(check);
        *text += Show(CheckText(kind), CheckJson(kind), format);
    } else if (audit::FindMeasure(name, &measure)) {
        const MeasureKind &kind = audit::KindOf(measure);
        *text += Show(MeasureText(kind), MeasureJson(kind), format);
    } else {
        return false;
    }
    return true;
}

std::string AuditNames() {
    std::string text;
    for (int check = 0; check < audit::kChecks; ++check) {
        const CheckKind &kind = audit::KindOf(static_cast<audit::Check>(check));
        text += ListLine(kind.word, "check", kind.fault);
    }
    for (int m = 0; m < audit::kMeasures; ++m) {
        const MeasureKind &kind = audit::KindOf(static_cast<audit::Measure>(m));
        const std::string explanation = kind.explanation;
        text += ListLine(kind.word, "measure", explanation.substr(0, explanation.find_first_of(",:")));
    }
    return text;
}

} // namespace kivodeck
