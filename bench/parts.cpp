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
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int kRows = 20000;

int Below(std::mt19937 &random, int n) {
    return std::uniform_int_distribution<int>(0, n - 1)(random);
}

// A file of text for the reader's line source.
class DeckFile {
  public:
    explicit DeckFile(const std::string &text) : size_(text.size()) {
        char name[] = "/tmp/kivom-bench-XXXXXX";
        const int file = mkstemp(name);
        path_ = file == -1 ? "" : name;
        std::ofstream(path_, std::ios::binary) << text;
    }
    DeckFile(const DeckFile &) = delete;
    DeckFile &operator=(const DeckFile &) = delete;
    ~DeckFile() {
        std::remove(path_.c_str());
    }

    const char *path() const {
        return path_.c_str();
    }
    std::int64_t size() const {
        return static_cast<std::int64_t>(size_);
    }

  private:
    std::string path_;
    std::size_t size_;
};

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
    double x;
    double y;
    double z;
    if (!TakeNodeRow(stream, &number, &x, &y, &z)) {
        return PlainNodeRow(stream, sum);
    }
    *sum += number;
    *sum += x;
    *sum += y;
    *sum += z;
    return true;
}

double ReadAll(const DeckFile &deck, RowReader reader) {
    LineSource stream;
    double sum = 0;
    if (OpenLines(&stream, deck.path())) {
        while (reader(&stream, &sum)) {
        }
        CloseLines(&stream);
    }
    return sum;
}

void ReadRows(benchmark::State &state, const std::string &text, RowReader reader, RowReader plain) {
    const DeckFile deck(text);
    if (ReadAll(deck, reader) != ReadAll(deck, plain)) {
        state.SkipWithError("the two ways read different numbers");
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(ReadAll(deck, reader));
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * deck.size());
}

void ElementRowsPlain(benchmark::State &state) {
    ReadRows(state, ElementRows(), PlainElementRow, PlainElementRow);
}

void ElementRowsFast(benchmark::State &state) {
    ReadRows(state, ElementRows(), FastElementRow, PlainElementRow);
}

void NodeRowsPlain(benchmark::State &state) {
    ReadRows(state, NodeRows(), PlainNodeRow, PlainNodeRow);
}

void NodeRowsFast(benchmark::State &state) {
    ReadRows(state, NodeRows(), FastNodeRow, PlainNodeRow);
}

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
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(text.size()));
}

// Numbers --------------------------------------------------------------------------------------------------

std::vector<double> Reals() {
    std::mt19937 random(3);
    std::vector<double> values;
    for (int i = 0; i < kRows; ++i) {
        values.push_back(1e-8 * Below(random, 1000000000));
    }
    return values;
}

using RealField = char *(*)(char *, double);

char *PlainReal24(char *at, double value) {
    return at + std::snprintf(at, kMostField, "%24.15e", value);
}

char *PlainReal15(char *at, double value) {
    return at + std::snprintf(at, kMostField, "%15.7e", value);
}

void WriteReals(benchmark::State &state, RealField field, RealField plain) {
    const std::vector<double> values = Reals();
    char a[64];
    char b[64];
    for (const double value : values) {
        if (std::string(a, field(a, value)) != std::string(b, plain(b, value))) {
            state.SkipWithError("not what the C library gives");
            return;
        }
    }
    for (auto _ : state) {
        for (const double value : values) {
            benchmark::DoNotOptimize(field(a, value));
        }
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * kRows);
}

void Real24Plain(benchmark::State &state) {
    WriteReals(state, PlainReal24, PlainReal24);
}

void Real24Fast(benchmark::State &state) {
    WriteReals(state, FieldReal24, PlainReal24);
}

void Real15Plain(benchmark::State &state) {
    WriteReals(state, PlainReal15, PlainReal15);
}

void Real15Fast(benchmark::State &state) {
    WriteReals(state, FieldReal15, PlainReal15);
}

char *PlainInt10(char *at, int value) {
    return at + std::snprintf(at, kMostField, "%10d", value);
}

void WriteInts(benchmark::State &state, char *(*field)(char *, int)) {
    std::mt19937 random(4);
    std::vector<int> values;
    char a[64];
    char b[64];
    for (int i = 0; i < kRows; ++i) {
        values.push_back(Below(random, 500000));
        if (std::string(a, field(a, values.back())) != std::string(b, PlainInt10(b, values.back()))) {
            state.SkipWithError("not what the C library gives");
            return;
        }
    }
    for (auto _ : state) {
        for (const int value : values) {
            benchmark::DoNotOptimize(field(a, value));
        }
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * kRows);
}

void Int10Plain(benchmark::State &state) {
    WriteInts(state, PlainInt10);
}

void Int10Fast(benchmark::State &state) {
    WriteInts(state, FieldInt10);
}

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
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * kRows);
}

void Order(benchmark::State &state) { // argument: distance of neighbouring numbers
    const std::vector<int> numbers = Shuffled(static_cast<int>(state.range(0)));
    std::vector<int> keys = numbers;
    std::vector<int> order(kRows);
    std::vector<int> plainKeys = numbers;
    std::vector<int> plainOrder(kRows);
    for (int i = 0; i < kRows; ++i) {
        plainOrder[static_cast<std::size_t>(i)] = i;
    }
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
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * kRows);
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
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * kRows);
}

void LookUpPlain(benchmark::State &state) {
    LookUp(state, false);
}

void LookUpPrepared(benchmark::State &state) {
    LookUp(state, true);
}

} // namespace

BENCHMARK(ElementRowsPlain);
BENCHMARK(ElementRowsFast);
BENCHMARK(NodeRowsPlain);
BENCHMARK(NodeRowsFast);
BENCHMARK(Compress);
BENCHMARK(Int10Plain);
BENCHMARK(Int10Fast);
BENCHMARK(Real24Plain);
BENCHMARK(Real24Fast);
BENCHMARK(Real15Plain);
BENCHMARK(Real15Fast);
BENCHMARK(Sort);
BENCHMARK(Order)->Arg(1)->Arg(7);
BENCHMARK(LookUpPlain)->Arg(1)->Arg(7);
BENCHMARK(LookUpPrepared)->Arg(1)->Arg(7);
BENCHMARK_MAIN();
