// Whole runs in the process that tests, over the files of the fake system, by the program and by the plain translation.
#ifndef KIVOM_TESTS_SUPPORT_RUNS_H
#define KIVOM_TESTS_SUPPORT_RUNS_H

#include <map>
#include <string>

struct Run {
    std::string log; // from "Reading Abaqus mesh" to the last elapsed time, all of them 0
    std::map<std::string, std::string> files;
};

// The phases of the program. The fake system is as the caller has set it up; the deck becomes its file "deck.inp",
// which is none of the files of the result.
Run RunProgram(const std::string &deck, bool bVTK);

// The same phases alone, printing to standard output.
void RunPhases(bool bVTK);

// The files that the fake system holds, without the deck.
std::map<std::string, std::string> FilesOfRun();

Run RunPlain(const std::string &deck, bool bVTK);

// Where the runs part: the log or a file, and its first line that differs. Empty when they do not.
std::string FirstDifference(const Run &wanted, const Run &found);

#endif
