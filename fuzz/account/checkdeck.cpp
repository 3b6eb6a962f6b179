// The account of any deck: what it says is whole, and its reading is what the translator then holds.
//
// The input is the deck. Rules: nothing crashes; the same deck gives the same report; every finding has its text; the
// report counts what it lists; `reading` is the translator's mesh. Decks are files: the account reads them twice.
#include "fuzz/oracle.h"

#include "account/check.h"
#include "tests/readings.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace {

// A file of this process, in memory where the machine has such a folder.
std::string DeckPath() {
    static const std::string folder = std::filesystem::is_directory("/dev/shm") ? "/dev/shm/" : "/tmp/";
    static const std::string path = folder + "kivom_checkdeck_" + std::to_string(getpid()) + ".inp";
    return path;
}

// More sections than tags are counted for would say nothing new.
constexpr std::size_t kMostBytes = 1 << 16;

std::string TextOf(const account::Report &report) {
    std::string text;
    for (const account::Finding &finding : report.findings) {
        const std::string words = account::TextOf(finding);
        Require(!words.empty(), "a finding has a text");
        text += std::to_string(finding.place.line) + account::KindOf(finding.code).word + words;
    }
    return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size > kMostBytes) {
        return 0;
    }
    std::ofstream(DeckPath(), std::ios::binary) << std::string(reinterpret_cast<const char *>(data), size);
    const account::Report report = account::CheckDeck(DeckPath());
    const long long counted = report.errors + report.warnings + report.notes;
    Require(counted == static_cast<long long>(report.findings.size()), "the verdict counts the findings");
    const std::string text = TextOf(report);
    Require(text == TextOf(account::CheckDeck(DeckPath())), "a deck has one report");
    const std::string difference = readings::DifferenceToMesh(DeckPath(), report.reading);
    Require(difference.empty(), ("the reading is what the translator holds: " + difference).c_str());
    return 0;
}
