// Number fields: text of a fixed width that is exactly what C's formats write for the number found.
#ifndef KIVOM_MESHFILE_FIELDS_H
#define KIVOM_MESHFILE_FIELDS_H

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace meshfile {

constexpr std::size_t kIntWidth = 10;
constexpr std::size_t kCountWidth = 5; // nodes of a row
constexpr std::size_t kRealWidth = 24;

// The `width` characters at `at` as "%*d" writes them. False when they are not; *value is then not set. Values that
// need more than the width (below -999999999 for ten) are no fields: nothing would part them from their neighbours.
bool IntField(const char *at, std::size_t width, int *value);

// The 24 characters at `at` as "%24.15e" writes them, inf and nan of either sign included. False when they are not,
// also where they are a number that "%24.15e" would write in other digits.
bool RealField(const char *at, double *value);

// The value as it lies in memory. Values that RealField gives have the same bits exactly when their fields are the
// same.
inline std::uint64_t BitsOf(double value) {
    std::uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

} // namespace meshfile

#endif
