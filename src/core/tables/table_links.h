#pragma once

namespace lumbra::tables {

class ALEEntry;

// What a table knows of the bin that holds it: only whether edits are allowed.
class BinLink {
public:
    virtual ~BinLink() = default;
    [[nodiscard]] virtual bool isLocked() const = 0;
};

// What a row knows of its project: every smart table is to test a changed row again.
class ProjectLink {
public:
    virtual ~ProjectLink() = default;
    virtual void rowChanged(ALEEntry& row) = 0;
};

} // namespace lumbra::tables
