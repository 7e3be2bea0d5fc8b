#include "host/ProjectTrees.h"

#include <orvatool/ImageLib.h>

#include <unordered_map>

namespace ochost {
namespace {

/// `nodes` with their leaves: a node's leaves follow it directly, in their order. `nodeOf` and `nameOf` are members.
template <class Leaf>
TREE_INSERTLIST Combine(const std::vector<TreeNode>& nodes, const std::vector<Leaf>& leaves, Id Leaf::*nodeOf,
                        std::wstring Leaf::*nameOf, ImageLib::Image image) {
    std::unordered_map<Id, std::vector<const Leaf*>> leavesOf;
    for (const Leaf& leaf : leaves)
        leavesOf[leaf.*nodeOf].push_back(&leaf);

    TREE_INSERTLIST tree;
    tree.reserve(nodes.size() + leaves.size());
    for (const TreeNode& node : nodes) {
        tree.push_back(node.level, 0, Lng::NoApp, ImageLib::PropertyGroup, ustr(node.name));
        for (const Leaf* leaf : leavesOf[node.id]) {
            tree.push_back(node.level + 1, leaf->id, Lng::NoApp, image, ustr(leaf->*nameOf));
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

Result<TREE_INSERTLIST> DrawingTree(const ProjectStore& project) {
    const auto folders = project.Folders();
    if (!folders) return folders.Error();
    const auto drawings = project.Drawings();
    if (!drawings) return drawings.Error();
    return Combine(*folders, *drawings, &Drawing::folder, &Drawing::fileName, ImageLib::NoImage);
}

}  // namespace ochost
