// Times of the parts, each fast routine beside its plain one. A benchmark first checks that both give the same
// answers on its data and refuses to run otherwise.
#include "abaqus/abqline.h"
#include "abaqus/abqrows.h"
#include "output/textout.h"
#include "support/frame.h"
#include "support/lines.h"
#include "support/lookup.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <numeric>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int kRows = 20000;

int Below(std::mt19937 &random, int n) {
    return std::uniform_int_distribution<int>(0, n - 1)(random);
}

// A file of text for the reader's line source; the caller removes it.
std::string DeckFile(const std::string &text) {
    char name[] = "/tmp/kivom-bench-XXXXXX";
    const int file = mkstemp(name);
    const std::string path = file == -1 ? "" : name;
    std::ofstream(path, std::ios::binary) << text;
    return path;
}

std::string ElementRows() {
    std::mt19937 random(1);
    std::string text;
    for (int i = 1; i <= kRows; ++i) {
        text += std::to_string(i);
        for (int k = 0; k < 4; ++k) {
            text += ", " + std::to_string(1 + Below(random, 200000));
        }
        text += '\n';
    }
    return text;
}

std::string NodeRows() {
    std::mt19937 random(2);
    std::string text;
    for (int i = 1; i <= kRows; ++i) {
        char row[128];
        std::snprintf(row, sizeof row, "%d, %.9g, %.9g, %.9g\n", i, 1e-7 * Below(random, 100000000),
                      1e-7 * Below(random, 100000000), 1e-7 * Below(random, 100000000));
        text += row;
    }
    return text;
}

// Sums of what was read: what the two ways must agree on.
using RowReader = bool (*)(LineSource *, double *);

bool PlainRow(LineSource *stream, int nInts, int nReals, double *sum) {
    if (!ABQNextLine(stream)) {
        return false;
    }
    ABQLinkContLines(stream);
    for (int i = 0; i < nInts; ++i) {
        int value;
        GrabNextINTFromCHR(&value, ABQLine(), ',');
        *sum += value;
    }
    for (int i = 0; i < nReals; ++i) {
        double value;
        GrabNextDBLFromCHR(&value, ABQLine(), ',');
        *sum += value;
    }
    return true;
}

bool PlainElementRow(LineSource *stream, double *sum) {
    return PlainRow(stream, 5, 0, sum);
}

bool PlainNodeRow(LineSource *stream, double *sum) {
    return PlainRow(stream, 1, 3, sum);
}

// At the end of a block the fast way takes nothing, and the plain one takes the row.
bool FastElementRow(LineSource *stream, double *sum) {
    int numbers[5];
    if (!TakeElementRow(stream, 5, numbers)) {
        return PlainElementRow(stream, sum);
    }
    for (const int number : numbers) {
        *sum += number;
    }
    return true;
}

bool FastNodeRow(LineSource *stream, double *sum) {
    int number;
    double place[3];
    if (!TakeNodeRow(stream, &number, place, place + 1, place + 2)) {
        return PlainNodeRow(stream, sum);
    }
    for (const double value : {static_cast<double>(number), place[0], place[1], place[2]}) {
        *sum += value;
    }
    return true;
}

double ReadAll(const std::string &path, RowReader reader) {
    LineSource stream;
    double sum = 0;
    if (OpenLines(&stream, path.c_str())) {
        while (reader(&stream, &sum)) {
        }
        CloseLines(&stream);
    }
    return sum;
}

