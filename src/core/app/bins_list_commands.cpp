#include "app/bins_list_commands.h"

#include "project/bin.h"
#include "project/shared_stuff.h"

namespace lumbra::app {

namespace {

using project::BinsTreeEntry;

// The group that takes a new node: the one clicked, or the clicked bin's group, or the top.
BinsTreeEntry& targetGroup(BinsTreeEntry& tree, const project::ImportTarget& target) {
    if (!target.item || !tree.isDescendant(target.item))
        return tree;
    if (!target.item->bin)
        return *target.item;
    BinsTreeEntry* parent = tree.parent(target.item);
    return parent ? *parent : tree;
}

void reloadLists(project::SharedStuff& sharedstuff) {
    for (project::SharedStuffDelegate* delegate : sharedstuff.delegates)
        delegate->reloadBinsLists();
}

} // namespace

std::optional<project::BinsTreeOrderingMode> orderingForHeader(std::string_view title) {
    using Mode = project::BinsTreeOrderingMode;
    if (title == "Bin")
        return Mode::alphabetical;
    if (title == "Tag")
        return Mode::bytag;
    if (title == "Modified")
        return Mode::lastmodified;
    if (title == "Created")
        return Mode::lastcreated;
    return std::nullopt;
}

void orderBinsTree(project::BinsTreeEntry& tree, project::BinsTreeOrderingMode mode) {
    if (tree.lastordered == mode)
        tree.lastascending = !tree.lastascending;
    else
        tree.lastordered = mode;
    tree.resort();
    tree.rebuildArray();
}

project::Bin& createEmptyBin(project::SharedStuff& sharedstuff, project::ImportTarget target) {
    auto table = std::make_unique<tables::ALETable>();
    table->fps = sharedstuff.fps;
    table->video_format = sharedstuff.tlResolution;
    table->audio_format = sharedstuff.sound;
    table->film_format = sharedstuff.film_format;
    if (sharedstuff.tapeId)
        table->tape = sharedstuff.tapeId;
    table->tablename = sharedstuff.nextBinName();
    std::string id = table->tablename;
    auto bin = std::make_shared<project::Bin>(std::move(table), &sharedstuff,
                                              sharedstuff.projectLayouts.baseLayout, true);
    project::Bin& made = *bin;
    BinsTreeEntry& group = targetGroup(*sharedstuff.bins, target);
    group.addChild(std::make_shared<BinsTreeEntry>(std::move(id), std::move(bin),
                                                   std::vector<project::TreeNode>{}, &sharedstuff),
                   target.index);
    sharedstuff.bins->rebuildArray();
    sharedstuff.projectChanged();
    reloadLists(sharedstuff);
    return made;
}

project::BinsTreeEntry& addGroup(project::SharedStuff& sharedstuff, project::BinsTreeEntry& tree,
                                 project::ImportTarget target) {
    const std::string name = sharedstuff.nextGroupName();
    auto node =
        std::make_shared<BinsTreeEntry>(name, nullptr, std::vector<project::TreeNode>{}, &sharedstuff);
    node->setName(name);
    BinsTreeEntry& made = *node;
    // The list keeps the user's order until a header asks for another: the group stays where it was made.
    targetGroup(tree, target).addChild(std::move(node), target.index);
    tree.rebuildArray();
    sharedstuff.projectChanged();
    reloadLists(sharedstuff);
    return made;
}

void setBinsOpen(project::SharedStuff& sharedstuff, const std::vector<project::BinsTreeEntry*>& nodes,
                 bool open) {
    for (BinsTreeEntry* node : nodes) {
        node->rebuildArray();
        for (project::Bin* bin : node->toarray)
            bin->setSelected(open);
    }
    reloadLists(sharedstuff);
}

} // namespace lumbra::app
