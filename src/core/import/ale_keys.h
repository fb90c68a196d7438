#pragma once

#include <string_view>

namespace lumbra::import {

// The heading key of an ALE file whose values carry backslash escapes (see aleText); the reader undoes them.
inline constexpr std::string_view valueEscapesKey = "VALUE_ESCAPES";

} // namespace lumbra::import