void ReadRows(benchmark::State &state, const std::string &text, RowReader reader, RowReader plain) {
    const std::string path = DeckFile(text);
    if (ReadAll(path, reader) != ReadAll(path, plain)) {
        state.SkipWithError("the two ways read different numbers");
    } else {
        for (auto _ : state) {
            benchmark::DoNotOptimize(ReadAll(path, reader));
        }
    }
    std::remove(path.c_str());
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

BENCHMARK_CAPTURE(ReadRows, ElementsPlain, ElementRows(), PlainElementRow, PlainElementRow);
BENCHMARK_CAPTURE(ReadRows, ElementsFast, ElementRows(), FastElementRow, PlainElementRow);
BENCHMARK_CAPTURE(ReadRows, NodesPlain, NodeRows(), PlainNodeRow, PlainNodeRow);
BENCHMARK_CAPTURE(ReadRows, NodesFast, NodeRows(), FastNodeRow, PlainNodeRow);

void Compress(benchmark::State &state) {
    const std::string text = "  *Element, type=C3D10, elset=Solid_Part_Of_The_Bracket   ** first section";
    std::string line = text;
    if (ABQCompressLine(line.data()) != 51) {
        state.SkipWithError("wrong length");
        return;
    }
    for (auto _ : state) {
        line = text;
        benchmark::DoNotOptimize(ABQCompressLine(line.data()));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

BENCHMARK(Compress);

// Numbers --------------------------------------------------------------------------------------------------

std::vector<double> Reals() {
    std::mt19937 random(3);
    std::vector<double> values(kRows);
    std::generate(values.begin(), values.end(), [&random] { return 1e-8 * Below(random, 1000000000); });
    return values;
}

std::vector<int> Ints() {
    std::mt19937 random(4);
    std::vector<int> values(kRows);
    std::generate(values.begin(), values.end(), [&random] { return Below(random, 500000); });
    return values;
}

char *PlainReal24(char *at, double value) {
    return at + std::snprintf(at, kMostField, "%24.15e", value);
}

char *PlainReal15(char *at, double value) {
    return at + std::snprintf(at, kMostField, "%15.7e", value);
}

char *PlainInt10(char *at, int value) {
    return at + std::snprintf(at, kMostField, "%10d", value);
}

template <class Value> using Field = char *(*)(char *, Value);

template <class Value>
void Write(benchmark::State &state, const std::vector<Value> &values, Field<Value> field, Field<Value> plain) {
    char a[64];
    char b[64];
    for (const Value value : values) {
        if (std::string(a, field(a, value)) != std::string(b, plain(b, value))) {
            state.SkipWithError("not what the C library gives");
            return;
        }
    }
    for (auto _ : state) {
        for (const Value value : values) {
            benchmark::DoNotOptimize(field(a, value));
        }
    }
    state.SetItemsProcessed(state.iterations() * kRows);
}

constexpr auto WriteInts = &Write<int>;
constexpr auto WriteReals = &Write<double>;

BENCHMARK_CAPTURE(WriteInts, Int10Plain, Ints(), PlainInt10, PlainInt10);
BENCHMARK_CAPTURE(WriteInts, Int10Fast, Ints(), FieldInt10, PlainInt10);
BENCHMARK_CAPTURE(WriteReals, Real24Plain, Reals(), PlainReal24, PlainReal24);
BENCHMARK_CAPTURE(WriteReals, Real24Fast, Reals(), FieldReal24, PlainReal24);
BENCHMARK_CAPTURE(WriteReals, Real15Plain, Reals(), PlainReal15, PlainReal15);
BENCHMARK_CAPTURE(WriteReals, Real15Fast, Reals(), FieldReal15, PlainReal15);

// Sorting and look-up ---------------------------------------------------------------------------------------

std::vector<int> Shuffled(int stride) {
    std::mt19937 random(5);
    std::vector<int> numbers;
    for (int i = 0; i < kRows; ++i) {
        numbers.push_back(1 + i * stride);
    }
    std::shuffle(numbers.begin(), numbers.end(), random);
    return numbers;
}

void Sort(benchmark::State &state) {
    const std::vector<int> numbers = Shuffled(7);
    std::vector<int> mine = numbers;
    std::vector<int> plain = numbers;
    BinarySort(kRows, mine.data());
    std::sort(plain.begin(), plain.end());
    if (mine != plain) {
        state.SkipWithError("not sorted");
        return;
    }
    for (auto _ : state) {
        mine = numbers;
        BinarySort(kRows, mine.data());
    }
    state.SetItemsProcessed(state.iterations() * kRows);
}

void Order(benchmark::State &state) { // argument: distance of neighbouring numbers
    const std::vector<int> numbers = Shuffled(static_cast<int>(state.range(0)));
    std::vector<int> keys = numbers;
    std::vector<int> order(kRows);
    std::vector<int> plainKeys = numbers;
    std::vector<int> plainOrder(kRows);
    std::iota(plainOrder.begin(), plainOrder.end(), 0);
    OrderRows(kRows, keys.data(), order.data());
    SortByFirstArray2(kRows, plainKeys.data(), plainOrder.data());
    if (keys != plainKeys || order != plainOrder) {
        state.SkipWithError("not the order of the plain sort");
        return;
    }
    for (auto _ : state) {
        keys = numbers;
        OrderRows(kRows, keys.data(), order.data());
    }
    state.SetItemsProcessed(state.iterations() * kRows);
}

void LookUp(benchmark::State &state, bool prepared) {
    const int stride = static_cast<int>(state.range(0));
    std::vector<int> list = Shuffled(stride);
    const std::vector<int> wanted = list;
    std::sort(list.begin(), list.end());
    IDIndex index;
    BuildIDIndex(&index, kRows, list.data());
    for (const int number : wanted) {
        if (FindIDByIndex(&index, number) != FindIDPositionInTheList(kRows, list.data(), number)) {
            state.SkipWithError("another position");
            return;
        }
    }
    for (auto _ : state) {
        for (const int number : wanted) {
            benchmark::DoNotOptimize(prepared ? FindIDByIndex(&index, number)
                                              : FindIDPositionInTheList(kRows, list.data(), number));
        }
    }
    ReleaseIDIndex(&index);
    state.SetItemsProcessed(state.iterations() * kRows);
}

BENCHMARK(Sort);
BENCHMARK(Order)->Arg(1)->Arg(7);
BENCHMARK_CAPTURE(LookUp, Plain, false)->Arg(1)->Arg(7);
BENCHMARK_CAPTURE(LookUp, Prepared, true)->Arg(1)->Arg(7);

} // namespace

BENCHMARK_MAIN();
