/* Makes the n-th read of a deck fail, as a disk or a network would: faults.py loads it into the program.
 *
 * FAIL_READ is the number, counted from 1 over reads of 4 KB and more; the file named by FAIL_MARK is made when the
 * fault has happened. FAIL_SHORT cuts every such read to so many bytes. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

ssize_t read(int file, void *to, size_t size) {
    static ssize_t (*next)(int, void *, size_t);
    static int reads;
    if (next == NULL) {
        *(void **)&next = dlsym(RTLD_NEXT, "read");
    }
    const char *fail = getenv("FAIL_READ");
    const char *cut = getenv("FAIL_SHORT");
    if (size < 4096 || file < 3) {
        return next(file, to, size);
    }
    if (fail != NULL && ++reads == atoi(fail)) {
        close(open(getenv("FAIL_MARK"), O_WRONLY | O_CREAT, 0666));
        errno = EIO;
        return -1;
    }
    if (cut != NULL && (size_t)atoi(cut) < size) {
        size = (size_t)atoi(cut);
    }
    return next(file, to, size);
}
