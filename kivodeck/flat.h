// The verb flatten, without its command line.
#ifndef KIVOM_KIVODECK_FLAT_H
#define KIVOM_KIVODECK_FLAT_H

#include "account/check.h"
#include "flatten/flatten.h"

#include <string>

namespace kivodeck {

struct FlatJob {
    std::string deck;
    std::string flat; // where to write
    std::string map;  // "" for none
    flatten::Options options;
    bool allowLoss = false;
    deck::Limits limits = {};
};

struct FlatResult {
    account::Report report; // meaning and reading are those of the plain deck, where one was made
    bool made = false;      // the plain deck is in its file and holds what it should
    std::string failure;    // a file that could not be written
};

// Writes the plain deck, and the map, into the files of these names and checks it. Where an error remains nothing is
// written, or, when the check finds it, the file is left for the caller to remove.
FlatResult MakeFlat(const FlatJob &job);

// The same into files beside those of the job, which take their names once all is well; nothing is left over else.
FlatResult Flatten(const FlatJob &job);

// A file that is removed in the end, unless it has another name by then; "" is none. The later of two goes first.
class Leftover {
  public:
    explicit Leftover(std::string path);
    ~Leftover();
    Leftover(const Leftover &) = delete;
    Leftover &operator=(const Leftover &) = delete;

    // Removes the files of all that there are: for a process that ends before they do. Takes no memory.
    static void RemoveAll();

  private:
    void Remove() const;

    static Leftover *last;
    std::string path_;
    Leftover *before_;
};

// The path, or where something has that name the path with "~2", "~3" ... behind it.
std::string FreeName(const std::string &path);

// Whether both paths lead to one file, which need not be there.
bool IsSameFile(const std::string &a, const std::string &b);

} // namespace kivodeck

#endif
