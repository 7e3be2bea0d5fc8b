#pragma once

#include <orvatool/TreeInsertList.h>

#include <cstdint>
#include <vector>

// The groups that a template includes, and the check marks of the tree of parts or objects that stand for them.
// ReportTemplate::Context says which rows are groups. All of it is linear.
namespace TemplateGroups {

/// The state (TreeCheck) of each row: the rows of these groups are checked, with all rows below them. The states of
/// rows above follow from these and are not set.
std::vector<int> Checks(const TREE_INSERTLIST& objects, const std::vector<std::int32_t>& groups);

/// The groups that the states of all rows stand for, in tree order and each once: the topmost that are checked. Behind
/// them those of `before` that the tree does not have.
std::vector<std::int32_t> Checked(const TREE_INSERTLIST& objects, const std::vector<int>& states,
                                  const std::vector<std::int32_t>& before);

}  // namespace TemplateGroups
