// Any deck made plain.
//
// The input is the deck; its size chooses groups and overlaps. Rules: nothing crashes; a plain deck has no error of its
// own; a deck that loses nothing can be made plain; a plain deck made plain again is the same text.
#include "fuzz/oracle.h"
#include "tests/support/fakesystem.h"

#include "kivodeck/flat.h"

#include <algorithm>
#include <string>

namespace {

// Longer decks would say nothing new.
constexpr std::size_t kMostBytes = 1 << 16;

// Generators may make as many elements as a person could want; here so many are enough.
constexpr deck::Limits kLimits{100000};

kivodeck::FlatResult Make(const std::string &from, const std::string &to, const flatten::Options &options) {
    const kivodeck::FlatResult result = kivodeck::MakeFlat({from, to, "map.tsv", options, false, kLimits});
    const auto &findings = result.report.findings;
    const bool wrong = std::any_of(findings.begin(), findings.end(), [](const account::Finding &finding) {
        return finding.code == account::Code::plainDeckWrong;
    });
    Require(!wrong, "the plain deck has no error of its own");
    Require(result.made || result.report.errors > 0, "what cannot be made plain has an error");
    return result;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size > kMostBytes) {
        return 0;
    }
    fake::Reset();
    fake::PutFile("deck.inp", std::string(reinterpret_cast<const char *>(data), size));
    flatten::Options options;
    options.groups = static_cast<flatten::Groups>(size % 3);
    options.overlaps = static_cast<flatten::Overlaps>(size / 3 % 3);
    if (!Make("deck.inp", "flat.inp", options).made) {
        const account::Report report = account::CheckDeck("deck.inp", kLimits);
        Require(report.errors + report.warnings > 0, "a deck that loses nothing can be made plain");
        return 0;
    }
    Require(Make("flat.inp", "again.inp", {}).made, "a plain deck can be made plain");
    Require(fake::GetFile("flat.inp") == fake::GetFile("again.inp"), "a plain deck stays what it is");
    return 0;
}
