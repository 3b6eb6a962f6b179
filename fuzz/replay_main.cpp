// Runs a fuzz target over given inputs, with any compiler: each argument is a file or a folder of files.
#include "fuzz/oracle.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

namespace fs = std::filesystem;

namespace {

void Replay(const fs::path &path) {
    std::ifstream in(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    std::fprintf(stderr, "%s\n", path.c_str()); // the last one named is the one that failed
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(bytes.data()), bytes.size());
}

} // namespace

int main(int argc, char **argv) {
    int n = 0;
    for (int i = 1; i < argc; ++i) {
        if (fs::is_directory(argv[i])) {
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
