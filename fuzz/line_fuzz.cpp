// Line preparation against the stated steps: compression, joining, the limit, parameters, names.
//
// The first byte chooses the size of a read, the next two which lines are joined. In the text that follows, the
// byte 0xfe stands for a run: the next byte, 40 times the byte after it. So a short input makes lines that pass
// the limit.
#include "fuzz/oracle.h"

#include "tests/support/capture.h"
#include "tests/support/fakesystem.h"
#include "tests/support/plain/plain.h"

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
    fake::Reset();
    fake::PutFile("deck", text);
    fake::ShortReads(readSize);
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

// Two names, the halves of a line.
void CheckNames(const std::string &line) {
    const std::string a = line.substr(0, line.size() / 2);
    const std::string b = line.substr(line.size() / 2);
    for (const std::string &second : {b, a, a + " ", " " + a}) {
        Require((AreNamesSame(a.c_str(), second.c_str()) == 1) == PlainSame(a, second), "names are compared");
        for (int n = 0; n < 4; ++n) {
            Require((AreNamesSamn(a.c_str(), second.c_str(), n) == 1) == PlainSamn(a, second, n),
                    "beginnings of names are compared");
        }
    }
}

// Takes lines one after the other; bits of `script` say which are joined with what follows them.
std::string ReadLines(const std::string &text, std::size_t readSize, unsigned script, std::string *wantedLog) {
    fake::Reset();
    fake::PutFile("deck", text);
    fake::ShortReads(readSize);
    LineSource stream;
    Require(OpenLines(&stream, "deck"), "a file that can be read is opened");
    PlainText plain{text, 0, 0};
    PlainLine wanted{};
    std::string log;
    bool more = true;
    for (unsigned i = 0; more; ++i) {
        more = PlainNextLogical(&plain, &wanted);
        const bool joins = (script >> i % 16 & 1) != 0;
        log += Printed([&] { Require(ABQNextLine(&stream) == more, "lines end where the text ends"); });
        Require(wanted.text == ABQLine(), "the line in hand is the next that is not empty");
        if (joins) {
            PlainJoin(&plain, &wanted);
            log += Printed([&] { ABQLinkContLines(&stream); });
        }
        Require(wanted.text == ABQLine(), "lines that end in a comma are joined");
        Require(stream.nLines == plain.nLines, "physical lines are counted");
        *wantedLog += wanted.log;
        if (more && i < 20) {
            Printed([&] { CheckParameters(wanted.text); });
        }
    }
    CloseLines(&stream);
    return log;
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
