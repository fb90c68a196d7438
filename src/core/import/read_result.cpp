#include "import/read_result.h"

namespace lumbra::import {

std::string ReadFailure::message() const {
    return path + (line ? ", line " + std::to_string(*line) : std::string()) + ": " + reason;
}

ReadResult ReadResult::refused(std::unique_ptr<tables::ALETable> table, ReadFailure failure) {
    table->state = false;
    return {std::move(table), std::move(failure)};
}

} // namespace lumbra::import
