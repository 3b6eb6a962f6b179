// Decks as CAE programs write them, with what they mean: known from their construction, not by reading them back.
//
// Blocks of a grid, of elements of any shape and both orders, that conform within their part; parts, instances that are
// shifted and turned, sets and surfaces of every kind, generated meshes, files included, in all spellings. The same
// seed makes the same deck, wherever the same compiler is used.
#ifndef KIVOM_TESTS_SUPPORT_CAEDECKS_H
#define KIVOM_TESTS_SUPPORT_CAEDECKS_H

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

struct CaeCount {
    std::string name; // as meant, with its instance's name where that is needed
    long long count;  // members, faces, elements
};

struct CaeDeck {
    std::string text;
    std::map<std::string, std::string> files; // included, by path beside the deck

    bool plain = false; // the translator holds all of it as it is meant
    int dimension = 0;
    long long nodes = 0, elements = 0;
    std::vector<CaeCount> nodeSets; // those of surfaces of nodes, too
    std::vector<CaeCount> elementSets, surfaces, cellGroups;
    double measure = 0;             // area or volume
    std::array<double, 3> places{}; // sum of all nodes' coordinates
};

CaeDeck MakeCaeDeck(std::uint64_t seed);

#endif
