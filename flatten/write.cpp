// The plain deck as text, and the list of changes.
#include "flatten/flatten.h"

#include "support/system.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace flatten {

namespace {

constexpr std::size_t kBlock = 1U << 16;
constexpr std::size_t kLongestField = 32; // characters of a number
constexpr int kMostOnRow = 16;            // members of a set

// A file written in blocks.
class Out {
  public:
    explicit Out(int file) : file_(file) {
        text_.reserve(kBlock + kLongestField);
    }
    Out &Put(const char *text) {
        text_ += text;
        return *this;
    }
    Out &Put(const std::string &text) {
        text_ += text;
        return *this;
    }
    template <class Number> Out &Put(Number value) { // doubles in the shortest form that reads back the same
        char digits[kLongestField];
        text_.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
        return *this;
    }
    void EndLine() {
        text_ += '\n';
        if (text_.size() >= kBlock) {
            Flush();
        }
    }
    bool Flush() {
        good_ = good_ && SystemWrite(file_, text_.data(), text_.size());
        text_.clear();
        return good_;
    }

  private:
    int file_;
    bool good_ = true;
    std::string text_;
};

void WriteNodes(const Plain &plain, Out *out) {
    const bool hasZ = plain.dimension != 2 ||
                      std::any_of(plain.z.begin(), plain.z.end(), [](double z) { return z != 0 || std::signbit(z); });
    out->Put("*Node").EndLine();
    for (std::size_t i = 0; i < plain.x.size(); ++i) {
        out->Put(plain.nodeNumber[i]).Put(", ").Put(plain.x[i]).Put(", ").Put(plain.y[i]);
        if (hasZ) {
            out->Put(", ").Put(plain.z[i]);
        }
        out->EndLine();
    }
}

void WriteSection(const Plain &plain, const CellSection &section, Out *out) {
    out->Put("*Element, type=").Put(section.type).Put(", elset=").Put(section.name).EndLine();
    for (const int cell : section.cells) {
        const auto c = static_cast<std::size_t>(cell);
        out->Put(plain.cellNumber[c]);
        for (std::size_t k = plain.cellFirst[c]; k < plain.cellFirst[c + 1]; ++k) {
            out->Put(", ").Put(plain.nodeNumber[static_cast<std::size_t>(plain.cellNodes[k])]);
        }
        out->EndLine();
    }
}

void WriteList(const char *keyword, const List &list, const std::vector<int> &numbers, Out *out) {
    out->Put(keyword).Put(list.name).EndLine();
    int onRow = 0;
    for (const int member : list.members) {
        out->Put(onRow > 0 ? ", " : "").Put(numbers[static_cast<std::size_t>(member)]);
        if (++onRow == kMostOnRow) {
            out->EndLine();
            onRow = 0;
        }
    }
    if (onRow > 0) {
        out->EndLine();
    }
}

void WriteSurface(const Plain &plain, const FaceList &surface, Out *out) {
    out->Put("*Surface, type=ELEMENT, name=").Put(surface.name).EndLine();
    for (const CellFace &face : surface.faces) {
        out->Put(plain.cellNumber[static_cast<std::size_t>(face.cell)]).Put(", S").Put(face.face + 1).EndLine();
    }
}

// A name between tabs: it has none itself.
std::string Tabless(std::string text) {
    for (char &c : text) {
        c = c == '\t' || c == '\n' || c == '\r' ? ' ' : c;
    }
    return text;
}

} // namespace

bool WriteDeck(const Plain &plain, int file) {
    Out out(file);
    out.Put("*Heading").EndLine();
    out.Put(" plain deck").EndLine();
    WriteNodes(plain, &out);
    for (const CellSection &section : plain.sections) {
        WriteSection(plain, section, &out);
    }
    for (const List &set : plain.nodeSets) {
        WriteList("*Nset, nset=", set, plain.nodeNumber, &out);
    }
    for (const List &set : plain.elementSets) {
        WriteList("*Elset, elset=", set, plain.cellNumber, &out);
    }
    for (const FaceList &surface : plain.surfaces) {
        WriteSurface(plain, surface, &out);
    }
    return out.Flush();
}

bool WriteMap(const std::vector<Change> &changes, int file) {
    Out out(file);
    out.Put("kind\tinstance\told\tnew").EndLine();
    for (const Change &change : changes) {
        out.Put(change.kind).Put("\t").Put(Tabless(change.instance)).Put("\t");
        out.Put(Tabless(change.before)).Put("\t").Put(change.after).EndLine();
    }
    return out.Flush();
}

} // namespace flatten
