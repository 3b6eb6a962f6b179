// Memory and files that fail on demand.
#include "tests/support/fakesystem.h"

#include "support/system.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <unordered_map>

namespace {

constexpr int kUsualCapacity = 100000; // the program's own
constexpr int kFirstDescriptor = 1000; // no real one: a slip into the system's own files shows at once

struct OpenFile {
    std::string name;
    std::size_t at;
};

struct State {
    long failFrom = 0;
    long failTo = 0; // this call is the first to succeed again
    int firstCapacity = kUsualCapacity;
    unsigned char fresh = fake::kFreshByte;
    std::uint64_t mostHeld = ~std::uint64_t{0};
    std::vector<std::uint64_t> sizes;
    long allocationFaults = 0;
    fake::Fault firstFault{};

    std::map<std::string, std::string> files;
    std::map<std::string, int> refused;
    std::map<int, OpenFile> open;
    int nextDescriptor = kFirstDescriptor;
    std::size_t mostRead = 0;
    long readable = -1;
    long writable = -1;
    int closeReason = 0;
    bool canSeek = true;
    long reads = 0;
    long readFaults = 0;
    long writeFaults = 0;
    long closeFaults = 0;
};

// Both live to the end of the process, beyond the last block that it releases or leaves held.
State &The() {
    static auto *state = new State;
    return *state;
}

std::unordered_map<void *, std::uint64_t> &Blocks() {
    static auto *blocks = new std::unordered_map<void *, std::uint64_t>;
    return *blocks;
}

std::uint64_t bytesHeld = 0;

// Ends the process where the program misuses the system.
void Demand(bool holds, const char *rule) {
    if (!holds) {
        std::fprintf(stderr, "\nbroken rule: %s\n", rule);
        std::abort();
    }
}

bool MustFail(const void *held, std::uint64_t size) {
    const long call = static_cast<long>(The().sizes.size());
    if (size <= fake::kMostBytes && (call < The().failFrom || call >= The().failTo)) {
        return false;
    }
    if (The().allocationFaults++ == 0) {
        The().firstFault = {held != nullptr, size};
    }
    return true;
}

OpenFile *FileOf(int file) {
    const auto found = The().open.find(file);
    Demand(found != The().open.end(), "files are used between their opening and their closing");
    return &found->second;
}

int Open(const std::string &name) {
    The().open[The().nextDescriptor] = {name, 0};
    return The().nextDescriptor++;
}

bool IsRefused(const std::string &name) {
    const auto found = The().refused.find(name);
    if (found == The().refused.end()) {
        return false;
    }
    errno = found->second;
    return true;
}

// Stores as much of the text at that place as the disk still takes.
bool Store(int file, const char *from, std::size_t size, std::size_t place) {
    const bool fits = The().writable < 0 || size <= static_cast<std::size_t>(The().writable);
    const std::size_t taken = fits ? size : static_cast<std::size_t>(The().writable);
    std::string &text = The().files[FileOf(file)->name];
    text.resize(std::max(text.size(), place + taken), '\0');
    std::copy(from, from + taken, text.begin() + static_cast<std::ptrdiff_t>(place));
    if (The().writable >= 0) {
        The().writable -= static_cast<long>(taken);
    }
    if (!fits) {
        ++The().writeFaults;
        errno = ENOSPC;
    }
    return fits;
}

} // namespace

namespace fake {

void Reset() {
    The() = State{};
}

void FailAllocation(long n, long count) {
    The().failFrom = Allocations() + n;
    The().failTo = The().failFrom + count;
}

void FailAllocationsFrom(long n) {
    FailAllocation(n, LONG_MAX / 2);
}

void GrowFrom(int first) {
    The().firstCapacity = first;
}

void FillFreshWith(unsigned char byte) {
    The().fresh = byte;
}

void LimitMemory(std::uint64_t most) {
    The().mostHeld = most;
}

Fault FirstAllocationFault() {
    return The().firstFault;
}

std::uint64_t BytesHeld() {
    return bytesHeld;
}

long Allocations() {
    return static_cast<long>(The().sizes.size());
}

long AllocationFaults() {
    return The().allocationFaults;
}

const std::vector<std::uint64_t> &AllocationSizes() {
    return The().sizes;
}

long BlocksHeld() {
    return static_cast<long>(Blocks().size());
}

void PutFile(const std::string &name, const std::string &text) {
    The().files[name] = text;
}

bool HasFile(const std::string &name) {
    return The().files.count(name) == 1;
}

std::string GetFile(const std::string &name) {
    return HasFile(name) ? The().files[name] : std::string();
}

std::vector<std::string> FileNames() {
    std::vector<std::string> names;
    for (const auto &file : The().files) {
        names.push_back(file.first);
    }
    return names;
}

void RefuseToOpen(const std::string &name, int reason) {
    The().refused[name] = reason;
}

void ShortReads(std::size_t most) {
    The().mostRead = most;
}

void FailReadsAfter(long bytes) {
    The().readable = bytes;
}

void FailWritesAfter(long bytes) {
    The().writable = bytes;
}

void FailClose(int reason) {
    The().closeReason = reason;
}

void LetFilesSeek(bool can) {
    The().canSeek = can;
}

long Reads() {
    return The().reads;
}

long ReadFaults() {
    return The().readFaults;
}

long WriteFaults() {
    return The().writeFaults;
}

long CloseFaults() {
    return The().closeFaults;
}

long FilesOpen() {
    return static_cast<long>(The().open.size());
}

} // namespace fake

