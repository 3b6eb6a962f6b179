// Walking through a deck's text and remembering its last line of substance.
#include "account/lookback.h"

#include <utility>

namespace account {

Lookback::Lookback(std::string path) : path_(std::move(path)) {}

Lookback::~Lookback() {
    if (open_) {
        CloseLines(&source_);
    }
}

LineBefore Lookback::Before(int line) {
    if (!tried_) {
        tried_ = true;
        open_ = OpenLines(&source_, path_.c_str());
    }
    while (open_ && source_.nLines + 1 < line && NextLine()) {
    }
    return last_;
}

// Takes one line and looks at what it ends in, a comment left out. False at the end of the text.
bool Lookback::NextLine() {
    const char *at;
    const char *end;
    bool last = false;
    char lastKept = '\0';
    char before = '\0';
    bool comment = false;
    while (!last) {
        if (!NextPiece(&source_, &at, &end, &last)) {
            return false;
        }
        for (; at != end && !comment; ++at) {
            comment = *at == '*' && before == '*';
            lastKept = *at > ' ' && *at != '*' ? *at : lastKept;
            before = *at;
        }
    }
    if (lastKept != '\0') {
        last_ = {static_cast<int>(source_.nLines), lastKept == ','};
    }
    return true;
}

} // namespace account
