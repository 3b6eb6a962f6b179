// Decks as CAE programs write them.
#include "tests/support/caedecks.h"

CaeDeck MakeCaeDeck(std::uint64_t) {
    return {};
}
