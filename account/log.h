// Catching what the translator's functions report on standard output.
#ifndef KIVOM_ACCOUNT_LOG_H
#define KIVOM_ACCOUNT_LOG_H

#include <cstdio>
#include <functional>
#include <string>

namespace account {

// While it lives, what is written to stdout goes line by line to a function, without its '\n' and cut at kLongest
// characters. Logs can be larger than decks: nothing else of them is held.
class LogCatcher {
  public:
    explicit LogCatcher(std::function<void(const std::string &)> take);
    ~LogCatcher();
    LogCatcher(const LogCatcher &) = delete;
    LogCatcher &operator=(const LogCatcher &) = delete;

    // Hands on what has been written so far; a line without its end waits.
    void Flush();

    void Write(const char *text, std::size_t size);

    static constexpr std::size_t kLongest = 1024;

  private:
    std::function<void(const std::string &)> take_;
    std::string line_;
    std::FILE *caught_;
    std::FILE *before_;
};

} // namespace account

#endif
