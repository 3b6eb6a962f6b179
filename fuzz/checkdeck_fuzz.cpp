// The account of any deck: what it says is whole, and its reading is what the translator then holds.
//
// The input is the deck, in a folder with a file that it may include. Rules: nothing crashes; the same deck gives the
// same report; every finding has its text; the report counts what it lists; `reading` is the translator's mesh. Decks
// are files: the account reads them twice. An input that begins with no '*' is one for `run`, whose first two bytes
// choose how it is read there.
#include "fuzz/oracle.h"

#include "account/check.h"
#include "tests/readings.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace fs = std::filesystem;

namespace {

// The file that decks may include: a mesh and sets of its own, which include the deck again.
constexpr char kIncluded[] = "*Node, nset=Inner\n7, 0., 0.\n8, 1., 0.\n9, 0., 1.\n"
                             "*Element, type=CPS3, elset=Inner\n7, 7, 8, 9\n"
                             "*Nset, nset=Inner, generate\n7, 9\n*Include, input=deck.inp\n";

// A folder of this process, in memory where the machine has such a place; it goes with the process.
class Folder {
  public:
    Folder()
        : path_(fs::path(fs::is_directory("/dev/shm") ? "/dev/shm" : "/tmp") /
                ("kivom_checkdeck_" + std::to_string(getpid()))) {
        fs::create_directory(path_);
        std::ofstream(path_ / "part.inp") << kIncluded;
    }
    ~Folder() {
        fs::remove_all(path_);
    }
    std::string Deck() const {
        return (path_ / "deck.inp").string();
    }

  private:
    fs::path path_;
};

// More sections than tags are counted for would say nothing new.
constexpr std::size_t kMostBytes = 1 << 16;

// Generators may make as many elements as a person could want; here so many are enough.
constexpr deck::Limits kLimits{100000};

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
    static const Folder folder;
    const std::string path = folder.Deck();
    const std::size_t before = size > 1 && data[0] != '*' ? 2 : 0;
    std::ofstream(path, std::ios::binary) << std::string(reinterpret_cast<const char *>(data) + before, size - before);
    const account::Report report = account::CheckDeck(path, kLimits);
    const long long counted = report.errors + report.warnings + report.notes;
    Require(counted == static_cast<long long>(report.findings.size()), "the verdict counts the findings");
    const std::string text = TextOf(report);
    Require(text == TextOf(account::CheckDeck(path, kLimits)), "a deck has one report");
    const std::string difference = readings::DifferenceToMesh(path, report.reading);
    Require(difference.empty(), ("the reading is what the translator holds: " + difference).c_str());
    return 0;
}
