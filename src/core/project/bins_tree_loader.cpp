#include "project/bins_tree_loader.h"

#include "base/console.h"
#include "base/file_names.h"
#include "base/text_file.h"
#include "base/text_helpers.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

namespace lumbra::project {

namespace fs = std::filesystem;
using base::Notifications;

namespace {

bool looksLikeUuid(std::string_view text) {
    if (text.size() != 36)
        return false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        bool dash = i == 8 || i == 13 || i == 18 || i == 23;
        if (dash ? text[i] != '-' : !std::isxdigit(static_cast<unsigned char>(text[i])))
            return false;
    }
    return true;
}

// Folders by name: the order of children until the first sort is the same on every disk.
std::vector<std::string> subfolders(const std::string& folder) {
    std::vector<std::string> out;
    std::error_code ec;
    fs::directory_iterator it(folder, ec);
    if (ec)
        return out;
    for (const auto& entry : it) {
        std::error_code typeError;
        if (entry.is_directory(typeError) && !entry.is_symlink(typeError))
            out.push_back(entry.path().string());
    }
    std::sort(out.begin(), out.end());
    return out;
}

// A folder that a bin's save began and did not finish: it holds the bin's .bin file or part of its
// table, but no table. Shown as a group it would look like an empty group named after the bin.
bool isBrokenBinFolder(const std::string& url) {
    return base::holdsEntry(url, [](const std::string& name) {
        auto temp = base::parseTemporaryFileName(name);
        return (base::hasSuffix(name, ".bin") && !base::hasSuffix(name, ".smartbin")) ||
               (temp && base::hasSuffix(temp->target, ".ale"));
    });
}

// The uuid that a folder's name carries, for a folder whose details a kill kept from being written.
std::optional<std::string> uuidOfName(const std::string& folder) {
    std::string last = fs::path(folder).filename().string();
    auto cut = last.rfind(" - ");
    if (cut == std::string::npos || !looksLikeUuid(std::string_view(last).substr(cut + 3)))
        return std::nullopt;
    return last.substr(cut + 3);
}

void appendLoaded(BinsTreeEntry& parent, TreeNode node) {
    if (node)
        parent.children.push_back(std::move(node));
}

} // namespace

std::string nameOfFolder(const std::string& folder) {
    std::string last = base::lastComponent(folder);
    if (auto uuid = base::readDetailsLine(folder, 1); uuid && last.ends_with(" - " + *uuid))
        return base::lastComponent(folder, " - " + *uuid);
    auto cut = last.rfind(" - ");
    if (cut != std::string::npos && looksLikeUuid(std::string_view(last).substr(cut + 3)))
        return last.substr(0, cut);
    return last;
}

BinsTreeLoader::BinsTreeLoader(std::string baseUrl) : m_baseUrl(std::move(baseUrl)) {
}

bool BinsTreeLoader::isBinFolder(const std::string& url) {
    return base::holdsEntry(url, [](const std::string& name) {
        return base::hasSuffix(name, ".ale") || base::hasSuffix(name, ".smartbin");
    });
}

TreeNode BinsTreeLoader::loadEntry(const std::string& url, BinsHost* sharedstuff,
                                   Notifications* notifications) {
    std::string name = nameOfFolder(url);
    const bool binFolder = isBinFolder(url);
    if (!binFolder && isBrokenBinFolder(url)) {
        base::printLine("ERROR: broken bin in " + url + ": its table was never written");
        if (notifications)
            notifications->emplace_back("Broken bin",
                                        "The bin " + name + " in " + url +
                                            " has no table: a save was interrupted before it was written. "
                                            "The folder is left as it is and not loaded.",
                                        base::NotificationType::KO);
        return nullptr;
    }
    auto node = std::make_shared<BinsTreeEntry>(name, nullptr, std::vector<TreeNode>{}, sharedstuff);
    // A folder whose details were never written keeps the identity its name gives.
    const std::optional<std::string> namedUuid =
        base::readDetailsLine(url, 1) ? std::nullopt : uuidOfName(url);
    if (binFolder) {
        auto bin = std::make_shared<Bin>(sharedstuff);
        if (namedUuid)
            bin->setUuid(*namedUuid);
        bin->load(url, notifications);
        node->load(url, notifications);
        bin->setDisplayName(name);
        node->bin = bin;
        bin->tag = node->tag;
        // A leaf's id is its table's name, so that ids stay the project's bin ids after a reload.
        if (bin->table())
            node->id = bin->table()->tablename;
        node->rebuildArray();
        return node;
    }
    if (namedUuid)
        node->setUuid(*namedUuid);
    node->load(url, notifications);
    for (const auto& folder : subfolders(url))
        appendLoaded(*node, loadEntry(folder, sharedstuff, notifications));
    node->rebuildArray();
    return node;
}

TreeNode BinsTreeLoader::load(BinsHost* sharedstuff, const std::optional<std::string>& url,
                              Notifications* notifications) {
    std::string base = url.value_or(m_baseUrl);
    auto root = std::make_shared<BinsTreeEntry>("root", nullptr, std::vector<TreeNode>{}, sharedstuff);
    // The base folder is the tree's, not a node's: its name is no group name.
    root->Saveable::load(base, notifications);
    for (const auto& folder : subfolders(base))
        appendLoaded(*root, loadEntry(folder, sharedstuff, notifications));
    root->rebuildArray();
    for (Bin* bin : root->toarray) {
        if (!bin->selected())
            continue;
        if (sharedstuff)
            sharedstuff->openAfterLoading(*bin);
        bin->setSelected(false);
    }
    return root;
}

TreeNode SmartbinsTreeLoader::load(BinsHost* sharedstuff, const std::optional<std::string>& url,
                                   Notifications* notifications) {
    auto root = BinsTreeLoader::load(sharedstuff, url, notifications);
    root->id = "smartbins";
    root->rebuildArray();
    BinsTreeEntry* bins = sharedstuff ? sharedstuff->binsTree() : nullptr;
    if (!bins)
        return root;
    for (Bin* bin : root->toarray) {
        if (auto* link = smartLink(*bin))
            link->resolveDomain(*bins);
    }
    return root;
}

} // namespace lumbra::project
