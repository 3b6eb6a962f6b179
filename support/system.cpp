// The services of the operating system, on Linux.
#include "support/system.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>

#include <fcntl.h>
#include <malloc.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Blocks from this size on are mapped on their own: they grow without being copied and go back to the system
// when they are released. Left alone, the C library raises its threshold at the first release, and from then
// on doubling a column copies it.
constexpr int kMapThreshold = 64 * 1024;

constexpr int kFirstCapacity = 100000; // most sections of a deck never grow a second time

constexpr mode_t kNewFileMode = 0666; // the process's umask takes away from it, as for any new file

void KeepDescriptorTaken(int file, int flags) {
    if (fcntl(file, F_GETFD) != -1 || errno != EBADF) {
        return;
    }
    // The lowest free descriptor is `file`: the ones below it have been seen to before. Opened the wrong way
    // round, so that using it fails as it would on the closed one.
    if (open("/dev/null", flags) == -1) {
        _exit(EXIT_FAILURE);
    }
}

} // namespace

void *SystemResize(void *held, std::uint64_t size) {
    return std::realloc(held, size);
}

void SystemRelease(void *held) {
    std::free(held);
}

int SystemFirstCapacity() {
    return kFirstCapacity;
}

int SystemOpenToRead(const char *path) {
    return open(path, O_RDONLY | O_CLOEXEC);
}

int SystemOpenToWrite(const char *path) {
    return open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kNewFileMode);
}

std::ptrdiff_t SystemRead(int file, char *to, std::size_t size) {
    ssize_t got;
    do {
        got = read(file, to, size);
    } while (got == -1 && errno == EINTR);
    return got;
}

bool SystemWrite(int file, const char *from, std::size_t size) {
    while (size > 0) {
        const ssize_t put = write(file, from, size);
        if (put == -1 && errno == EINTR) {
            continue;
        }
        if (put <= 0) {
            return false;
        }
        from += put;
        size -= static_cast<std::size_t>(put);
    }
    return true;
}

bool SystemCanSeek(int file) {
    struct stat about {};
    return fstat(file, &about) == 0 && S_ISREG(about.st_mode);
}

bool SystemWriteAt(int file, const char *from, std::size_t size, std::int64_t offset) {
    while (size > 0) {
        const ssize_t put = pwrite(file, from, size, offset);
        if (put == -1 && errno == EINTR) {
            continue;
        }
        if (put <= 0) {
            return false;
        }
        from += put;
        size -= static_cast<std::size_t>(put);
        offset += put;
    }
    return true;
}

bool SystemSkip(int file, std::int64_t distance) {
    return lseek(file, distance, SEEK_CUR) != -1;
}

void SystemCut(int file, std::int64_t size) {
    if (SystemCanSeek(file) && ftruncate(file, size) != 0) {
        return; // nothing more can be done for a file that has failed already
    }
}

bool SystemClose(int file) {
    return close(file) == 0;
}

void SystemPrepare() {
    KeepDescriptorTaken(STDIN_FILENO, O_WRONLY);
    KeepDescriptorTaken(STDOUT_FILENO, O_RDONLY);
    KeepDescriptorTaken(STDERR_FILENO, O_RDONLY);
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    mallopt(M_MMAP_THRESHOLD, kMapThreshold);
}
