// Numbers by the C library.
#include "support/frame.h"

#include <cstdio>

int ReadINT(const char *text) {
    int value = 0;
    std::sscanf(text, "%d", &value);
    return value;
}

double ReadDBL(const char *text) {
    double value = 0;
    std::sscanf(text, "%le", &value);
    return value;
}
