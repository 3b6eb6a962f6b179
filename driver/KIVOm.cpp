// One job from start to end, and its log.
#include "driver/KIVOm.h"

#include "abaqus/LoadABQ.h"
#include "output/DumpKIVO.h"
#include "output/DumpVTK.h"
#include "store/COM.h"
#include "support/frame.h"
#include "support/system.h"
#include "translate/MeshAll.h"

#include <cstdio>
#include <cstdlib>

int NumArguments = 0;
char **c1Arguments = nullptr;

namespace {

constexpr int kBannerRows = 12; // eleven of the picture, one with the title
constexpr int kBannerRoom = 64;

// clang-format off
constexpr char kBanner[kBannerRows][kBannerRoom] = {
    "  ***      ****  *********  ***         ***     *******     ",
    "  ***     ****   *********   ***       ***    ***********   ",
    "  ***    ****       ***      ***       ***   ****     ****  ",
    "  ***   ****        ***       ***     ***    ***       ***  ",
    "  ***  ****         ***       ***     ***    ***       ***  ",
    "  *******           ***        ***   ***     ***       ***  ",
    "  ***  ****         ***         *** ***      ***       ***  ",
    "  ***   ****        ***         *** ***      ***       ***  ",
    "  ***    ****       ***          *****       ****     ****  ",
    "  ***     ****   *********       *****        ***********   ",
    "  ***      ****  *********        ***           *******     ",
    "      Mesh Translator for KIVOcom (Version: 07/04/2019)     ",
};
// clang-format on

// The first argument that does not begin with "-", cut to 256 characters; empty when there is none.
void NameFromArguments(char *name) {
    name[0] = '\0';
    for (int i = 1; i < NumArguments; ++i) {
        if (c1Arguments[i][0] != '-') {
            std::snprintf(name, kNameBuffer, "%s", c1Arguments[i]);
            return;
        }
    }
}

// One word from standard input, at most 256 characters of it; stays empty at the end of the input.
void NameFromPrompt(char *name) {
    std::printf("enter the input file name (e.g. mesh.inp): \n> ");
    static_assert(kNameLength == 256, "the width in the format");
    if (std::scanf("%256s", name) != 1) {
        name[0] = '\0';
    }
}

bool WantsVTK() {
    for (int i = 1; i < NumArguments; ++i) {
        if (AreNamesSame(c1Arguments[i], "--vtk") != 0) {
            return true;
        }
    }
    return false;
}

void DumpAll() {
    const double start = ProcessorSeconds();
    std::printf("\nDumping files ...");
    DumpKIVO();
    if (WantsVTK()) {
        DumpVTK();
    }
    std::printf("\nElapsed Time: %f sec.\n", ProcessorSeconds() - start);
}

// Exit status of a run that has come to its end: 0, or 1 when a file or the log could not be written whole, or when
// contents of the memory were lost.
int ExitStatus() {
    EndIfContentsLost();
    if (std::ferror(stdout) != 0) {
        std::fprintf(stderr, "KIVOm: cannot write the log\n");
        return EXIT_FAILURE;
    }
    return AnyDumpFailed() ? EXIT_FAILURE : EXIT_SUCCESS;
}

} // namespace

void ShowLogKIVOM(FILE *stream) {
    std::fprintf(stream, "\n");
    for (const char *row : kBanner) {
        std::fprintf(stream, "%s\n", row);
    }
    std::fprintf(stream, "\n");
}

void LoadAll() {
    char name[kNameBuffer];
    NameFromArguments(name);
    if (name[0] == '\0') {
        NameFromPrompt(name);
    }
    const double start = ProcessorSeconds();
    LoadABQ(name);
    std::printf("Elapsed Time: %f sec.\n", ProcessorSeconds() - start);
}

int RunKIVOM(int argc, char **argv) {
    NumArguments = argc;
    c1Arguments = argv;
    SystemPrepare();
    std::setbuf(stdout, nullptr); // the log of all phases appears at once and in order
    ShowLogKIVOM(stdout);
    std::printf("Job started at ");
    timestamp();
    std::printf("\n");

    LoadAll();
    MeshAll();
    DumpAll();
    FreeCOM();

    std::printf("\nJob finished at ");
    timestamp();
    std::printf("\n");
    return ExitStatus();
}
