// KIVOm_plain: the plain translation as a program, with the command line of KIVOm. Its log has no dates and no times.
#include "tests/support/plain/plain.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

namespace {

// clang-format off
const char *const kPicture[] = {
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
};
// clang-format on

} // namespace

int main(int argc, char **argv) {
    std::string name;
    bool bVTK = false;
    for (int i = argc - 1; i > 0; --i) {
        name = argv[i][0] != '-' ? std::string(argv[i]).substr(0, 256) : name;
        bVTK = bVTK || PlainSame(argv[i], "--vtk");
    }
    std::cout << '\n';
    for (const char *row : kPicture) {
        std::cout << row << '\n';
    }
    std::cout << "      Mesh Translator for KIVOcom (Version: 07/04/2019)     \n\nJob started at -\n\n";
    if (name.empty()) {
        std::cout << "enter the input file name (e.g. mesh.inp): \n> ";
        std::cin >> name;
        name = name.substr(0, 256);
    }
    std::ifstream in(name, std::ios::binary);
    if (!in || std::filesystem::is_directory(name)) {
        std::cout << "\n Error> cannot open file " << name << '\n';
        return 255;
    }
    const std::string deck{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    const PlainPut put = [](const std::string &path, const std::string &text) {
        return static_cast<bool>(std::ofstream(path, std::ios::binary) << text);
    };
    std::string log;
    const bool done = PlainTranslate(name, deck, bVTK, put, &log);
    std::cout << log << (done ? "\nJob finished at -\n\n" : "");
    return done ? 0 : 255;
}
