// Preparing the deck's lines.
#include "abaqus/abqline.h"

#include "abaqus/abqdeck.h"

#include <climits>
#include <cstdio>
#include <cstring>

namespace {

// What becomes of each byte: 0 it is dropped, else the character that is kept for it.
struct KeepTable {
    char kept[256];
};

constexpr KeepTable MakeKeepTable() {
    KeepTable table{};
    for (int c = 'a'; c <= 'z'; ++c) {
        table.kept[c] = static_cast<char>(c - 'a' + 'A');
    }
    for (int c = 'A'; c <= 'Z'; ++c) {
        table.kept[c] = static_cast<char>(c);
    }
    for (int c = '0'; c <= '9'; ++c) {
        table.kept[c] = static_cast<char>(c);
    }
    constexpr char kOthers[] = "*+,-.=_'\"!#$%&()/:<>?@[]^`{|}~\n";
    for (int i = 0; kOthers[i] != '\0'; ++i) {
        table.kept[static_cast<unsigned char>(kOthers[i])] = kOthers[i];
    }
    return table;
}

constexpr KeepTable kKeep = MakeKeepTable();

// One physical line on its way into a buffer of `room` characters, piece by piece.
struct Compressor {
    char *to;      // where the kept characters go
    int room;      // characters that fit
    int length;    // characters stored
    bool bOver;    // more were kept than fit
    bool bStar;    // a "*" is pending: whether it is kept or begins a comment shows at the next byte
    bool bDone;    // a comment or a NUL byte has ended the text
    char lastKept; // the last character kept, stored or not; NUL when none
};

void Keep(Compressor *line, char c) {
    line->lastKept = c;
    if (line->length < line->room) {
        line->to[line->length++] = c;
    } else {
        line->bOver = true;
    }
}

void CompressPiece(Compressor *line, const char *at, const char *end) {
    for (; at != end && !line->bDone; ++at) {
        if (*at == '*' || *at == '\0' || line->bStar) {
            const bool comment = line->bStar && *at == '*';
            if (line->bStar && !comment) {
                Keep(line, '*');
            }
            line->bStar = *at == '*' && !comment;
            line->bDone = comment || *at == '\0';
            if (line->bStar || line->bDone) {
                continue;
            }
        }
        if (const char kept = kKeep.kept[static_cast<unsigned char>(*at)]) {
            Keep(line, kept);
        }
    }
}

void CompressEnd(Compressor *line) {
    if (line->bStar) {
        Keep(line, '*');
        line->bStar = false;
    }
    line->to[line->length] = '\0';
}

// The line in hand. c1inpbuff holds it as it is used; the flags tell of the logical line it stands for.
char c1inpbuff[kLineBuffer];
int lineLength = 0;
long long lineNumber = 0; // of its first physical line
long long lineOffset = 0; // bytes of the deck before it
bool bContinues = false;  // its last physical line ended in a comma (which may itself have been dropped)
bool bCut = false;        // it passed the limit: what follows of it is dropped

// Appends the next physical line to the line in hand, unless that has passed the limit. False at the end of the
// deck. *empty tells that the line compressed to nothing: it then changed nothing.
bool AppendPhysicalLine(LineSource *stream, bool *empty) {
    const char *begin;
    const char *end;
    bool last;
    const long long offset = BytesTaken(stream);
    if (!NextPiece(stream, &begin, &end, &last)) {
        ABQRequireReadable(stream);
        return false;
    }
    const bool first = lineLength == 0;
    Compressor line{};
    line.to = c1inpbuff + lineLength;
    line.room = kLineLength - lineLength;
    CompressPiece(&line, begin, end);
    while (!last && NextPiece(stream, &begin, &end, &last)) {
        CompressPiece(&line, begin, end);
    }
    ABQRequireReadable(stream);
    CompressEnd(&line);
    *empty = line.lastKept == '\0';
    if (*empty) {
        return true;
    }
    if (first) {
        lineNumber = stream->nLines;
        lineOffset = offset;
    }
    bContinues = line.lastKept == ',';
    if (line.bOver && !bCut) {
        const long long number = stream->nLines;
        std::printf("\n  Error> line %d is longer than %d characters.\n",
                    number > INT_MAX ? INT_MAX : static_cast<int>(number), kLineLength);
    }
    // A single line keeps its beginning, a continuation is kept whole or not at all.
    const bool keep = first || (!line.bOver && !bCut);
    bCut = bCut || line.bOver;
    lineLength += keep ? line.length : 0;
    c1inpbuff[lineLength] = '\0';
    return true;
}

// The place behind the first `name` that is followed by "=", or null. An empty name stands everywhere, also at the end.
const char *BehindKey(const char *text, const char *name) {
    const std::size_t length = std::strlen(name);
    for (; (text = std::strstr(text, name)) != nullptr && *text != '\0'; ++text) {
        if (text[length] == '=') {
            return text + length + 1;
        }
    }
    return nullptr;
}

} // namespace

int ABQCompressLine(char *line) {
    Compressor in{};
    in.to = line;
    in.room = INT_MAX;
    CompressPiece(&in, line, line + std::strlen(line));
    CompressEnd(&in);
    return in.length;
}

char *ABQLine() {
    return c1inpbuff;
}

long long ABQLineNumber() {
    return lineNumber;
}

long long ABQLineOffset() {
    return lineOffset;
}

void ABQDropLine() {
    lineLength = 0;
    c1inpbuff[0] = '\0';
    bContinues = false;
    bCut = false;
}

bool ABQNextLine(LineSource *stream) {
    ABQDropLine();
    if (stream == nullptr) {
        return false;
    }
    bool empty = true;
    while (empty && AppendPhysicalLine(stream, &empty)) {
    }
    return !empty;
}

void ABQLinkContLines(LineSource *stream) {
    if (stream == nullptr) {
        return;
    }
    bool empty;
    while (bContinues && AppendPhysicalLine(stream, &empty)) {
    }
}

int ABQParseLabel(char *value, const char *name) {
    value[0] = '\0';
    const char *from = BehindKey(c1inpbuff, name);
    if (from == nullptr) {
        return 0;
    }
    const std::size_t length = std::strcspn(from, ",");
    if (length > kNameLength) {
        std::printf("\n  Error> the value of %s is longer than %d characters.\n", name, kNameLength);
    }
    const std::size_t kept = length > kNameLength ? kNameLength : length;
    std::memcpy(value, from, kept);
    value[kept] = '\0';
    return 1;
}

bool ABQRefuse(LineSource *stream, const char *const *words, int nWords) {
    for (int i = 0; i < nWords; ++i) {
        if (Find(c1inpbuff, words[i]) != 0) {
            std::printf("\n  Error> Undesirable parameters: %s.\n", words[i]);
            ABQNextLine(stream);
            return true;
        }
    }
    return false;
}
