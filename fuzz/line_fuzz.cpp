// Line preparation against the stated steps: compression, joining, the limit, parameters, names.
//
// The first byte chooses the size of a read, the next two which lines are joined. In the text that follows, the
// byte 0xfe stands for a run: the next byte, 40 times the byte after it. So a short input makes lines that pass
// the limit.
#include "fuzz/memorysystem.h"
#include "fuzz/oracle.h"
#include "fuzz/plain.h"

#include "abaqus/abqline.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace {

constexpr std::size_t kReadSizes[] = {1, 2, 3, 7, 64, 1000, 5119, 1 << 20};
constexpr std::size_t kMostText = 30000;

std::string ExpandRuns(Bytes *in) {
    std::string text;
    while (in->at < in->end && text.size() < kMostText) {
        const unsigned byte = NextByte(in);
        if (byte == 0xfe) {
            const auto c = static_cast<char>(NextByte(in));
            text.append(NextByte(in) * std::size_t{40}, c);
        } else {
            text += static_cast<char>(byte);
        }
    }
    return text;
}

void CheckCompression(const std::string &text) {
    PlainText lines{text, 0, 0};
    std::string line;
    while (PlainNextLine(&lines, &line)) {
        const std::string wanted = PlainCompressed(line);
        line += '\0';
        const int length = ABQCompressLine(&line[0]);
        Require(wanted == line.c_str() && static_cast<int>(wanted.size()) == length, "a line is compressed in place");
    }
}

// The text's lines as they are, one after the other.
void CheckPlainLines(const std::string &text, std::size_t readSize) {
    ResetSystem();
    TheSystem()->deck = text;
    TheSystem()->readSize = readSize;
    LineSource stream;
    Require(OpenLines(&stream, "deck"), "a file that can be read is opened");
    PlainText plain{text, 0, 0};
    std::string wanted;
    std::string line(text.size() + 1, '?');
    while (PlainNextLine(&plain, &wanted)) {
        fgetportableline(&stream, &line[0]);
        Require(wanted == line.c_str() && stream.nLines == plain.nLines, "a line is taken as it is");
    }
    fgetportableline(&stream, &line[0]);
    Require(line[0] == '\0', "at the end of the text a line is empty");
    CloseLines(&stream);
}

// Parameters of the line in hand, with values that the reader keeps whole.
void CheckParameters(const std::string &line) {
    for (const char *name : {"NSET", "ELSET", "TYPE", "NAME"}) {
        std::string wanted;
        const bool found = PlainParameter(line, name, &wanted);
        char value[kNameBuffer];
        Require((ABQParseLabel(value, name) == 1) == found, "a parameter is found where it stands");
        Require(wanted.substr(0, kNameLength) == value, "a value ends at the comma");
        Require((Find(line.c_str(), name) == 1) == (line.find(name) != std::string::npos), "a word is found");
    }
}

std::string WithoutBlanks(const std::string &name) {
    std::string kept;
    for (const char c : name) {
        kept += c == ' ' ? "" : std::string(1, c);
    }
    return kept;
}

// Two names, the halves of a line. Blanks count nowhere but at the end of the second.
void CheckNames(const std::string &line) {
    const std::size_t half = line.size() / 2;
    const std::string a = line.substr(0, half);
    const std::string b = line.substr(half);
    for (const std::string &second : {b, a, a + " ", " " + a}) {
        const bool trailing = !second.empty() && second.back() == ' ';
        const bool same = a.empty()                  ? second.empty()
                          : WithoutBlanks(a).empty() ? second.empty()
                                                     : !trailing && WithoutBlanks(a) == WithoutBlanks(second);
        Require((AreNamesSame(a.c_str(), second.c_str()) == 1) == same, "names are compared without blanks");
        for (int n = 0; n < 4; ++n) {
            const std::string x = WithoutBlanks(a);
            const std::string y = WithoutBlanks(second);
            const auto length = static_cast<std::size_t>(n);
            // For n = 0 the walk still compares before it counts: only an `a` of blanks agrees.
            const bool agree = n == 0 ? x.empty() : x.size() >= length && x.substr(0, length) == y.substr(0, length);
            Require((AreNamesSamn(a.c_str(), second.c_str(), n) == 1) == agree, "beginnings of names are compared");
        }
    }
}

// Takes lines one after the other; bits of `script` say which are joined with what follows them.
std::string ReadLines(const std::string &text, std::size_t readSize, unsigned script, std::string *wantedLog) {
    ResetSystem();
    TheSystem()->deck = text;
    TheSystem()->readSize = readSize;
    char *log = nullptr;
    std::size_t size = 0;
    std::FILE *memory = open_memstream(&log, &size);
    std::FILE *terminal = stdout;
    LineSource stream;
    Require(OpenLines(&stream, "deck"), "a file that can be read is opened");
    PlainText plain{text, 0, 0};
    PlainLine wanted{};
    for (unsigned i = 0;; ++i) {
        const bool more = PlainNextLogical(&plain, &wanted);
        stdout = memory;
        Require(ABQNextLine(&stream) == more, "lines end where the text ends");
        Require(wanted.text == ABQLine(), "the line in hand is the next that is not empty");
        if ((script >> i % 16 & 1) != 0) {
            PlainJoin(&plain, &wanted);
            ABQLinkContLines(&stream);
        }
        stdout = terminal;
        Require(wanted.text == ABQLine(), "lines that end in a comma are joined");
        Require(stream.nLines == plain.nLines, "physical lines are counted");
        *wantedLog += wanted.log;
        if (!more) {
            break;
        }
        if (i < 20) {
            std::FILE *nowhere = stdout;
            static std::FILE *sink = std::fopen("/dev/null", "w");
            stdout = sink;
            CheckParameters(wanted.text);
            stdout = nowhere;
        }
    }
    CloseLines(&stream);
    std::fclose(memory);
    const std::string got(log, size);
    std::free(log);
    return got;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    Bytes in{data, data + size};
    const std::size_t readSize = kReadSizes[NextByte(&in) % 8];
    const unsigned script = NextByte(&in) << 8 | NextByte(&in);
    const std::string text = ExpandRuns(&in);
    CheckCompression(text);
    CheckPlainLines(text, readSize);
    CheckNames(text.substr(0, std::min(text.find('\0'), std::size_t{600})));
    std::string wantedLog;
    const std::string log = ReadLines(text, readSize, script, &wantedLog);
    Require(log == wantedLog, "lines that are too long are reported once, with their number");
    return 0;
}
