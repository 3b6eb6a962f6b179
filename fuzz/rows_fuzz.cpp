// Data lines and numbers: the fast ways against the plain rules.
//
// The first bytes choose the size of a read, the kind of section and the room for a set's line; the rest is the
// section's text. It is read twice, row by row: as the program reads it (fast rows where they apply, cursors over
// the line in hand elsewhere), and by the plain rules. Both must find the same rows, report the same, and end at
// the same line.
#include "fuzz/oracle.h"

#include "tests/support/capture.h"
#include "tests/support/fakesystem.h"
#include "tests/support/plain/plain.h"

#include "abaqus/abqline.h"
#include "abaqus/abqrows.h"

#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr std::size_t kReadSizes[] = {1, 2, 3, 7, 20, 100, 1000, 1 << 20};
constexpr int kElementNumbers[] = {4, 5, 7, 11};
constexpr int kMostRoom = 2560;

enum Kind { kNodes, kElements, kSet };

// Everything that was read, in order, as bits: -0.0 differs from 0.0, and NaN equals itself.
struct Section {
    std::vector<std::uint64_t> values;
    std::string log;
    std::string lastLine; // the line that ended the section
    long long nLines;     // where it ended
};

void Add(Section *section, int value) {
    section->values.push_back(static_cast<std::uint64_t>(value));
}

void Add(Section *section, double value) {
    std::uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    section->values.push_back(bits);
}

// The program's way ---------------------------------------------------------------------------------------

bool TakeFast(LineSource *stream, Kind kind, int n, Section *section) {
    int numbers[kMostRoom];
    double xyz[3];
    int count = -1;
    if (kind == kNodes && TakeNodeRow(stream, numbers, &xyz[0], &xyz[1], &xyz[2])) {
        Add(section, numbers[0]);
        for (const double value : xyz) {
            Add(section, value);
        }
        return true;
    }
    if (kind == kElements && TakeElementRow(stream, n, numbers)) {
        count = n;
    }
    if (kind == kSet) {
        count = TakeSetRow(stream, n, numbers);
    }
    for (int i = 0; i < count; ++i) {
        Add(section, numbers[i]);
    }
    return count >= 0;
}

void ScanLine(Kind kind, int n, Section *section) {
    char *cursor = ABQLine();
    int number;
    if (kind == kSet) {
        while (NextINT(&number, &cursor, ',') != 0) {
            Add(section, number);
        }
        return;
    }
    for (int i = 0; i < (kind == kNodes ? 1 : n); ++i) {
        NextINT(&number, &cursor, ',');
        Add(section, number);
    }
    for (int i = 0; i < (kind == kNodes ? 3 : 0); ++i) {
        double value;
        NextDBL(&value, &cursor, ',');
        Add(section, value);
    }
}

void ReadFast(LineSource *stream, Kind kind, int n, Section *section) {
    for (;;) {
        if (TakeFast(stream, kind, n, section)) {
            continue;
        }
        if (!ABQNextLine(stream) || ABQAtKeyword()) {
            break;
        }
        if (kind != kSet) {
            ABQLinkContLines(stream);
        }
        ScanLine(kind, n, section);
    }
    section->lastLine = ABQLine();
    section->nLines = stream->nLines;
}

Section ReadByProgram(const std::string &text, std::size_t readSize, Kind kind, int n) {
    fake::Reset();
    fake::PutFile("deck", text);
    fake::ShortReads(readSize);
    Section section{};
    section.log = Printed([&] {
        LineSource stream;
        Require(OpenLines(&stream, "deck"), "a file that can be read is opened");
        ReadFast(&stream, kind, n, &section);
        CloseLines(&stream);
    });
    return section;
}

// The plain way -------------------------------------------------------------------------------------------

