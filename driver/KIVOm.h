// The program: one job from start to end, and its log.
#ifndef KIVOM_DRIVER_KIVOM_H
#define KIVOM_DRIVER_KIVOM_H

#include <cstdio>

// The command line, set once by RunKIVOM: the count with the program's name, and the words.
extern int NumArguments;
extern char **c1Arguments;

// Writes the banner: an empty line, eleven rows of 60 characters, the title, an empty line.
void ShowLogKIVOM(std::FILE *stream);

// Chooses the deck, the first argument that does not begin with "-", else a word asked for on standard input; reads it
// (abaqus/LoadABQ.h) and prints the time that this took.
void LoadAll();

// The whole job: banner, reading, translation, files, release. Returns the exit status: 0, or 1 when a file or the log
// could not be written whole. A deck that cannot be read and a shortage of memory end the process inside.
int RunKIVOM(int argc, char **argv);

#endif