void *SystemResize(void *held, std::uint64_t size) {
    Demand(size > 0, "no block of 0 bytes is asked for");
    The().sizes.push_back(size);
    if (MustFail(held, size)) {
        return nullptr;
    }
    auto *block = static_cast<char *>(std::malloc(size));
    Demand(block != nullptr, "a test asks for no more than the machine has");
    std::uint64_t kept = 0;
    if (held != nullptr) {
        const auto found = Blocks().find(held);
        Demand(found != Blocks().end(), "only blocks that are held are resized");
        kept = std::min(size, found->second);
        std::memcpy(block, held, kept);
    }
    std::memset(block + kept, The().fresh, size - kept);
    SystemRelease(held);
    Blocks()[block] = size;
    bytesHeld += size;
    Demand(bytesHeld <= The().mostHeld, "memory is in proportion to the deck");
    return block;
}

void SystemRelease(void *held) {
    if (held == nullptr) {
        return;
    }
    const auto found = Blocks().find(held);
    Demand(found != Blocks().end(), "only blocks that are held are given back, and once");
    bytesHeld -= found->second;
    Blocks().erase(found);
    std::free(held);
}

int SystemFirstCapacity() {
    return The().firstCapacity;
}

int SystemOpenToRead(const char *path) {
    if (IsRefused(path)) {
        return -1;
    }
    if (!fake::HasFile(path)) {
        errno = ENOENT;
        return -1;
    }
    return Open(path);
}

int SystemOpenToWrite(const char *path) {
    if (IsRefused(path)) {
        return -1;
    }
    fake::PutFile(path, "");
    return Open(path);
}

std::ptrdiff_t SystemRead(int file, char *to, std::size_t size) {
    ++The().reads;
    OpenFile *open = FileOf(file);
    const std::string &text = The().files[open->name];
    std::size_t got = std::min(size, text.size() - open->at);
    got = The().mostRead > 0 ? std::min(got, The().mostRead) : got;
    if (The().readable >= 0) {
        got = std::min(got, static_cast<std::size_t>(The().readable));
        if (The().readable == 0) {
            ++The().readFaults;
            errno = EIO;
            return -1;
        }
        The().readable -= static_cast<long>(got);
    }
    text.copy(to, got, open->at);
    open->at += got;
    return static_cast<std::ptrdiff_t>(got);
}

bool SystemWrite(int file, const char *from, std::size_t size) {
    const bool stored = Store(file, from, size, FileOf(file)->at);
    FileOf(file)->at += stored ? size : 0;
    return stored;
}

bool SystemCanSeek(int file) {
    FileOf(file);
    return The().canSeek;
}

bool SystemWriteAt(int file, const char *from, std::size_t size, std::int64_t offset) {
    Demand(The().canSeek && offset >= 0, "files that cannot seek are written in order");
    return Store(file, from, size, static_cast<std::size_t>(offset));
}

bool SystemSkip(int file, std::int64_t distance) {
    Demand(The().canSeek && distance >= 0, "files that cannot seek are written in order");
    FileOf(file)->at += static_cast<std::size_t>(distance);
    return true;
}

void SystemCut(int file, std::int64_t size) {
    Demand(The().writeFaults > 0, "a file is cut only after a failure");
    if (The().canSeek) {
        The().files[FileOf(file)->name].resize(static_cast<std::size_t>(size), '\0');
    }
}

bool SystemClose(int file) {
    FileOf(file);
    The().open.erase(file);
    if (The().closeReason != 0) {
        ++The().closeFaults;
        errno = The().closeReason;
        return false;
    }
    return true;
}

void SystemPrepare() {}
