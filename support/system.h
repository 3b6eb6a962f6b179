// The few services of the operating system that the program uses: blocks of memory, files by descriptor.
//
// Everything else in the program reaches the system through these functions (and through the C library's
// formatted output for the log). Tests and fuzzers link another file in place of system.cpp and so make
// reads short, disks full and memory scarce wherever they like.
#ifndef KIVOM_SUPPORT_SYSTEM_H
#define KIVOM_SUPPORT_SYSTEM_H

#include <cstddef>
#include <cstdint>

// Memory -----------------------------------------------------------------------------------------------

// `held` resized to `size` bytes (a new block where none is held), as realloc does; null on shortage, and
// then `held` is still held. `size` is above 0.
void *SystemResize(void *held, std::uint64_t size);

// Gives a block back; null is harmless.
void SystemRelease(void *held);

// Entries with which arrays of unknown final length begin (NextCapacity); above 0. 100000, where a test asks for no
// other: small meshes cross every step of growth only when they begin small.
int SystemFirstCapacity();

// Files ------------------------------------------------------------------------------------------------
// Each function leaves the reason of a failure in errno.

// Descriptor of the file opened for reading, or -1.
int SystemOpenToRead(const char *path);

// Descriptor of the file created or emptied for writing, or -1.
int SystemOpenToWrite(const char *path);

// Up to `size` bytes into `to`: the number read, 0 at the end of the file, -1 on failure.
std::ptrdiff_t SystemRead(int file, char *to, std::size_t size);

// All `size` bytes written at the file's position: true, or false on failure.
bool SystemWrite(int file, const char *from, std::size_t size);

// True when the file lets itself be written at any place (a plain file, opened for writing only here).
bool SystemCanSeek(int file);

// All `size` bytes written at byte `offset` of the file; the file's position stays. True, or false on failure.
bool SystemWriteAt(int file, const char *from, std::size_t size, std::int64_t offset);

// Moves the file's position `distance` bytes forward. True, or false on failure.
bool SystemSkip(int file, std::int64_t distance);

// Cuts a plain file to `size` bytes; other files are left alone.
void SystemCut(int file, std::int64_t size);

// Closes the file: true, or false when the system reports a failure that it had put off.
bool SystemClose(int file);

// Start-up ---------------------------------------------------------------------------------------------

// Makes the process safe to run in any surroundings: descriptors 0, 1 and 2 exist (a file opened later can
// then never be taken for standard output), a reader that goes away and a limit on the size of files are failed
// writes and not signals, and large arrays grow by remapping pages instead of being copied.
void SystemPrepare();

#endif
