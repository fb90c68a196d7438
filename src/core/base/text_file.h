#pragma once

#include "base/notification.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace lumbra::base {

// Bytes to UTF-8 text as a file reader sees it: byte order marks of UTF-8, UTF-16 and UTF-32
// are known, UTF-16 without one is told by its zero bytes, anything else must be UTF-8; carriage
// return and line feed pairs become line feeds.
// Converts in place; false, with the bytes untouched, when they are none of these.
[[nodiscard]] bool decodeText(std::string& bytes);
// Every carriage return and line feed pair becomes a line feed; lone carriage returns stay.
void collapseCrLf(std::string& text);
// ISO Latin 1 bytes as UTF-8; line ends untouched.
[[nodiscard]] std::string decodeLatin1(std::string_view bytes);

// The file's text, decoded as above or else as ISO Latin 1; absent (with a message and a
// "Reading error" notification) when the file cannot be read.
[[nodiscard]] std::optional<std::string> readTextFile(const std::string& path,
                                                      Notifications* notifications = nullptr);

// The file's bytes; absent when it cannot be read.
[[nodiscard]] std::optional<std::string> readFileBytes(const std::string& path);

// Writes a file whole or not at all: a temporary file in the same folder, flushed, then renamed
// over the old one. A failed write leaves the previous file as it was.
[[nodiscard]] bool writeFileAtomically(const std::string& path, std::string_view content);

// Lets tests make the next writes fail part-way: the hook sees each path and answers whether
// to fail. Cleared by passing an empty function.
void setWriteFailureHook(std::function<bool(const std::string& path)> hook);

} // namespace lumbra::base
