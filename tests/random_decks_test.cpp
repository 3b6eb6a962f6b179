// Random decks through the program and through the plain translation: log and files agree to the byte.
//
//     random_decks_test [--count N] [--seed S] [--show]
//
// Deck number i, counted from S, is wild when i is odd; with --show it is written to standard output instead.
#include "tests/support/decks.h"
#include "tests/support/fakesystem.h"
#include "tests/support/runs.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

struct Tally {
    long nFailed, nCorrected, nFaces, nErrors; // decks
};

// The number of elements that the log says were corrected.
int Corrected(const std::string &log) {
    const std::size_t at = log.find("  Numbering order of ");
    return at == std::string::npos ? 0 : std::atoi(log.c_str() + at + 21);
}

// What is wrong with the run of the deck; empty when nothing is.
std::string Check(std::uint64_t seed, DeckKind kind, Tally *tally) {
    const RandomDeck deck = MakeRandomDeck(seed, kind);
    fake::Reset();
    fake::GrowFrom(seed % 3 == 0 ? 100000 : 2);
    fake::ShortReads(seed % 5 == 0 ? 1 + seed % 97 : 0);
    const Run run = RunProgram(deck.text, true);
    const int nCorrected = Corrected(run.log);
    tally->nCorrected += nCorrected > 0 ? 1 : 0;
    tally->nFaces += run.files.count("_Faces.vtk") == 1 ? 1 : 0;
    tally->nErrors += run.log.find("Error>") != std::string::npos ? 1 : 0;
    if (kind == DeckKind::kMild && (nCorrected != deck.nTurned || run.log.find("Error>") != std::string::npos)) {
        return "a mild deck of " + std::to_string(deck.nTurned) + " elements to be corrected has log\n" + run.log;
    }
    return FirstDifference(RunPlain(deck.text, true), run);
}

} // namespace

int main(int argc, char **argv) {
    std::uint64_t count = 400, seed = 1;
    bool bShow = false;
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        bShow = bShow || word == "--show";
        std::uint64_t *number = word == "--count" ? &count : word == "--seed" ? &seed : nullptr;
        if (number != nullptr && i + 1 < argc) {
            *number = std::strtoull(argv[++i], nullptr, 10);
        }
    }
    Tally tally{};
    for (std::uint64_t i = seed; i < seed + count; ++i) {
        const DeckKind kind = i % 2 == 1 ? DeckKind::kWild : DeckKind::kMild;
        if (bShow) {
            const std::string text = MakeRandomDeck(i, kind).text;
            std::fwrite(text.data(), 1, text.size(), stdout);
            continue;
        }
        const std::string difference = Check(i, kind, &tally);
        if (!difference.empty()) {
            std::printf("seed %llu: %s\n", static_cast<unsigned long long>(i), difference.c_str());
            ++tally.nFailed;
        }
    }
    if (bShow) {
        return 0;
    }
    std::printf("%llu decks, %ld failed; elements corrected in %ld, faces in %ld, errors reported in %ld\n",
                static_cast<unsigned long long>(count), tally.nFailed, tally.nCorrected, tally.nFaces, tally.nErrors);
    // Decks that show nothing would prove nothing.
    const bool bVaried = count < 100 || (tally.nCorrected > 20 && tally.nFaces > 20 && tally.nErrors > 20);
    return tally.nFailed == 0 && bVaried ? 0 : 1;
}
