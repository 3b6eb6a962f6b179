// Random decks: a mesh of triangles, of tetrahedra or of both, cut from a grid, with everything around it that a deck
// may hold. The same seed makes the same deck, wherever the same compiler is used.
#ifndef KIVOM_TESTS_SUPPORT_DECKS_H
#define KIVOM_TESTS_SUPPORT_DECKS_H

#include <cstdint>
#include <string>

enum class DeckKind {
    kPlain, // a mild deck of one dimension, spelled so that every program reads it alike
    kMild,  // well-formed: every section is read, every reference but some members of sets names something
    kWild   // also what no deck should hold: refused and unknown sections, missing and stray fields, lines too long,
            // names of any characters and lengths, odd labels and numbers, references to nothing; spelled with dropped
            // bytes
};

struct RandomDeck {
    std::string text;
    int nTurned; // elements that run the wrong way round or are squeezed flat; -1 where that cannot be told
};

RandomDeck MakeRandomDeck(std::uint64_t seed, DeckKind kind);

#endif
