// Whole runs: from a deck to both writers, in memory.
//
// The first byte of the input chooses how many bytes a read gives, the second what else varies; the rest is the
// deck. Rules: the reader reports what the plain rules report; the output files read back whole and hold the nodes,
// faces and cells that the plain rules make; a second run with the deck in one block, other growth steps,
// another kind of file and other garbage in fresh memory gives the same log and files; all memory is given back.
#include "fuzz/memorysystem.h"
#include "fuzz/meshfile.h"
#include "fuzz/oracle.h"
#include "fuzz/plainreader.h"

#include "abaqus/LoadABQ.h"
#include "output/DumpKIVO.h"
#include "output/DumpVTK.h"
#include "store/COM.h"
#include "translate/MeshAll.h"

#include <algorithm>
#include <cstring>
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

struct Result {
    std::string log;
    std::map<std::string, std::string> files;
};

// The log with the figures of "Elapsed Time: %f sec." left out.
std::string MaskTimes(const char *text, std::size_t size) {
    static const std::string kWords = "Elapsed Time: ";
    std::string log(text, size);
    for (std::size_t at = log.find(kWords); at != std::string::npos; at = log.find(kWords, at + 1)) {
        log.erase(at + kWords.size(), log.find(' ', at + kWords.size()) - at - kWords.size());
    }
    return log;
}

Result Run(const std::string &deck, bool bVTK, const Variant &variant) {
    ResetSystem();
    MemorySystem *system = TheSystem();
    system->deck = deck;
    system->readSize = variant.readSize;
    system->bCanSeek = variant.bCanSeek;
    system->firstCapacity = variant.firstCapacity;
    system->pattern = variant.pattern;
    system->mostHeld = deck.size() * kHeldPerByte + kHeldAlways;
    const std::size_t before = system->held;

    char *log = nullptr;
    std::size_t size = 0;
    std::FILE *stream = open_memstream(&log, &size);
    std::FILE *terminal = stdout;
    stdout = stream; // a variable in this C library
    LoadABQ("deck.inp");
    MeshAll();
    DumpKIVO();
    if (bVTK) {
        DumpVTK();
    }
    FreeCOM();
    ForgetColumnCounts();
    stdout = terminal;
    std::fclose(stream);
    Result result{MaskTimes(log, size), system->files};
    std::free(log);
    Require(system->held == before, "all memory is given back");
    Require(system->nOpen == 0, "all files are closed");
    return result;
}

// The figure of a line of the mesh summary.
int SummaryFigure(const std::string &log, const char *key) {
    const std::size_t at = log.find(std::string("    ") + key + " = ", log.rfind("  Mesh summary:\n"));
    Require(at != std::string::npos, "the summary names its figures");
    return std::atoi(log.c_str() + log.find('=', at) + 1);
}

// The log, the counts and the lists, as the plain rules have them.
void CheckAgainstPlain(const Result &run, const MeshFile &mesh, const PlainResult &plain) {
    const std::string &log = run.log;
    std::string begin = "Reading Abaqus mesh from deck.inp ...\n" + plain.log + "\nTranslating mesh ... \n";
    if (plain.nMissing > 0) {
        begin += "\n  Error> " + std::to_string(plain.nMissing) + " references of elements name no node of the deck.\n";
    }
    if (plain.nCorrected > 0) {
        begin += "  Numbering order of " + std::to_string(plain.nCorrected) + " elements has been corrected.\n";
    }
    begin += "  Mesh summary:\n";
    Require(log.compare(0, begin.size(), begin) == 0, "the log says what the plain rules say");
    Require(log.find(plain.summaryLengths + "Elapsed Time: ", begin.size()) != std::string::npos,
            "the lengths are those of the plain rules");
    for (const std::string &list : plain.lists) {
        Require(run.files.at("mesh.input").find(list) != std::string::npos, "the lists are those of the plain rules");
    }
    Require(mesh.nDim == plain.nDim && mesh.nCells == plain.nCells, "cells are those of the deck");
    Require(mesh.nNodes == (plain.nDim == 0 ? 0 : plain.nNodes), "nodes are those that cells use");
    Require(mesh.nFaces == plain.nFaces, "faces are those that surfaces name");
    Require(mesh.nNodeGroups == plain.nNodeGroups && mesh.nFaceGroups == plain.nFaceGroups &&
                mesh.nCellGroups == plain.nCellGroups,
            "groups are those of the deck");
}

void CheckSummary(const std::string &log, const MeshFile &mesh) {
    Require(SummaryFigure(log, "Number of dimensions ") == mesh.nDim, "log and file agree on the dimension");
    Require(SummaryFigure(log, "Number of nodes      ") == mesh.nNodes, "log and file agree on the nodes");
    Require(SummaryFigure(log, "Number of elements   ") == mesh.nCells, "log and file agree on the cells");
    Require(SummaryFigure(log, "Number of node groups") == mesh.nNodeGroups, "log and file agree on the groups");
    Require(SummaryFigure(log, "Number of face groups") == mesh.nFaceGroups, "log and file agree on the groups");
    Require(SummaryFigure(log, "Number of cell groups") == mesh.nCellGroups, "log and file agree on the groups");
}

void CheckVTKFiles(const Result &result, const MeshFile &mesh) {
    Require((result.files.count("_Cells.vtk") == 1) == (mesh.nCells > 0), "cells have a file when there are any");
    Require((result.files.count("_Faces.vtk") == 1) == (mesh.nFaces > 0), "faces have a file when there are any");
    int nNodeSets = 0;
    for (const auto &file : result.files) {
        if (file.first == "_Cells.vtk") {
            CheckVTKFile(file.second, false, mesh.nNodes, mesh.nCells);
        } else if (file.first == "_Faces.vtk") {
            CheckVTKFile(file.second, false, mesh.nNodes, mesh.nFaces);
        } else if (file.first != "mesh.input") {
            ++nNodeSets;
            const std::size_t at = file.second.find("POINTS ");
            Require(at != std::string::npos, "a node set's file has points");
            const int n = std::atoi(file.second.c_str() + at + 7);
            CheckVTKFile(file.second, true, n, n);
            Require(n <= std::max(mesh.nNodes, 0), "a node set holds nodes of the mesh");
        }
    }
    Require(nNodeSets <= mesh.nNodeGroups, "each node group has one file at most");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size < 2) {
        return 0;
    }
    const bool bVTK = (data[1] & kNoVTK) == 0;
    const bool bCanSeek = (data[1] & kNoSeek) == 0;
    const std::string deck(reinterpret_cast<const char *>(data) + 2, size - 2);

    const Result first = Run(deck, bVTK, {kReadSizes[data[0] % kNumReadSizes], bCanSeek, 2, 0xa5});
    const MeshFile mesh = ReadMeshFile(first.files.at("mesh.input"));
    CheckSummary(first.log, mesh);
    CheckAgainstPlain(first, mesh, ReadPlainDeck(deck));
    if (bVTK) {
        CheckVTKFiles(first, mesh);
    } else {
        Require(first.files.size() == 1, "mesh.input is the only file");
    }

    const Result second = Run(deck, bVTK, {1 << 20, !bCanSeek, 50, 0x01});
    Require(second.log == first.log, "the log does not depend on how the deck is read");
    Require(second.files == first.files, "the files do not depend on how the deck is read");
    return 0;
}
