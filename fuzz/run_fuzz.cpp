// Whole runs: from a deck to both writers, in memory.
//
// The first byte of the input chooses how many bytes a read gives, the second what else varies; the rest is the
// deck. Rules: log and files are, to the byte, those of the plain translation; a second run with the deck in one block,
// other growth steps, another kind of file and other garbage in fresh memory gives the same; all memory is given back.
#include "fuzz/oracle.h"

#include "tests/support/fakesystem.h"
#include "tests/support/runs.h"

#include <string>

namespace {

constexpr std::size_t kReadSizes[] = {1, 2, 3, 5, 8, 13, 37, 128, 1000, 5120};
constexpr std::size_t kNumReadSizes = sizeof kReadSizes / sizeof kReadSizes[0];

// Bits of the second byte.
constexpr unsigned kNoVTK = 1;
constexpr unsigned kNoSeek = 2;

// Most memory: a section's keyword line has six characters at least and makes a record and a group of 300 bytes
// each; blocks for reading and writing come on top.
constexpr std::size_t kHeldPerByte = 256;
constexpr std::size_t kHeldAlways = 1 << 20;

struct Variant {
    std::size_t readSize;
    bool bCanSeek;
    int firstCapacity;
    unsigned char pattern;
};

Run RunWith(const std::string &deck, bool bVTK, const Variant &variant) {
    fake::Reset();
    fake::ShortReads(variant.readSize);
    fake::LetFilesSeek(variant.bCanSeek);
    fake::GrowFrom(variant.firstCapacity);
    fake::FillFreshWith(variant.pattern);
    const std::uint64_t before = fake::BytesHeld();
    fake::LimitMemory(before + deck.size() * kHeldPerByte + kHeldAlways);
    Run run = RunProgram(deck, bVTK);
    Require(fake::BytesHeld() == before, "all memory is given back");
    Require(fake::FilesOpen() == 0, "all files are closed");
    return run;
}

void RequireSame(const Run &wanted, const Run &found, const char *rule) {
    const std::string difference = FirstDifference(wanted, found);
    Require(difference.empty(), (rule + (": " + difference)).c_str());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size < 2) {
        return 0;
    }
    const bool bVTK = (data[1] & kNoVTK) == 0;
    const bool bCanSeek = (data[1] & kNoSeek) == 0;
    const std::string deck(reinterpret_cast<const char *>(data) + 2, size - 2);
    const Run first = RunWith(deck, bVTK, {kReadSizes[data[0] % kNumReadSizes], bCanSeek, 2, 0xa5});
    RequireSame(RunPlain(deck, bVTK), first, "a run gives what the plain translation gives");
    const Run second = RunWith(deck, bVTK, {1 << 20, !bCanSeek, 50, 0x01});
    RequireSame(first, second, "a run does not depend on how the deck is read");
    return 0;
}
