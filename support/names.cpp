// Comparing names.
#include "support/frame.h"

#include <cstring>

namespace {

const char *SkipBlanks(const char *at) {
    while (*at == ' ') {
        ++at;
    }
    return at;
}

} // namespace

int AreNamesSame(const char *a, const char *b) {
    if (*a == '\0') {
        return *b == '\0' ? 1 : 0;
    }
    for (; *a != '\0'; ++a) {
        if (*a == ' ') {
            continue;
        }
        b = SkipBlanks(b);
        if (*a != *b) { // an exhausted b differs from every character
            return 0;
        }
        ++b;
    }
    return *b == '\0' ? 1 : 0; // blanks that end b count as characters: only a's are passed over at the end
}

int AreNamesSamn(const char *a, const char *b, int n) {
    if (*a == '\0') {
        return n == 0 ? 1 : 0;
    }
    int agreeing = 0;
    for (; *a != '\0'; ++a) {
        if (*a == ' ') {
            continue;
        }
        b = SkipBlanks(b);
        if (*a != *b) {
            return 0;
        }
        ++b;
        if (++agreeing == n) {
            return 1;
        }
    }
    return agreeing == n ? 1 : 0;
}

int Find(const char *text, const char *pattern) {
    return *pattern != '\0' && std::strstr(text, pattern) != nullptr ? 1 : 0;
}
