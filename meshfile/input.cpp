// Blocks of the text, and what is taken from them.
#include "meshfile/input.h"

#include "meshfile/fields.h"

#include "support/system.h"

#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace meshfile {

namespace {

constexpr char kEndsEarly[] = "the file ends too early";

bool RefuseEnd(Input *in) {
    return Refuse(in, kEndsEarly);
}

bool Follows(Input *in, std::string_view words) {
    return Has(in, words.size()) && std::memcmp(in->at, words.data(), words.size()) == 0;
}

// After all that is left has been sought.
bool EndsWithin(const Input *in, std::string_view words) {
    const auto left = static_cast<std::size_t>(in->end - in->at);
    return left < words.size() && std::memcmp(in->at, words.data(), left) == 0;
}

} // namespace

bool HasMore(Input *in, std::size_t size) {
    if (in->isAtEnd) {
        return false;
    }
    auto left = static_cast<std::size_t>(in->end - in->at);
    in->block.resize(in->blockSize);
    if (left > 0) {
        std::memmove(in->block.data(), in->at, left);
    }
    in->at = in->block.data();
    while (left < size) {
        const std::ptrdiff_t got = SystemRead(in->file, in->block.data() + left, in->block.size() - left);
        if (got < 0) {
            RefuseLine(in, 0, Reason("cannot be read: %s", std::strerror(errno)));
        }
        if (got <= 0) {
            in->isAtEnd = true;
            break;
        }
        left += static_cast<std::size_t>(got);
    }
    in->end = in->at + left;
    return left >= size;
}

bool Refuse(Input *in, std::string_view reason) {
    return RefuseLine(in, in->line, reason);
}

bool RefuseLine(Input *in, long long line, std::string_view reason) {
    if (in->error.text.empty()) {
        in->error = {line, std::string(reason)};
    }
    return false;
}

std::string Reason(const char *format, ...) {
    std::array<char, 2 * kMostAhead> text;
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text.data(), text.size(), format, arguments);
    va_end(arguments);
    return text.data();
}

bool MayFollow(Input *in, std::string_view words) {
    return Follows(in, words) || EndsWithin(in, words);
}

bool TakeWords(Input *in, std::string_view words) {
    if (Follows(in, words)) {
        in->at += words.size();
        return true;
    }
    if (EndsWithin(in, words)) {
        return RefuseEnd(in);
    }
    return Refuse(in, Reason("\"%.*s\" does not stand where it should", static_cast<int>(words.size()), words.data()));
}

bool TakeLine(Input *in, std::string_view words) {
    return (words.empty() || TakeWords(in, words)) && TakeLineEnd(in);
}

bool TakeLineEnd(Input *in) {
    if (!Has(in, 1)) {
        return RefuseEnd(in);
    }
    if (*in->at != '\n') {
        return Refuse(in, "the line does not end where it should");
    }
    ++in->at;
    ++in->line;
    return true;
}

bool TakeRest(Input *in, std::string *rest) {
    rest->clear();
    while (Has(in, 1)) {
        const auto *lineEnd =
            static_cast<const char *>(std::memchr(in->at, '\n', static_cast<std::size_t>(in->end - in->at)));
        const char *pieceEnd = lineEnd != nullptr ? lineEnd : in->end;
        rest->append(in->at, pieceEnd);
        in->at = pieceEnd;
        if (lineEnd != nullptr) {
            return TakeLineEnd(in);
        }
    }
    return RefuseEnd(in);
}

bool TakeInt(Input *in, std::size_t width, int *value) {
    if (!Has(in, width)) {
        return RefuseEnd(in);
    }
    if (!IntField(in->at, width, value)) {
        return Refuse(in, Reason("no whole number at the right of %zu characters", width));
    }
    in->at += width;
    return true;
}

bool TakeReal(Input *in, double *value) {
    if (!Has(in, kRealWidth)) {
        return RefuseEnd(in);
    }
    if (!RealField(in->at, value)) {
        return Refuse(in, "no number as \"%24.15e\" writes it");
    }
    in->at += kRealWidth;
    return true;
}

bool TakeIndex(Input *in, std::size_t index) {
    int found = 0;
    if (!TakeInt(in, kIntWidth, &found)) {
        return false;
    }
    return static_cast<std::size_t>(found) == index ||
           Refuse(in, Reason("the row of %zu is numbered %d", index, found));
}

bool TakeEnd(Input *in) {
    return !Has(in, 1) || Refuse(in, "more text behind the end of the mesh");
}

} // namespace meshfile
