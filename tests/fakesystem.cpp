// Memory and files that fail on demand.
#include "fakesystem.h"

#include "support/system.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <map>
#include <unordered_map>

namespace {

constexpr int kFirstDescriptor = 1000; // no real one: a slip into the system's own files shows at once

struct OpenFile {
    std::string name;
    std::size_t at;
};

struct State {
    long failOnce = 0;
    long failFrom = 0;
    std::vector<std::uint64_t> sizes;
    long allocationFaults = 0;

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

bool MustFail(std::uint64_t size) {
    const long call = static_cast<long>(The().sizes.size());
    return size > fake::kMostBytes || call == The().failOnce || (The().failFrom > 0 && call >= The().failFrom);
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
    const auto found = The().open.find(file);
    if (found == The().open.end()) {
        errno = EBADF;
        return false;
    }
    const bool fits = The().writable < 0 || size <= static_cast<std::size_t>(The().writable);
    const std::size_t taken = fits ? size : static_cast<std::size_t>(The().writable);
    std::string &text = The().files[found->second.name];
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

void FailAllocation(long n) {
    The().failOnce = Allocations() + n;
}

void FailAllocationsFrom(long n) {
    The().failFrom = Allocations() + n;
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
    The().sizes.push_back(size);
    if (MustFail(size)) {
        ++The().allocationFaults;
        return nullptr;
    }
    void *block = std::malloc(size);
    if (block == nullptr) {
        std::abort(); // the test asks for more than the machine has
    }
    std::uint64_t kept = 0;
    if (held != nullptr) {
        const auto found = Blocks().find(held);
        if (found == Blocks().end()) {
            std::abort(); // no block of ours
        }
        kept = std::min(size, found->second);
        std::memcpy(block, held, kept);
        std::free(held);
        Blocks().erase(found);
    }
    std::memset(static_cast<char *>(block) + kept, fake::kFreshByte, size - kept);
    Blocks()[block] = size;
    return block;
}

void SystemRelease(void *held) {
    if (held != nullptr && Blocks().erase(held) != 1) {
        std::abort(); // no block of ours, or given back twice
    }
    std::free(held);
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
    const auto found = The().open.find(file);
    if (found == The().open.end()) {
        errno = EBADF;
        return -1;
    }
    const std::string &text = The().files[found->second.name];
    std::size_t &at = found->second.at;
    std::size_t got = std::min(size, text.size() - at);
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
    text.copy(to, got, at);
    at += got;
    return static_cast<std::ptrdiff_t>(got);
}

bool SystemWrite(int file, const char *from, std::size_t size) {
    const auto found = The().open.find(file);
    const bool stored = Store(file, from, size, found == The().open.end() ? 0 : found->second.at);
    if (stored) {
        found->second.at += size;
    }
    return stored;
}

bool SystemCanSeek(int) {
    return The().canSeek;
}

bool SystemWriteAt(int file, const char *from, std::size_t size, std::int64_t offset) {
    return Store(file, from, size, static_cast<std::size_t>(offset));
}

bool SystemSkip(int file, std::int64_t distance) {
    const auto found = The().open.find(file);
    if (found == The().open.end() || !The().canSeek) {
        errno = ESPIPE;
        return false;
    }
    found->second.at += static_cast<std::size_t>(distance);
    return true;
}

void SystemCut(int file, std::int64_t size) {
    const auto found = The().open.find(file);
    if (found != The().open.end() && The().canSeek) {
        The().files[found->second.name].resize(static_cast<std::size_t>(size), '\0');
    }
}

bool SystemClose(int file) {
    if (The().open.erase(file) != 1) {
        errno = EBADF;
        return false;
    }
    if (The().closeReason != 0) {
        ++The().closeFaults;
        errno = The().closeReason;
        return false;
    }
    return true;
}

void SystemPrepare() {}
