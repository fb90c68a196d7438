#include "tables/text_file.h"

#include "tables/console.h"
#include "tables/text_helpers.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <random>
#include <unistd.h>

namespace lumbra::tables {

namespace {

std::function<bool(const std::string&)>& failureHook() {
    static std::function<bool(const std::string&)> hook;
    return hook;
}

void appendUtf8(std::string& out, char32_t cp) {
    if (cp < 0x80) {
        out.push_back(static_cast<char>(cp));
    } else if (cp < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (cp >> 6)));
        out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else if (cp < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | (cp >> 12)));
        out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xF0 | (cp >> 18)));
        out.push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    }
}

std::optional<std::string> decodeUtf16(std::string_view bytes, bool bigEndian) {
    if (bytes.size() % 2 != 0)
        return std::nullopt;
    std::string out;
    out.reserve(bytes.size());
    auto unit = [&](std::size_t i) {
        auto a = static_cast<unsigned char>(bytes[i]);
        auto b = static_cast<unsigned char>(bytes[i + 1]);
        return static_cast<char32_t>(bigEndian ? (a << 8) | b : (b << 8) | a);
    };
    for (std::size_t i = 0; i < bytes.size(); i += 2) {
        char32_t u = unit(i);
        if (u >= 0xD800 && u <= 0xDBFF) {
            if (i + 3 >= bytes.size())
                return std::nullopt;
            char32_t low = unit(i + 2);
            if (low < 0xDC00 || low > 0xDFFF)
                return std::nullopt;
            appendUtf8(out, 0x10000 + ((u - 0xD800) << 10) + (low - 0xDC00));
            i += 2;
        } else if (u >= 0xDC00 && u <= 0xDFFF) {
            return std::nullopt;
        } else {
            appendUtf8(out, u);
        }
    }
    return out;
}

std::optional<std::string> decodeUtf32(std::string_view bytes, bool bigEndian) {
    if (bytes.size() % 4 != 0)
        return std::nullopt;
    std::string out;
    out.reserve(bytes.size());
    for (std::size_t i = 0; i < bytes.size(); i += 4) {
        char32_t cp = 0;
        for (std::size_t k = 0; k < 4; ++k) {
            auto b = static_cast<unsigned char>(bytes[bigEndian ? i + k : i + 3 - k]);
            cp = (cp << 8) | b;
        }
        if (cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF))
            return std::nullopt;
        appendUtf8(out, cp);
    }
    return out;
}

bool startsWith(std::string_view s, std::string_view prefix) {
    return s.substr(0, prefix.size()) == prefix;
}

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
    std::string_view view = bytes;
    if (startsWith(view, "\xEF\xBB\xBF")) {
        if (isValidUtf8(view.substr(3)))
            text = bytes.substr(3);
    } else if (startsWith(view, std::string_view("\xFF\xFE\x00\x00", 4))) {
        text = decodeUtf32(view.substr(4), false);
    } else if (startsWith(view, std::string_view("\x00\x00\xFE\xFF", 4))) {
        text = decodeUtf32(view.substr(4), true);
    } else if (startsWith(view, "\xFF\xFE")) {
        text = decodeUtf16(view.substr(2), false);
    } else if (startsWith(view, "\xFE\xFF")) {
        text = decodeUtf16(view.substr(2), true);
    } else if (isValidUtf8(view)) {
        collapseCrLf(bytes);
        return true;
    }
    if (!text)
        return false;
    collapseCrLf(*text);
    bytes = std::move(*text);
    return true;
}

std::string decodeLatin1(std::string_view bytes) {
    std::string out;
    out.reserve(bytes.size() + bytes.size() / 8);
    for (char c : bytes)
        appendUtf8(out, static_cast<unsigned char>(c));
    return out;
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
    thread_local std::mt19937_64 random{std::random_device{}()};
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

} // namespace lumbra::tables
