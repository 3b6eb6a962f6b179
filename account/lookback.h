// The deck's text once more, for the rare question what stands before a keyword line.
#ifndef KIVOM_ACCOUNT_LOOKBACK_H
#define KIVOM_ACCOUNT_LOOKBACK_H

#include "support/lines.h"

#include <string>

namespace account {

// The last line before some line that is neither blank nor a comment; line 0 when there is none.
struct LineBefore {
    int line = 0;
    bool endsInComma = false;
};

class Lookback {
  public:
    explicit Lookback(std::string path);
    ~Lookback();
    Lookback(const Lookback &) = delete;
    Lookback &operator=(const Lookback &) = delete;

    // Lines are asked for in ascending order: the file is read once, and only when the first is.
    LineBefore Before(int line);

  private:
    bool NextLine();

    std::string path_;
    LineSource source_{};
    bool open_ = false;
    bool tried_ = false;
    LineBefore last_;
};

} // namespace account

#endif
