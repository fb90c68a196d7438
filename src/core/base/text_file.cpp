#include "base/text_file.h"

#include "base/console.h"
#include "base/text_helpers.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <random>
#include <unicode/ucnv.h>
#include <unistd.h>

namespace lumbra::base {

namespace {

std::function<bool(const std::string&)>& failureHook() {
    static std::function<bool(const std::string&)> hook;
    return hook;
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

std::optional<std::string> readTextFile(const std::string& path, Notifications* notifications) {
    auto bytes = readFileBytes(path);
    if (!bytes) {
        printLine("ERROR reading " + path);
        if (notifications)
            notifications->emplace_back("Reading error", "Error reading file " + path, NotificationType::KO);
        return std::nullopt;
    }
    if (decodeText(*bytes))
        return bytes;
    return decodeLatin1(*bytes);
}

bool writeFileAtomically(const std::string& path, std::string_view content) {
    namespace fs = std::filesystem;
    fs::path target(path);
    fs::path folder = target.parent_path().empty() ? fs::path(".") : target.parent_path();
    static std::mt19937_64 random{std::random_device{}()};
    fs::path temp = folder / ("." + target.filename().string() + ".tmp" + std::to_string(random() % 1000000));
    int fd = ::open(temp.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0)
        return false;
    bool failHalfway = failureHook() && failureHook()(path);
    std::size_t toWrite = failHalfway ? content.size() / 2 : content.size();
    std::size_t written = 0;
    bool ok = true;
    while (written < toWrite) {
        ssize_t n = ::write(fd, content.data() + written, toWrite - written);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            ok = false;
            break;
        }
        written += static_cast<std::size_t>(n);
    }
    ok = ok && !failHalfway && ::fsync(fd) == 0;
    ok = (::close(fd) == 0) && ok;
    std::error_code ec;
    if (ok) {
        fs::rename(temp, target, ec);
        ok = !ec;
    }
    if (!ok)
        fs::remove(temp, ec);
    return ok;
}

void setWriteFailureHook(std::function<bool(const std::string& path)> hook) {
    failureHook() = std::move(hook);
}

} // namespace lumbra::base
