// The words that ask for something this reader does not do: a section whose keyword line holds one of them, anywhere,
// is left out. Whoever writes decks for it keeps them out of names.
#ifndef KIVOM_ABAQUS_REFUSEDWORDS_H
#define KIVOM_ABAQUS_REFUSEDWORDS_H

// clang-format off
inline constexpr const char *kRefusedNodes[] = {"INPUT", "SYSTEM"};

inline constexpr const char *kRefusedCells[] = {"FILE", "INPUT", "OFFSET", "SOLIDELEMENTNUMBERING"};

// The second list is the first without "ELSET", which on *ELSET is the name's own parameter.
inline constexpr const char *kRefusedNodeSet[] = {"ELSET", "GENERATE", "INSTANCE", "INTERNAL", "UNSORTED"};
inline constexpr const char *kRefusedCellSet[] = {"GENERATE", "INSTANCE", "INTERNAL", "UNSORTED"};

inline constexpr const char *kRefusedSurface[] = {
    "COMBINE", "CROP", "DEFINITION", "FILLETRADIUS", "INTERNAL", "REGIONTYPE",
    "TRIM", "MAXRATIO", "NOOFFSET", "NOTHICK", "SCALETHICK",
};
// clang-format on

#endif
