// A whole deck by the plain rules: what must be reported, and every list of "mesh.input" that must come out.
//
// Lists, double loops and look-ups one by one, as the rules state them; see plain.h for lines and fields.
#ifndef KIVOM_FUZZ_PLAINREADER_H
#define KIVOM_FUZZ_PLAINREADER_H

#include <string>
#include <vector>

struct PlainResult {
    std::string log;      // of the reader, from the first section on
    long long nMissing;   // references of elements that name no node
    long long nCorrected; // elements that ran the wrong way round
    int nDim;
    long long nNodes, nFaces, nCells;
    int nNodeGroups, nFaceGroups, nCellGroups;
    std::string summaryLengths;     // the last three lines of the mesh summary
    std::vector<std::string> lists; // that "mesh.input" holds, from their keys to their last line ends
};

PlainResult ReadPlainDeck(const std::string &deck);

#endif
