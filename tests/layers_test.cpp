// The law of the layers. The translator: driver -> abaqus, translate, output -> store -> support; the three in the
// middle never include one another, and a room is entered through its folder's door only. What stands beside it:
// kivodeck -> account, flatten, audit -> deck, meshfile -> support; the translator knows none of these.
#include <gtest/gtest.h>

#include <cctype>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

// Folders that each folder may include.
const std::map<std::string, std::set<std::string>> kMayInclude{
    {"driver", {"driver", "abaqus", "translate", "output", "store", "support"}},
    {"abaqus", {"abaqus", "store", "support"}},
    {"translate", {"translate", "store", "support"}},
    {"output", {"output", "store", "support"}},
    {"store", {"store", "support"}},
    {"support", {"support"}},
    {"kivodeck",
     {"kivodeck", "account", "flatten", "audit", "deck", "meshfile", "driver", "abaqus", "translate", "output", "store",
      "support"}},
    {"account", {"account", "deck", "abaqus", "store", "support"}},
    {"flatten", {"flatten", "deck", "abaqus", "support"}},
    {"audit", {"audit", "meshfile", "support"}},
    {"deck", {"deck", "support"}},
    {"meshfile", {"meshfile", "support"}},
};

// Rooms that are open as a whole to those who may include them.
const std::set<std::string> kOpen{"store", "support", "account", "flatten", "audit", "deck", "meshfile"};

bool IsThere(const std::string &folder) {
    return fs::is_directory(fs::path(KIVOM_SOURCES) / folder);
}

struct Include {
    std::string folder; // of the file that includes
    std::string file;
    std::string included;
    bool system; // <...>
};

// The header that the line includes, with the mark before it; empty for any other line.
std::string IncludedBy(const std::string &line) {
    std::size_t at = line.find_first_not_of(" \t");
    if (at == std::string::npos || line[at] != '#') {
        return "";
    }
    at = line.find_first_not_of(" \t", at + 1);
    if (at == std::string::npos || line.compare(at, 7, "include") != 0) {
        return "";
    }
    at = line.find_first_of("<\"", at);
    return at == std::string::npos ? "" : line.substr(at, line.find_first_of(">\"", at + 1) - at);
}

std::vector<Include> AllIncludes() {
    std::vector<Include> includes;
    for (const auto &folder : kMayInclude) {
        if (!IsThere(folder.first)) {
            continue;
        }
        for (const auto &entry : fs::recursive_directory_iterator(fs::path(KIVOM_SOURCES) / folder.first)) {
            const std::string extension = entry.path().extension().string();
            if (extension != ".cpp" && extension != ".h") {
                continue;
            }
            std::ifstream in(entry.path());
            for (std::string line; std::getline(in, line);) {
                const std::string included = IncludedBy(line);
                if (!included.empty()) {
                    includes.push_back(
                        {folder.first, entry.path().filename().string(), included.substr(1), included[0] == '<'});
                }
            }
        }
    }
    return includes;
}

std::string FolderOf(const Include &include) {
    return fs::path(include.included).parent_path().string();
}

TEST(Layers, EveryIncludeIsSeen) {
    std::set<std::string> folders;
    for (const Include &include : AllIncludes()) {
        folders.insert(include.folder);
    }
    for (const auto &folder : kMayInclude) {
        EXPECT_EQ(folders.count(folder.first) == 1, IsThere(folder.first)) << folder.first;
    }
    EXPECT_GT(AllIncludes().size(), 100u);
}

TEST(Layers, NoFolderIncludesOneAboveItOrBesideIt) {
    for (const Include &include : AllIncludes()) {
        if (!include.system) {
            EXPECT_EQ(kMayInclude.at(include.folder).count(FolderOf(include)), 1u)
                << include.folder << "/" << include.file << " includes " << include.included;
        }
    }
}

// Doors have capitals in their names or are named like their folder.
bool IsRoom(const Include &include) {
    const std::string folder = FolderOf(include);
    const std::string name = fs::path(include.included).filename().string();
    return kOpen.count(folder) == 0 && name != folder + ".h" && std::islower(static_cast<unsigned char>(name[0])) != 0;
}

TEST(Layers, NoFolderIncludesARoomOfAnother) {
    for (const Include &include : AllIncludes()) {
        const bool itsReader = include.folder == "account" && FolderOf(include) == "abaqus"; // it looks at the records
        if (!include.system && include.folder != FolderOf(include) && !itsReader) {
            EXPECT_FALSE(IsRoom(include)) << include.folder << "/" << include.file << " includes " << include.included;
        }
    }
}

// One for files and memory, one for the terminal.
TEST(Layers, OnlyTwoFilesCallTheSystem) {
    const std::set<std::string> callers{"support/system.cpp", "kivodeck/terminal.cpp"};
    const std::set<std::string> system{"unistd.h", "fcntl.h", "malloc.h", "signal.h", "csignal"};
    for (const Include &include : AllIncludes()) {
        if (include.system && (system.count(include.included) == 1 || include.included.compare(0, 4, "sys/") == 0)) {
            EXPECT_EQ(callers.count(include.folder + "/" + include.file), 1u)
                << include.folder << "/" << include.file << " includes " << include.included;
        }
    }
}

} // namespace
