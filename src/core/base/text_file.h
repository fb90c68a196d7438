#pragma once

#include "base/notification.h"

#include <cstddef>
#include <cstdint>
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

// Bytes as a file reader takes them: decoded by decodeText, else read as Latin-1.
[[nodiscard]] std::string decodeFileBytes(std::string bytes);

// The file's text, decoded as above or else as ISO Latin 1; absent (with a message and a
// "Reading error" notification) when the file cannot be read.
[[nodiscard]] std::optional<std::string> readTextFile(const std::string& path,
                                                      Notifications* notifications = nullptr);

// A table's name from the path it was read from: the file name less its last four characters,
// whatever they are (empty when it has no more); quotes and slashes of the name stay as they are.
[[nodiscard]] std::string tableNameFromPath(std::string_view path);

// The file's bytes; absent when it cannot be read.
[[nodiscard]] std::optional<std::string> readFileBytes(const std::string& path);

// Writes a file whole or not at all: a temporary file `.<name>.tmp<number>.<size>` in the same
// folder, flushed, then renamed over the old one. A failed write leaves the previous file as it
// was and removes its temporary file; only a killed process leaves one behind.
[[nodiscard]] bool writeFileAtomically(const std::string& path, std::string_view content);

// Takes one part of a file's text; false when it could not be written.
using TextSink = std::function<bool(std::string_view part)>;
// Hands a whole text to the sink in parts, the same parts each time it is called; false when the sink was.
using TextProducer = std::function<bool(const TextSink& sink)>;

// As above, for a text made in parts while it is written, so that a large file is never held whole: the
// producer runs twice, once to measure the text and once to write it.
[[nodiscard]] bool writeFileAtomically(const std::string& path, const TextProducer& produce);
// The same for a text whose size the caller knows: the producer runs once. A text of another size fails.
[[nodiscard]] bool writeFileAtomically(const std::string& path, std::size_t size,
                                       const TextProducer& produce);

// What a temporary file of writeFileAtomically says of itself by its name.
struct TemporaryFileName {
    // The name of the file it was to replace.
    std::string target;
    // The size of the whole content, absent for the earlier names without it.
    std::optional<std::uintmax_t> size;
};
// Absent when the name is not one of the writer's temporary files.
[[nodiscard]] std::optional<TemporaryFileName> parseTemporaryFileName(std::string_view filename);

// The points of a write at which tests inject a fault.
enum class WriteStep {
    // Half of the content is in the temporary file.
    write,
    // The whole content is in the temporary file, before it replaces the target.
    rename,
};
// Lets tests make writes fail: the hook sees each path at each step and answers whether to fail
// there (or ends the process there, to leave what a kill leaves). Cleared by an empty function.
void setWriteFaultHook(std::function<bool(const std::string& path, WriteStep step)> hook);
// The same for the first step only: the write stops half-way.
void setWriteFailureHook(std::function<bool(const std::string& path)> hook);

} // namespace lumbra::base
