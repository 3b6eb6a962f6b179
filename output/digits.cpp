// The digits of whole numbers, four at a time.
#include "output/textout.h"

namespace {

constexpr DigitTables MakeDigitTables() {
    DigitTables tables{};
    for (int n = 0; n < 10000; ++n) {
        const int places[4] = {n / 1000, n / 100 % 10, n / 10 % 10, n % 10};
        bool leading = true;
        for (int i = 0; i < 4; ++i) {
            const char digit = static_cast<char>('0' + places[i]);
            leading = leading && places[i] == 0 && i < 3;
            tables.zeros[n][i] = digit;
            tables.blanks[n][i] = leading ? ' ' : digit;
        }
    }
    return tables;
}

} // namespace

const DigitTables kDigits = MakeDigitTables();
