#include "project/tag_trees.h"

#include <array>

namespace lumbra::project {

namespace {

constexpr std::array<base::Tag, 7> allTags = {base::Tag::none,  base::Tag::red,    base::Tag::green,
                                              base::Tag::blue,  base::Tag::yellow, base::Tag::pink,
                                              base::Tag::purple};

TreeNode makeGroup(std::string id) {
    return std::make_shared<BinsTreeEntry>(std::move(id), nullptr);
}

TreeNode makeTree(bool withSmartbins) {
    auto root = makeGroup("Color Tags");
    for (base::Tag tag : allTags) {
        auto group = makeGroup(base::tagName(tag));
        if (withSmartbins)
            group->children.push_back(makeGroup("Smart Bins"));
        root->children.push_back(std::move(group));
    }
    root->rebuildArray();
    return root;
}

// The tag groups stand in the order of `Tag`, so the tag's number is the group's place.
BinsTreeEntry& groupOf(BinsTreeEntry& tree, base::Tag tag) {
    return *tree.children[static_cast<std::size_t>(tag)];
}

void placeByTag(unsigned tagsLeft, const std::vector<TreeNode>& nodes, const TagTrees& trees) {
    for (const auto& node : nodes) {
        unsigned bit = 1u << static_cast<unsigned>(node->tag);
        if (!(tagsLeft & bit))
            continue;
        for (BinsTreeEntry* tree : {trees.withSmartbins.get(), trees.withoutSmartbins.get()}) {
            // The group's array waits for the one rebuild at the end: per node it would cost a walk.
            groupOf(*tree, node->tag).children.push_back(node);
        }
        placeByTag(tagsLeft & ~bit, node->children, trees);
    }
}

} // namespace

TagTrees emptyTagTrees() {
    return {makeTree(true), makeTree(false)};
}

TagTrees buildTagTrees(const BinsTreeEntry& bins, const BinsTreeEntry& smartbins) {
    TagTrees trees = emptyTagTrees();
    placeByTag((1u << allTags.size()) - 1, bins.children, trees);
    for (const auto& node : smartbins.children)
        groupOf(*trees.withSmartbins, node->tag).children.front()->children.push_back(node);
    // Only the groups made here are rebuilt: the nodes of the source trees keep their own arrays.
    auto gather = [](BinsTreeEntry& group) {
        group.toarray.clear();
        for (const auto& child : group.children)
            group.toarray.insert(group.toarray.end(), child->toarray.begin(), child->toarray.end());
    };
    for (const auto& group : trees.withSmartbins->children)
        gather(*group->children.front());
    for (BinsTreeEntry* tree : {trees.withSmartbins.get(), trees.withoutSmartbins.get()}) {
        for (const auto& group : tree->children)
            gather(*group);
        gather(*tree);
    }
    return trees;
}

} // namespace lumbra::project
