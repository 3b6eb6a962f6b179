// The measures of shape of cells whose corners come on standard input, as doubles: x y z, three or four corners a cell.
// Argument: the number of corners. Standard output: the measures of each cell, as doubles.
#include "audit/quality.h"
#include "support/measures.h"

#include <cstdio>
#include <cstdlib>

namespace {

template <std::size_t kCorners> int Measure() {
    Point corners[kCorners];
    while (std::fread(corners, sizeof corners, 1, stdin) == 1) {
        const audit::Values values = audit::QualityOf(corners);
        if (std::fwrite(values.data(), sizeof values, 1, stdout) != 1) {
            return 1;
        }
    }
    return 0;
}

} // namespace

int main(int argc, char **argv) {
    return argc > 1 && std::atoi(argv[1]) == 4 ? Measure<4>() : Measure<3>();
}
