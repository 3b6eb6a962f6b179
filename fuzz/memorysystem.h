// A system in memory, in place of support/system.cpp: the fuzz targets and their replay link it.
//
// Every file opened for reading holds the deck; files written are kept. Reads are as short as the target wants,
// so that lines, numbers and comments are cut at every place. Fresh memory is filled with a pattern, so that
// nobody can rely on zeros, and what is held is counted.
#ifndef KIVOM_FUZZ_MEMORYSYSTEM_H
#define KIVOM_FUZZ_MEMORYSYSTEM_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

struct MemorySystem {
    // Set by the target before a run.
    std::string deck;
    std::size_t readSize;  // most bytes that one read gives; at least 1
    bool bCanSeek;         // files can be written at any place
    int firstCapacity;     // growth of store and reader starts with so many entries; at least 2
    unsigned char pattern; // fills fresh memory
    std::size_t mostHeld;  // more memory than this is a broken rule
    long failAt;           // the request for memory, counted from 1, that fails; 0 for none
    long nFailing;         // how many requests fail in a row, from that one on

    // What the run left.
    std::map<std::string, std::string> files; // written, by name
    std::size_t held;                         // bytes of memory held now
    std::size_t peak;                         // most bytes held at once
    int nOpen;                                // descriptors open now
    long nRequests;                           // for memory
    long nFailed;                             // of them
    bool bHeldFailed;                         // the first that failed was to resize a block held
    std::uint64_t failedSize;                 // bytes that it asked for
};

MemorySystem *TheSystem();

// Forgets files and descriptors, and sets the knobs to those of an ordinary run.
void ResetSystem();

#endif
