// The services of support/system.h, in memory.
#include "fuzz/memorysystem.h"

#include "fuzz/oracle.h"

#include "support/frame.h"
#include "support/system.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

#include <malloc.h>

namespace {

struct OpenFile {
    bool bOpen;
    std::string name;
    std::size_t at;
};

constexpr std::size_t kMostFilled = 1 << 16; // of a block: enough for every array of a small deck

MemorySystem systemInMemory;
std::vector<OpenFile> openFiles; // by descriptor

int Open(const std::string &name) {
    const auto unused = std::find_if(openFiles.begin(), openFiles.end(), [](const OpenFile &f) { return !f.bOpen; });
    ++systemInMemory.nOpen;
    if (unused != openFiles.end()) {
        *unused = {true, name, 0};
        return static_cast<int>(unused - openFiles.begin());
    }
    openFiles.push_back({true, name, 0});
    return static_cast<int>(openFiles.size()) - 1;
}

OpenFile *FileOf(int file) {
    Require(file >= 0 && file < static_cast<int>(openFiles.size()), "descriptors are those that were given out");
    OpenFile *open = &openFiles[static_cast<std::size_t>(file)];
    Require(open->bOpen, "closed files are not used");
    return open;
}

void PutAt(const std::string &name, std::size_t at, const char *from, std::size_t size) {
    std::string &text = systemInMemory.files[name];
    if (text.size() < at + size) {
        text.resize(at + size); // a gap holds NULs, as on disk
    }
    text.replace(at, size, from, size);
}

// True when this request is one of those that are to fail.
bool RequestFails(const void *held, std::uint64_t size) {
    const long request = ++systemInMemory.nRequests;
    const long first = systemInMemory.failAt;
    if (first == 0 || request < first || request >= first + systemInMemory.nFailing) {
        return false;
    }
    if (systemInMemory.nFailed++ == 0) {
        systemInMemory.bHeldFailed = held != nullptr;
        systemInMemory.failedSize = size;
    }
    return true;
}

} // namespace

MemorySystem *TheSystem() {
    return &systemInMemory;
}

void ResetSystem() {
    const std::size_t held = systemInMemory.held;
    systemInMemory = MemorySystem{};
    systemInMemory.held = systemInMemory.peak = held;
    systemInMemory.readSize = 1 << 20;
    systemInMemory.bCanSeek = true;
    systemInMemory.firstCapacity = 2;
    systemInMemory.mostHeld = std::size_t{1} << 30;
    openFiles.clear();
}

// In place of the program's rule (support/allocate.cpp): small decks, too, grow several times.
int NextCapacity(int capacity) {
    const int first = std::max(systemInMemory.firstCapacity, 2);
    if (capacity == 0) {
        return first;
    }
    const int step = capacity <= 4 * first ? capacity : 8 * first;
    return capacity > INT_MAX - step ? INT_MAX : capacity + step;
}

// Every resize moves the block: pointers into the old one are then found out.
void *SystemResize(void *held, std::uint64_t size) {
    Require(size > 0, "no block of 0 bytes is asked for");
    if (RequestFails(held, size)) {
        return nullptr;
    }
    const std::size_t before = held == nullptr ? 0 : malloc_usable_size(held);
    void *block = std::malloc(size);
    if (block == nullptr) {
        return nullptr;
    }
    std::memset(block, systemInMemory.pattern, std::min<std::size_t>(size, kMostFilled));
    systemInMemory.held += malloc_usable_size(block);
    systemInMemory.peak = std::max(systemInMemory.peak, systemInMemory.held);
    Require(systemInMemory.held <= systemInMemory.mostHeld, "memory is in proportion to the deck");
    if (held != nullptr) {
        std::memcpy(block, held, std::min<std::size_t>(before, size));
        SystemRelease(held);
    }
    return block;
}

void SystemRelease(void *held) {
    systemInMemory.held -= held == nullptr ? 0 : malloc_usable_size(held);
    std::free(held);
}

int SystemOpenToRead(const char *) {
    return Open("");
}

int SystemOpenToWrite(const char *path) {
    systemInMemory.files[path].clear();
    return Open(path);
}

std::ptrdiff_t SystemRead(int file, char *to, std::size_t size) {
    OpenFile *open = FileOf(file);
    const std::size_t left = systemInMemory.deck.size() - open->at;
    const std::size_t part = std::min({left, size, systemInMemory.readSize});
    std::memcpy(to, systemInMemory.deck.data() + open->at, part);
    open->at += part;
    return static_cast<std::ptrdiff_t>(part);
}

bool SystemWrite(int file, const char *from, std::size_t size) {
    OpenFile *open = FileOf(file);
    PutAt(open->name, open->at, from, size);
    open->at += size;
    return true;
}

bool SystemCanSeek(int file) {
    FileOf(file);
    return systemInMemory.bCanSeek;
}

bool SystemWriteAt(int file, const char *from, std::size_t size, std::int64_t offset) {
    Require(systemInMemory.bCanSeek && offset >= 0, "files that cannot seek are written in order");
    PutAt(FileOf(file)->name, static_cast<std::size_t>(offset), from, size);
    return true;
}

bool SystemSkip(int file, std::int64_t distance) {
    Require(systemInMemory.bCanSeek && distance >= 0, "files that cannot seek are written in order");
    FileOf(file)->at += static_cast<std::size_t>(distance);
    return true;
}

void SystemCut(int, std::int64_t) {
    Require(false, "a file is cut only after a failure");
}

bool SystemClose(int file) {
    FileOf(file)->bOpen = false;
    --systemInMemory.nOpen;
    return true;
}

void SystemPrepare() {}
