// Names that the translator takes as they are.
#ifndef KIVOM_FLATTEN_NAMES_H
#define KIVOM_FLATTEN_NAMES_H

#include <string>
#include <unordered_map>

namespace flatten {

// Where a name stands in the plain deck: each keyword line refuses words of its own. Sets of elements may be both.
constexpr unsigned kOnElement = 1;
constexpr unsigned kOnElset = 2;
constexpr unsigned kOnNset = 4;
constexpr unsigned kOnSurface = 8;

// The name with all that the translator would drop, refuse or take for something else replaced.
std::string PlainName(const std::string &name, unsigned where);

// Names of one kind, each of which is given once.
class Names {
  public:
    // The name, or where it is taken the name with "~2", "~3" ... behind it.
    std::string Give(const std::string &name);

  private:
    std::unordered_map<std::string, int> last_; // of each name: the last number that was tried
};

} // namespace flatten

#endif