void ScanPlain(std::string line, Kind kind, int n, Section *section) {
    if (kind == kSet) {
        for (std::string field = PlainGrab(&line, ','); !field.empty(); field = PlainGrab(&line, ',')) {
            Add(section, PlainINT(field));
        }
        return;
    }
    for (int i = 0; i < (kind == kNodes ? 1 : n); ++i) {
        Add(section, PlainINT(PlainGrab(&line, ',')));
    }
    for (int i = 0; i < (kind == kNodes ? 3 : 0); ++i) {
        Add(section, PlainDBL(PlainGrab(&line, ',')));
    }
}

Section ReadPlain(const std::string &deck, Kind kind, int n) {
    PlainText text{deck, 0, 0};
    PlainLine line{};
    Section section{};
    while (PlainNextLogical(&text, &line) && line.text[0] != '*') {
        if (kind != kSet) {
            PlainJoin(&text, &line);
        }
        section.log += line.log;
        ScanPlain(line.text, kind, n, &section);
    }
    section.log += line.text[0] == '*' ? line.log : "";
    section.lastLine = line.text;
    section.nLines = text.nLines;
    return section;
}

// Fields and numbers on their own ---------------------------------------------------------------------------

std::uint64_t Bits(double value) {
    std::uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

void CheckNumbers(const std::string &text) {
    Require(ReadINT(text.c_str()) == PlainINT(text), "whole numbers are read as by the C library");
    Require(Bits(ReadDBL(text.c_str())) == Bits(PlainDBL(text)), "real numbers are read as by the C library");
}

// All fields of a line by the three functions that blank what they take.
void CheckGrabbing(const std::string &text) {
    std::string plain = text;
    std::string line = text;
    std::string whole = text; // by a cursor, which leaves the line as it is
    line += '\0';
    char *cursor = &whole[0];
    for (int i = 0; i < 40; ++i) {
        const std::string wanted = PlainGrab(&plain, ',');
        const int found = wanted.empty() ? 0 : 1;
        char field[kNameBuffer];
        int number;
        double real;
        Require(NextCHR(field, &cursor, ',') == found && wanted == field, "a cursor takes the same field");
        if (i % 3 == 0) {
            Require(GrabNextCHRFromCHR(field, &line[0], ',') == found && wanted == field, "a text field is taken");
        } else if (i % 3 == 1) {
            Require(GrabNextINTFromCHR(&number, &line[0], ',') == found && number == PlainINT(wanted),
                    "a whole number is taken");
        } else {
            Require(GrabNextDBLFromCHR(&real, &line[0], ',') == found && Bits(real) == Bits(PlainDBL(wanted)),
                    "a real number is taken");
        }
        Require(plain == line.c_str(), "what was taken is blanked");
    }
}

void CheckFields(const std::string &text) {
    PlainText lines{text, 0, 0};
    std::string line;
    while (PlainNextLine(&lines, &line)) {
        CheckGrabbing(line);
        while (!line.empty()) {
            const std::string field = PlainGrab(&line, ',');
            CheckNumbers(field);
            line = field.empty() && line.find_first_not_of(' ') == std::string::npos ? "" : line;
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size < 2) {
        return 0;
    }
    const std::size_t readSize = kReadSizes[data[0] % 8];
    const Kind kind = static_cast<Kind>(data[0] / 8 % 3);
    const int n = kind == kSet ? (data[1] % 2 == 0 ? kMostRoom : data[1] / 2) : kElementNumbers[data[1] % 4];
    const std::string text(reinterpret_cast<const char *>(data) + 2, size - 2);

    const Section fast = ReadByProgram(text, readSize, kind, n);
    const Section plain = ReadPlain(text, kind, n);
    Require(fast.values == plain.values, "fast and plain ways read the same numbers");
    Require(fast.log == plain.log, "fast and plain ways report the same");
    Require(fast.lastLine == plain.lastLine, "fast and plain ways end a section at the same line");
    Require(fast.nLines == plain.nLines, "fast and plain ways count the same lines");
    CheckFields(text);
    return 0;
}
