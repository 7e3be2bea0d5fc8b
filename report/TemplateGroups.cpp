#include "TemplateGroups.h"

#include <orvatool/Gw.h>

#include <algorithm>
#include <iterator>
#include <limits>
#include <unordered_set>

namespace {

using Ids = std::unordered_set<std::int64_t>;

constexpr int kNoLevel = std::numeric_limits<int>::max();

bool IsGroup(const TREE_INSERTITEM& row) {
    return row.value >= 1 && row.value <= std::numeric_limits<std::int32_t>::max();
}

/// Goes through the rows in tree order and says which lie in a branch that was chosen at its top. A row deeper than one
/// level below the row before it counts as its child, as the tree shows it.
class Branch {
public:
    bool Holds(const TREE_INSERTITEM& row) {
        level_ = std::clamp(row.level, 0, level_ + 1);
        if (level_ <= top_) top_ = kNoLevel;
        return top_ != kNoLevel;
    }
    /// Chooses the branch of the row that Holds was last asked about.
    void Choose() { top_ = level_; }

private:
    int level_ = -1;
    int top_ = kNoLevel;
};

}  // namespace

std::vector<int> TemplateGroups::Checks(const TREE_INSERTLIST& objects, const std::vector<std::int32_t>& groups) {
    const Ids included(groups.begin(), groups.end());
    std::vector<int> states;
    states.reserve(objects.size());
    Branch branch;
    for (const TREE_INSERTITEM& row : objects) {
        bool checked = branch.Holds(row);
        if (!checked && IsGroup(row) && included.contains(row.value)) {
            branch.Choose();
            checked = true;
        }
        states.push_back(checked ? kTreeChecked : kTreeUnchecked);
    }
    return states;
}

std::vector<std::int32_t> TemplateGroups::Checked(const TREE_INSERTLIST& objects, const std::vector<int>& states,
                                                  const std::vector<std::int32_t>& before) {
    std::vector<std::int32_t> groups;
    Ids found;
    Ids offered;
    Branch branch;
    for (std::size_t i = 0; i < objects.size(); ++i) {
        const TREE_INSERTITEM& row = objects[i];
        const bool covered = branch.Holds(row);
        if (!IsGroup(row)) continue;
        offered.insert(row.value);
        if (covered || states[i] != kTreeChecked) continue;
        branch.Choose();
        if (found.insert(row.value).second) groups.push_back(static_cast<std::int32_t>(row.value));
    }
    std::copy_if(before.begin(), before.end(), std::back_inserter(groups),
                 [&](std::int32_t id) { return !offered.contains(id); });
    return groups;
}
