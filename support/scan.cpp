// Fields taken out of a line of text.
#include "support/frame.h"

#include "support/lines.h"

#include <cstring>

namespace {

// The field at *cursor into `field` (257 bytes); the cursor moves behind its separator. Returns its length.
//
// A field of more than 256 characters leaves its rest in the line. The separator behind it is blanked and no
// longer separates, so the rest runs on into the text that follows: the rule of the blanking functions below,
// where each call begins at the start of the line again.
int TakeField(char *field, char **cursor, char separator) {
    char *rest = nullptr;
    int length = 0;
    char *at = *cursor;
    for (; *at != '\0' && *at != separator; ++at) {
        if (*at == ' ') {
            continue;
        }
        if (length < kNameLength) {
            field[length++] = *at;
        } else if (rest == nullptr) {
            rest = at;
        }
    }
    field[length] = '\0';
    if (*at == separator && *at != '\0') {
        *at++ = ' ';
    }
    *cursor = rest != nullptr ? rest : at;
    return length;
}

// TakeField from the start of the line, blanking what it took.
int BlankField(char *field, char *line, char separator) {
    char *cursor = line;
    const int length = TakeField(field, &cursor, separator);
    for (char *at = line; at != cursor; ++at) {
        *at = ' ';
    }
    return length;
}

int ConvertINT(int *out, const char *field, int length) {
    *out = 0;
    if (length == 0) {
        return 0;
    }
    *out = ReadINT(field);
    return 1;
}

int ConvertDBL(double *out, const char *field, int length) {
    *out = 0;
    if (length == 0) {
        return 0;
    }
    *out = ReadDBL(field);
    return 1;
}

} // namespace

void fgetportableline(LineSource *stream, char *line) {
    const char *begin;
    const char *end;
    bool last = false;
    while (!last && NextPiece(stream, &begin, &end, &last)) {
        const auto size = static_cast<std::size_t>(end - begin);
        std::memcpy(line, begin, size);
        line += size;
    }
    *line = '\0';
}

void fgetportableline(std::FILE *stream, char *line) {
    for (int c = std::getc(stream); c != EOF && c != '\n'; c = std::getc(stream)) {
        *line++ = static_cast<char>(c);
    }
    *line = '\0';
}

int GrabNextINTFromCHR(int *out, char *line, char separator) {
    char field[kNameBuffer];
    return ConvertINT(out, field, BlankField(field, line, separator));
}

int GrabNextDBLFromCHR(double *out, char *line, char separator) {
    char field[kNameBuffer];
    return ConvertDBL(out, field, BlankField(field, line, separator));
}

int GrabNextCHRFromCHR(char *out, char *line, char separator) {
    return BlankField(out, line, separator) > 0 ? 1 : 0;
}

int NextINT(int *out, char **cursor, char separator) {
    char field[kNameBuffer];
    return ConvertINT(out, field, TakeField(field, cursor, separator));
}

int NextDBL(double *out, char **cursor, char separator) {
    char field[kNameBuffer];
    return ConvertDBL(out, field, TakeField(field, cursor, separator));
}

int NextCHR(char *out, char **cursor, char separator) {
    return TakeField(out, cursor, separator) > 0 ? 1 : 0;
}
