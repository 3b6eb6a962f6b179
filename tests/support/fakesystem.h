// The system's services for tests and fuzz targets, linked in place of support/system.cpp: files live in memory under
// their names, memory is counted and handed out full of a pattern, and chosen calls fail.
//
// Everything is counted from the last fake::Reset(). A fault that was asked for and never came about shows in the
// counters: a test of a fault asserts that they moved. A misuse that no program may commit (a block or descriptor that
// was never given out, a file cut that did not fail) ends the process.
#ifndef KIVOM_TESTS_SUPPORT_FAKESYSTEM_H
#define KIVOM_TESTS_SUPPORT_FAKESYSTEM_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace fake {

// Forgets files, plans and counters. Blocks that are held stay valid and are counted on.
void Reset();

// Memory -----------------------------------------------------------------------------------------------

// Every byte of fresh memory, and of what a resized block gains.
constexpr unsigned char kFreshByte = 0xA5;
constexpr int kFreshInt = static_cast<int>(0xA5A5A5A5u);

// Requests above this size always fail.
constexpr std::uint64_t kMostBytes = std::uint64_t{1} << 32;

// A resized block always moves, so that a pointer kept from before is caught.

void FailAllocation(long n, long count = 1); // the n-th call of SystemResize from now on (1 is the next), and the
                                             // calls behind it, `count` in a row
void FailAllocationsFrom(long n);            // the n-th and all that follow

void GrowFrom(int first);               // what SystemFirstCapacity answers; 100000 after Reset
void FillFreshWith(unsigned char byte); // in place of kFreshByte
void LimitMemory(std::uint64_t most);   // more bytes held than that end the process; no limit after Reset

// The first call that failed.
struct Fault {
    bool bHeld;         // it was to resize a block held
    std::uint64_t size; // bytes that it asked for
};
Fault FirstAllocationFault();

long Allocations();                                  // calls of SystemResize
long AllocationFaults();                             // those that failed
const std::vector<std::uint64_t> &AllocationSizes(); // bytes asked for, call by call
long BlocksHeld();                                   // blocks handed out and not yet given back
std::uint64_t BytesHeld();

// Files ------------------------------------------------------------------------------------------------

void PutFile(const std::string &name, const std::string &text);
bool HasFile(const std::string &name);
std::string GetFile(const std::string &name); // empty where there is none
std::vector<std::string> FileNames();

void RefuseToOpen(const std::string &name, int reason); // for reading and for writing, with that errno

void ShortReads(std::size_t most); // a read gives at most so many bytes; 0 takes the limit away
void FailReadsAfter(long bytes);   // reads give so many more bytes in all, then fail; below 0 never
void FailWritesAfter(long bytes);  // writes take so many more bytes in all, then fail (disk full)
void FailClose(int reason);        // every close fails; 0 takes it back
void LetFilesSeek(bool can);       // what SystemCanSeek answers; true after Reset

long Reads(); // calls of SystemRead
long ReadFaults();
long WriteFaults();
long CloseFaults();
long FilesOpen(); // descriptors handed out and not yet closed

} // namespace fake

#endif
