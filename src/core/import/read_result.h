#pragma once

#include "tables/ale_table.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

namespace lumbra::import {

// Why a reader refused a file: the file (or the name a text was given), the reason in the words the
// user is shown after it, and the line at fault where one is.
struct ReadFailure {
    std::string path;
    std::string reason;
    // Counted from 1.
    std::optional<std::size_t> line;

    // "<path>: <reason>", or "<path>, line <n>: <reason>".
    [[nodiscard]] std::string message() const;
    bool operator==(const ReadFailure&) const = default;
};

// What every reader of the formats table gives: always a table, which holds what the read got as far as
// it went (its `state` false when refused), and the failure when the file was refused.
struct ReadResult {
    std::unique_ptr<tables::ALETable> table = std::make_unique<tables::ALETable>();
    std::optional<ReadFailure> failure;

    // The result of a refused read: the table as it is, `state` false.
    static ReadResult refused(std::unique_ptr<tables::ALETable> table, ReadFailure failure);
};

} // namespace lumbra::import
