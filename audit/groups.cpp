// Tags and groups: each tag names a group, each group holds something and has its tag for itself.
#include "audit/work.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace audit {

namespace {

struct Member {
    std::size_t group;
    bool holds = false;
};

// Tags mostly come in stretches, so the last one looked up is kept at hand.
class TagLookup {
  public:
    template <class OneGroup> explicit TagLookup(const std::vector<OneGroup> &groups) {
        for (std::size_t g = 0; g < groups.size(); ++g) {
            byTag_.insert({groups[g].tag, Member{g}});
        }
    }
    // Null: no group has the tag.
    Member *Find(int tag) {
        if (!begun_ || tag != tag_) {
            const auto found = byTag_.find(tag);
            member_ = found == byTag_.end() ? nullptr : &found->second;
            tag_ = tag;
            begun_ = true;
        }
        return member_;
    }

  private:
    std::map<int, Member> byTag_; // of groups with one tag the first
    int tag_ = 0;
    bool begun_ = false;
    Member *member_ = nullptr;
};

// Entries may be without a group only where `noneIsFine` says so: they have tag 0 then.
template <class OneGroup>
void CheckGroupsOf(Work *work, const std::vector<OneGroup> &groups, Subject group, const std::vector<int> &tags,
                   Subject entry, bool noneIsFine) {
    TagLookup lookup(groups);
    for (std::size_t i = 0; i < tags.size(); ++i) {
        Member *member = lookup.Find(tags[i]);
        if (member != nullptr) {
            member->holds = true;
        } else if (tags[i] != 0 || !noneIsFine) {
            work->Found(Check::tags, entry, i);
        }
    }
    for (std::size_t g = 0; g < groups.size(); ++g) {
        const Member *member = lookup.Find(groups[g].tag);
        if (member->group != g || !member->holds) {
            work->Found(Check::groups, group, g);
        }
    }
}

// The cells that the translator cuts loose: of groups of one name the newest, which stands first, is asked for its tag.
void MarkLooseCells(Work *work) {
    constexpr char kPrefix[] = "C_";
    std::set<std::string> seen;
    std::set<int> tags;
    for (const meshfile::CellGroup &group : work->mesh.cellGroups) {
        if (group.name.compare(0, sizeof kPrefix - 1, kPrefix) == 0 && seen.insert(group.name).second) {
            tags.insert(group.tag);
        }
    }
    for (std::size_t cell = 0; cell < work->CountOfCells() && !tags.empty(); ++cell) {
        if (tags.count(work->mesh.cells.tags[cell]) == 1) {
            work->cells[cell] |= kLoose;
            ++work->verdict.counts.looseCells;
        }
    }
}

} // namespace

void CheckGroups(Work *work) {
    const meshfile::Mesh &mesh = work->mesh;
    CheckGroupsOf(work, mesh.nodeGroups, Subject::nodeGroup, mesh.nodes.tags, Subject::node, true);
    CheckGroupsOf(work, mesh.faceGroups, Subject::faceGroup, mesh.faces.tags, Subject::face, false);
    CheckGroupsOf(work, mesh.cellGroups, Subject::cellGroup, mesh.cells.tags, Subject::cell, false);
    MarkLooseCells(work);
}

} // namespace audit
