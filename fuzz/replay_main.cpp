// Runs a fuzz target over given inputs, with any compiler: each argument is a file or a folder of files. With
// "--random N" N inputs made at random follow, half of them of the pieces that decks are made of.
#include "fuzz/oracle.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

namespace fs = std::filesystem;

namespace {

const std::string kNumbers[] = {
    "1",   "23",    "456789", "0.5", "-1.25e-3", "7",    "2147483648",  "-7",    "+7",  "0",     "007",
    "1 2", "",      "x",      "1.",  ".5",       "+2.5", "1e5",         "1E+05", "1d5", "0x1p3", "1234567890",
    "inf", "1e400", "-0.",    "1e",  "-",        "1 .5", "18446744073", "SET_1", "S2",  "nan"};
const std::string kEnds[] = {",",    ",",      ",",  ",", ", ",  " ,", "\n",   "\n",     ",\n", "\t,", "\n*",
                             "\r\n", " **c\n", "\r", " ", "\n ", "",   ",,\n", "\n\n\n", ";,",  "**",  "*"};

template <class List> const std::string &OneOf(const List &list, std::mt19937_64 *random) {
    // The first few half of the time: whole rows of plain numbers must come up, too.
    return list[(*random)() % ((*random)() % 2 == 0 ? 7 : std::size(list))];
}

void Run(const std::string &bytes) {
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(bytes.data()), bytes.size());
}

void Replay(const fs::path &path) {
    std::ifstream in(path, std::ios::binary);
    std::fprintf(stderr, "%s\n", path.c_str()); // the last one named is the one that failed
    Run({std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()});
}

void RunRandom(int n) {
    for (int i = 0; i < n; ++i) {
        std::mt19937_64 random(static_cast<std::uint64_t>(i));
        std::string bytes;
        for (std::size_t left = i % 2 == 0 ? random() % 600 : 3; left > 0; --left) {
            bytes += static_cast<char>(random());
        }
        for (std::size_t left = i % 2 == 0 ? 0 : 3 * (random() % 30); left > 0; --left) {
            bytes += OneOf(kNumbers, &random) + OneOf(kEnds, &random);
            bytes += random() % 500 == 0 ? std::string(random() % 400, '7') : ""; // a field may be too long
        }
        Run(bytes);
    }
}

} // namespace

int main(int argc, char **argv) {
    int n = 0;
    for (int i = 1; i < argc; ++i) {
        if (std::string(argv[i]) == "--random" && i + 1 < argc) {
            RunRandom(std::atoi(argv[++i]));
        } else if (fs::is_directory(argv[i])) {
            for (const auto &entry : fs::directory_iterator(argv[i])) {
                if (entry.is_regular_file() && entry.path().filename() != ".keep") { // keeps a folder without finds
                    Replay(entry.path());
                    ++n;
                }
            }
        } else if (fs::is_regular_file(argv[i])) {
            Replay(argv[i]);
            ++n;
        }
    }
    std::fprintf(stderr, "%d inputs\n", n);
    return n > 0 ? 0 : 1; // an empty replay proves nothing
}
