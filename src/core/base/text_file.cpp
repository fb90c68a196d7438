#include "base/text_file.h"

#include "base/console.h"
#include "base/text_helpers.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <random>
#include <unicode/ucnv.h>
#include <unistd.h>

namespace lumbra::base {

namespace {

std::function<bool(const std::string&, WriteStep)>& faultHook() {
    static std::function<bool(const std::string&, WriteStep)> hook;
    return hook;
}

bool injectedFault(const std::string& path, WriteStep step) {
    return faultHook() && faultHook()(path, step);
}

struct ConverterClose {
    void operator()(UConverter* converter) const noexcept { ucnv_close(converter); }
};
using Converter = std::unique_ptr<UConverter, ConverterClose>;

// The bytes in the named encoding as UTF-8; absent at the first sequence that encoding does not allow.
std::optional<std::string> toUtf8(std::string_view bytes, const char* encoding) {
    UErrorCode status = U_ZERO_ERROR;
    Converter from(ucnv_open(encoding, &status));
    Converter to(ucnv_open("UTF-8", &status));
    if (U_FAILURE(status))
        return std::nullopt;
    ucnv_setToUCallBack(from.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    // A lone surrogate passed on by the source stops at the UTF-8 side.
    ucnv_setFromUCallBack(to.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    // Straight to UTF-8 through a small pivot, so a large file is never held as UTF-16 as well.
    std::array<UChar, 4096> pivot{};
    UChar* pivotSource = pivot.data();
    UChar* pivotTarget = pivot.data();
    std::string out(bytes.size() + bytes.size() / 2 + 16, '\0');
    char* target = out.data();
    const char* source = bytes.data();
    for (bool reset = true;; reset = false) {
        status = U_ZERO_ERROR;
        ucnv_convertEx(to.get(), from.get(), &target, out.data() + out.size(), &source,
                       bytes.data() + bytes.size(), pivot.data(), &pivotSource, &pivotTarget,
                       pivot.data() + pivot.size(), reset, true, &status);
        if (status != U_BUFFER_OVERFLOW_ERROR)
            break;
        const auto written = static_cast<std::size_t>(target - out.data());
        out.resize(out.size() * 2);
        target = out.data() + written;
    }
    if (U_FAILURE(status))
        return std::nullopt;
    out.resize(static_cast<std::size_t>(target - out.data()));
    return out;
}

// UTF-16 without a byte order mark, told by its zero bytes: every character below U+0100 (blanks, digits,
// line feeds) puts a zero on the same side of its pair, and UTF-8 text has no zero at all.
const char* bomlessUtf16(std::string_view bytes) noexcept {
    const std::size_t pairs = std::min<std::size_t>(bytes.size(), 512) / 2;
    std::size_t evenZeros = 0;
    std::size_t oddZeros = 0;
    for (std::size_t i = 0; i < pairs; ++i) {
        evenZeros += bytes[2 * i] == '\0';
        oddZeros += bytes[2 * i + 1] == '\0';
    }
    if (evenZeros * 10 < oddZeros)
        return "UTF-16LE";
    if (oddZeros * 10 < evenZeros)
        return "UTF-16BE";
    return nullptr;
}

struct ByteOrderMark {
    std::string_view bytes;
    const char* encoding;
};
// UTF-32 first: its little-endian mark begins with UTF-16's.
constexpr std::array<ByteOrderMark, 5> byteOrderMarks{{
    {"\xEF\xBB\xBF", "UTF-8"},
    {std::string_view("\xFF\xFE\x00\x00", 4), "UTF-32LE"},
    {std::string_view("\x00\x00\xFE\xFF", 4), "UTF-32BE"},
    {"\xFF\xFE", "UTF-16LE"},
    {"\xFE\xFF", "UTF-16BE"},
}};

} // namespace

void collapseCrLf(std::string& text) {
    std::size_t w = std::min(text.find('\r'), text.size());
    for (std::size_t r = w; r < text.size(); ++r) {
        if (text[r] == '\r' && r + 1 < text.size() && text[r + 1] == '\n')
            continue;
        text[w++] = text[r];
    }
    text.resize(w);
}

bool decodeText(std::string& bytes) {
    std::optional<std::string> text;
    const std::string_view view = bytes;
    const auto mark = std::find_if(byteOrderMarks.begin(), byteOrderMarks.end(),
                                   [&](const ByteOrderMark& m) { return view.starts_with(m.bytes); });
    if (mark != byteOrderMarks.end()) {
        text = toUtf8(view.substr(mark->bytes.size()), mark->encoding);
    } else {
        if (const char* utf16 = bomlessUtf16(view))
            text = toUtf8(view, utf16);
        if (!text && isValidUtf8(view)) {
            collapseCrLf(bytes);
            return true;
        }
    }
    if (!text)
        return false;
    collapseCrLf(*text);
    bytes = std::move(*text);
    return true;
}

std::string decodeLatin1(std::string_view bytes) {
    // Every byte is a Latin-1 character, so the conversion cannot stop.
    return toUtf8(bytes, "ISO-8859-1").value_or(std::string());
}

std::string tableNameFromPath(std::string_view path) {
    return dropLastCharacters(std::filesystem::path(path).filename().string(), 4);
}

std::optional<std::string> readFileBytes(const std::string& path) {
    std::FILE* f = std::fopen(path.c_str(), "rb");
    if (!f)
        return std::nullopt;
    std::string bytes;
    std::error_code ec;
    auto size = std::filesystem::file_size(path, ec);
    // Read straight into the text; a file that grows meanwhile is read on in chunks.
    std::size_t got = 0;
    bytes.resize(ec ? std::size_t(1) << 16 : static_cast<std::size_t>(size) + 1);
    while (std::size_t n = std::fread(bytes.data() + got, 1, bytes.size() - got, f)) {
        got += n;
        if (got == bytes.size())
            bytes.resize(bytes.size() * 2);
    }
    bytes.resize(got);
    bool failed = std::ferror(f) != 0;
    std::fclose(f);
    if (failed)
        return std::nullopt;
    return bytes;
}

std::string decodeFileBytes(std::string bytes) {
    if (decodeText(bytes))
        return bytes;
    return decodeLatin1(bytes);
}

std::optional<std::string> readTextFile(const std::string& path, Notifications* notifications) {
    auto bytes = readFileBytes(path);
    if (!bytes) {
        printLine("ERROR reading " + path);
        if (notifications)
            notifications->emplace_back("Reading error", "Error reading file " + path, NotificationType::KO);
        return std::nullopt;
    }
    return decodeFileBytes(std::move(*bytes));
}

bool writeFileAtomically(const std::string& path, std::string_view content) {
    return writeFileAtomically(path, [content](const TextSink& sink) { return sink(content); });
}

bool writeFileAtomically(const std::string& path, const TextProducer& produce) {
    std::size_t size = 0;
    produce([&size](std::string_view part) {
        size += part.size();
        return true;
    });
    return writeFileAtomically(path, size, produce);
}

namespace {

bool writeAll(int fd, std::string_view part) {
    for (std::size_t written = 0; written < part.size();) {
        ssize_t n = ::write(fd, part.data() + written, part.size() - written);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return false;
        written += static_cast<std::size_t>(n);
    }
    return true;
}

// A device or a pipe (/dev/stdout, /dev/null) takes the text as it comes: renaming over it would replace it.
bool writeToSpecialFile(const std::string& path, const TextProducer& produce) {
    int fd = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
    if (fd < 0)
        return false;
    bool ok = produce([fd](std::string_view part) { return writeAll(fd, part); });
    return (::close(fd) == 0) && ok;
}

} // namespace

bool writeFileAtomically(const std::string& path, std::size_t size, const TextProducer& produce) {
    namespace fs = std::filesystem;
    fs::path target(path);
    std::error_code statusError;
    const fs::file_status status = fs::status(target, statusError);
    if (!statusError && fs::exists(status) && !fs::is_regular_file(status) && !fs::is_directory(status))
        return writeToSpecialFile(path, produce);
    fs::path folder = target.parent_path().empty() ? fs::path(".") : target.parent_path();
    thread_local std::mt19937_64 random{std::random_device{}()};
    // The size in the name lets the next open tell a complete file that a kill kept from its rename.
    fs::path temp = folder / ("." + target.filename().string() + ".tmp" + std::to_string(random() % 1000000) +
                              "." + std::to_string(size));
    int fd = ::open(temp.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0)
        return false;
    // A write fault is injected once half of the text is on disk.
    const std::size_t half = size / 2;
    std::size_t written = 0;
    bool halfPassed = false;
    auto passHalf = [&] {
        halfPassed = true;
        return !injectedFault(path, WriteStep::write);
    };
    auto sink = [&](std::string_view part) {
        if (!halfPassed && written + part.size() >= half) {
            const std::size_t head = half - written;
            if (!writeAll(fd, part.substr(0, head)))
                return false;
            written += head;
            part.remove_prefix(head);
            if (!passHalf())
                return false;
        }
        written += part.size();
        return writeAll(fd, part);
    };
    bool ok = produce(sink) && (halfPassed || passHalf()) && written == size && ::fsync(fd) == 0;
    ok = (::close(fd) == 0) && ok;
    std::error_code ec;
    ok = ok && !injectedFault(path, WriteStep::rename);
    if (ok) {
        fs::rename(temp, target, ec);
        ok = !ec;
    }
    if (!ok)
        fs::remove(temp, ec);
    return ok;
}

std::optional<TemporaryFileName> parseTemporaryFileName(std::string_view name) {
    auto digits = [](std::string_view text) {
        return !text.empty() &&
               std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
    };
    const std::size_t tmp = name.rfind(".tmp");
    if (name.size() < 2 || name.front() != '.' || tmp == std::string_view::npos || tmp <= 1)
        return std::nullopt;
    std::string_view number = name.substr(tmp + 4);
    std::optional<std::uintmax_t> size;
    if (const std::size_t dot = number.find('.'); dot != std::string_view::npos) {
        std::string_view bytes = number.substr(dot + 1);
        std::uintmax_t value = 0;
        auto [end, ec] = std::from_chars(bytes.data(), bytes.data() + bytes.size(), value);
        if (!digits(bytes) || ec != std::errc() || end != bytes.data() + bytes.size())
            return std::nullopt;
        size = value;
        number = number.substr(0, dot);
    }
    if (!digits(number))
        return std::nullopt;
    return TemporaryFileName{std::string(name.substr(1, tmp - 1)), size};
}

void setWriteFaultHook(std::function<bool(const std::string& path, WriteStep step)> hook) {
    faultHook() = std::move(hook);
}

void setWriteFailureHook(std::function<bool(const std::string& path)> hook) {
    if (!hook) {
        faultHook() = {};
        return;
    }
    faultHook() = [hook = std::move(hook)](const std::string& path, WriteStep step) {
        return step == WriteStep::write && hook(path);
    };
}

} // namespace lumbra::base
