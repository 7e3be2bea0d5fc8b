#include "host/ProjectTrees.h"

#include <orvatool/ImageLib.h>

#include <unordered_map>

namespace ochost {
namespace {

/// What the rows of a tree have as values.
struct Values {
    bool nodesHaveIds = false;  ///< else 0
    Id firstLeaf = 0;           ///< added to the leaves' ids
};

/// `nodes` with their leaves: a node's leaves follow it directly, in their order. `nodeOf` and `nameOf` are members.
template <class Leaf>
TREE_INSERTLIST Combine(const std::vector<TreeNode>& nodes, const std::vector<Leaf>& leaves, Id Leaf::*nodeOf,
                        std::wstring Leaf::*nameOf, ImageLib::Image image, Values values = {}) {
    std::unordered_map<Id, std::vector<const Leaf*>> leavesOf;
    for (const Leaf& leaf : leaves)
        leavesOf[leaf.*nodeOf].push_back(&leaf);

    TREE_INSERTLIST tree;
    tree.reserve(nodes.size() + leaves.size());
    for (const TreeNode& node : nodes) {
        tree.push_back(node.level, values.nodesHaveIds ? node.id : 0, Lng::NoApp, ImageLib::PropertyGroup,
                       ustr(node.name));
        for (const Leaf* leaf : leavesOf[node.id]) {
            tree.push_back(node.level + 1, values.firstLeaf + leaf->id, Lng::NoApp, image, ustr(leaf->*nameOf));
        }
    }
    tree.finalize();
    return tree;
}

}  // namespace

Result<TREE_INSERTLIST> PropertyTree(const ProjectStore& project) {
    const auto groups = project.PropertyGroups();
    if (!groups) return groups.Error();
    const auto properties = project.Properties();
    if (!properties) return properties.Error();
    return Combine(*groups, *properties, &Property::group, &Property::name, ImageLib::Property);
}

Result<TREE_INSERTLIST> ReportObjectTree(const ProjectStore& project) {
    const auto groups = project.PartGroups();
    if (!groups) return groups.Error();
    const auto types = project.PartTypes();
    if (!types) return types.Error();
    constexpr Values kValues{true, kFirstPartType};
    return Combine(*groups, *types, &PartType::group, &PartType::name, ImageLib::NoImage, kValues);
}

Result<ValueList> ReportProperties(const ProjectStore& project) {
    const auto properties = project.Properties();
    if (!properties) return properties.Error();
    const auto custom = project.CustomProperties();
    if (!custom) return custom.Error();
    ValueList list;
    list.reserve(properties->size() + custom->size());
    for (const Property& property : *properties)
        list.emplace_back(property.name, property.id);
    for (const CustomProperty& property : *custom)
        list.emplace_back(property.name, ColumnIdOf(property));
    return list;
}

Result<TREE_INSERTLIST> DrawingTree(const ProjectStore& project) {
    const auto folders = project.Folders();
    if (!folders) return folders.Error();
    const auto drawings = project.Drawings();
    if (!drawings) return drawings.Error();
    return Combine(*folders, *drawings, &Drawing::folder, &Drawing::fileName, ImageLib::NoImage);
}

}  // namespace ochost
