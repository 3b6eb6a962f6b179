/* A system whose files misbehave, as a disk or a network would: faults.py loads it into the program.
 *
 * FAULT_READ    number of the read that fails, counted from 1 over reads of 4 KB and more
 * FAULT_SHORT   every such read gives at most so many bytes, and every other one is interrupted
 * FAULT_CLOSE   number of the close, counted from 1 over files opened for writing, that fails
 * FAULT_WRITE   every write to such a file takes at most so many bytes, and every other one is interrupted
 * FAULT_MARK    name of a file that is made when a fault has happened */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/syscall.h>
#include <unistd.h>

static long Setting(const char *name) {
    const char *value = getenv(name);
    return value == NULL ? 0 : atol(value);
}

static int IsOutput(int file) {
    return file > 2 && (fcntl(file, F_GETFL) & O_ACCMODE) == O_WRONLY;
}

static int Fail(int reason) {
    syscall(SYS_close, open(getenv("FAULT_MARK"), O_WRONLY | O_CREAT, 0666));
    errno = reason;
    return -1;
}

/* True when this write is interrupted before it has begun; else *size is what it takes. */
static int Interrupted(int file, size_t *size) {
    static unsigned writes;
    const size_t most = (size_t)Setting("FAULT_WRITE");
    if (most == 0 || !IsOutput(file)) {
        return 0;
    }
    *size = *size > most ? most : *size;
    return ++writes % 2 == 0;
}

ssize_t read(int file, void *to, size_t size) {
    static long reads;
    if (size >= 4096 && file > 2) {
        const size_t most = (size_t)Setting("FAULT_SHORT");
        if (++reads == Setting("FAULT_READ")) {
            return Fail(EIO);
        }
        if (most != 0 && reads % 2 == 0) {
            return Fail(EINTR);
        }
        size = most != 0 && most < size ? most : size;
    }
    return syscall(SYS_read, file, to, size);
}

ssize_t write(int file, const void *from, size_t size) {
    return Interrupted(file, &size) ? Fail(EINTR) : syscall(SYS_write, file, from, size);
}

ssize_t pwrite(int file, const void *from, size_t size, off_t offset) {
    return Interrupted(file, &size) ? Fail(EINTR) : syscall(SYS_pwrite64, file, from, size, offset);
}

ssize_t pwrite64(int file, const void *from, size_t size, off_t offset) {
    return pwrite(file, from, size, offset);
}

int close(int file) {
    static long closes;
    const int fails = IsOutput(file) && ++closes == Setting("FAULT_CLOSE");
    const int result = (int)syscall(SYS_close, file);
    return fails ? Fail(EIO) : result;
}
