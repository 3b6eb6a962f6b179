// What only a terminal gets: colour, and signs of life while a long deck is read.
#ifndef KIVOM_KIVODECK_TERMINAL_H
#define KIVOM_KIVODECK_TERMINAL_H

#include <string>

namespace kivodeck {

// True when reports on standard output may be coloured: it is a terminal, and NO_COLOR is not set.
bool WantsColour();

// While it lives and standard error is a terminal: after a second, and then every second, a line there says what is
// being done and for how long. It is wiped out at the end.
class Progress {
  public:
    explicit Progress(const std::string &what);
    ~Progress();
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;

  private:
    bool running_ = false;
};

} // namespace kivodeck

#endif
