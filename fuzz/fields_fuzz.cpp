// Number fields against the C library, and text files with tiny buffers against a plain string.
#include "fuzz/oracle.h"

#include "tests/support/fakesystem.h"
#include "tests/support/plain/plain.h"

#include "output/DumpKIVO.h"
#include "output/textout.h"

#include <cstring>
#include <string>

namespace {

// Calls lay(place) and compares what it laid with the wanted text.
template <class Lay> void CheckField(const std::string &wanted, const char *rule, Lay lay) {
    char field[kMostField + 1];
    std::memset(field, '?', sizeof field);
    const auto length = static_cast<std::size_t>(lay(field) - field);
    Require(length <= kMostField && std::string(field, length) == wanted, rule);
}

void CheckInt(int value, int width) {
    CheckField(PlainField("%10d", value), "%10d", [=](char *at) { return FieldInt10(at, value); });
    CheckField(PlainField("%5d", value), "%5d", [=](char *at) { return FieldInt5(at, value); });
    const std::string wide = "%" + std::to_string(width) + "d";
    CheckField(PlainField(width == 0 ? "%d" : wide.c_str(), value), "%*d",
               [=](char *at) { return FieldWide(at, value, width); });
}

void CheckReal(double value) {
    CheckField(PlainField("%24.15e", value), "%24.15e", [=](char *at) { return FieldReal24(at, value); });
    CheckField(PlainField("%15.7e", value), "%15.7e", [=](char *at) { return FieldReal15(at, value); });
}

double RealOf(std::uint64_t bits) {
    double value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

// One row of numbers, and the same into `wanted`.
void PutRow(TextOut *out, int number, Bytes *in, std::string *wanted) {
    const double real = RealOf(Next64(in));
    char *at = FieldInt10(RowBegin(out), number);
    at = FieldReal24(at, real);
    RowEnd(out, FieldBytes(at, "\n", 1));
    *wanted += PlainField("%10d", number) + PlainField("%24.15e", real) + "\n";
}

// Rows that stand three times in the file, with words between them, made once.
void PutThrice(TextOut *out, Bytes *in, std::string *wanted) {
    const int n = static_cast<int>(NextByte(in) % 16);
    const std::string words = "words between\n";
    const auto gap = static_cast<std::int64_t>(words.size());
    const std::int64_t length = 35 * n;
    const std::int64_t distances[2] = {length + gap, 2 * (length + gap)};
    std::string rows;
    StartCopies(out, distances, 2);
    for (int i = 0; i < n; ++i) {
        PutRow(out, i, in, &rows);
    }
    StopCopies(out);
    PutText(out, words.c_str());
    SkipText(out, length);
    PutText(out, words.c_str());
    SkipText(out, length);
    *wanted += rows + words + rows + words + rows;
    Require(rows.size() == static_cast<std::size_t>(length), "fields have the same width for every number");
}

// The lists of rows that carry two or three numbers.
void PutArrays(TextOut *out, Bytes *in, std::string *wanted) {
    int columns[3][4];
    for (int i = 0; i < 4; ++i) {
        for (auto &column : columns) {
            column[i] = static_cast<int>(Next32(in));
        }
    }
    const int n = static_cast<int>(NextByte(in) % 5);
    Output_INTArray2D(out, "two", n, columns[0], columns[1]);
    Output_INTArray3D(out, "three", n, columns[0], columns[1], columns[2]);
    for (int count = 2; count <= 3; ++count) {
        *wanted += count == 2 ? "    two = \n" : "    three = \n";
        for (int i = 0; i < n; ++i) {
            *wanted += "        " + PlainField("%10d", i) + PlainField("%10d", count);
            for (int k = 0; k < count; ++k) {
                *wanted += PlainField("%10d", columns[k][i]);
            }
            *wanted += "\n";
        }
    }
}

void CheckTextFile(Bytes *in) {
    fake::Reset();
    const std::size_t blockSize = 1 + NextByte(in) % 100;
    TextOut out;
    std::string wanted;
    Require(OpenText(&out, "file", blockSize), "a file that can be made is opened");
    while (in->at < in->end) {
        const unsigned what = NextByte(in);
        if (what % 4 == 0) {
            const std::string text(NextByte(in) * (what >= 240 ? 40u : 1u), static_cast<char>('a' + what % 26));
            PutText(&out, text.c_str());
            wanted += text;
        } else if (what % 4 == 1 && CanCopy(&out)) {
            PutThrice(&out, in, &wanted);
        } else if (what % 8 == 2) {
            FlushText(&out);
        } else if (what % 8 == 6) {
            PutArrays(&out, in, &wanted);
        } else {
            PutRow(&out, static_cast<int>(Next32(in)), in, &wanted);
        }
    }
    CloseText(&out);
    Require(fake::GetFile("file") == wanted, "a file holds what was put into it");
    Require(fake::BytesHeld() == 0 && fake::FilesOpen() == 0 && !TextOutputFailed(), "a closed file leaves nothing");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    Bytes numbers{data, data + size};
    while (numbers.at < numbers.end) {
        const auto value = static_cast<int>(Next32(&numbers));
        CheckInt(value, static_cast<int>(NextByte(&numbers) % (kMostField + 1)));
        CheckInt(value >> (NextByte(&numbers) % 31), 10); // all lengths as often as the longest
        const std::uint64_t bits = Next64(&numbers);
        CheckReal(RealOf(bits));
        CheckReal(static_cast<double>(value) / 1000);
    }
    Bytes text{data, data + size};
    CheckTextFile(&text);
    return 0;
}
