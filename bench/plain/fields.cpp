// Number fields by the C library.
#include "output/textout.h"

#include <cstdio>

char *FieldWide(char *at, int value, int width) {
    return at + std::snprintf(at, kMostField, "%*d", width, value);
}

char *FieldReal24(char *at, double value) {
    return at + std::snprintf(at, kMostField, "%24.15e", value);
}

char *FieldReal15(char *at, double value) {
    return at + std::snprintf(at, kMostField, "%15.7e", value);
}
