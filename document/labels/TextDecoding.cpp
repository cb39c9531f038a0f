#include "TextDecoding.h"

#include <cstdint>

namespace sonmetra {
namespace {

std::optional<std::string> fromUtf16(std::string_view bytes, bool bigEndian, std::string& error) {
    if (bytes.size() % 2 != 0) {
        error = "its UTF-16 text ends in half a character";
        return std::nullopt;
    }
    auto unit = [&](std::size_t i) -> std::uint16_t {
        const auto b0 = static_cast<std::uint8_t>(bytes[i]), b1 = static_cast<std::uint8_t>(bytes[i + 1]);
        return bigEndian ? static_cast<std::uint16_t>(b0 << 8 | b1) : static_cast<std::uint16_t>(b1 << 8 | b0);
    };
    std::string out;
    out.reserve(bytes.size() / 2);
    for (std::size_t i = 0; i < bytes.size(); i += 2) {
        const std::uint16_t u = unit(i);
        char32_t cp = u;
        if (u >= 0xd800 && u <= 0xdbff) {
            const std::uint16_t low = i + 2 < bytes.size() ? unit(i + 2) : 0;
            if (low < 0xdc00 || low > 0xdfff) {
                error = "its UTF-16 text holds a broken surrogate pair";
                return std::nullopt;
            }
            cp = 0x10000 + ((static_cast<char32_t>(u) - 0xd800) << 10) + (low - 0xdc00);
            i += 2;
        } else if (u >= 0xdc00 && u <= 0xdfff) {
            error = "its UTF-16 text holds a broken surrogate pair";
            return std::nullopt;
        }
        appendUtf8(out, cp);
    }
    return out;
}

// UTF-16 without a mark: the first characters of any label file are ASCII,
// so every other byte of the first few is zero.
std::optional<bool> unmarkedUtf16(std::string_view bytes) {
    if (bytes.size() < 8) return std::nullopt;
    bool evenZero = true, oddZero = true;
    for (std::size_t i = 0; i < 8; i += 2) {
        evenZero = evenZero && bytes[i] == 0 && bytes[i + 1] != 0;
        oddZero = oddZero && bytes[i + 1] == 0 && bytes[i] != 0;
    }
    if (evenZero) return true;  // big-endian
    if (oddZero) return false;
    return std::nullopt;
}

}  // namespace

void appendUtf8(std::string& out, char32_t cp) {
    if (cp < 0x80) {
        out += static_cast<char>(cp);
    } else if (cp < 0x800) {
        out += static_cast<char>(0xc0 | (cp >> 6));
        out += static_cast<char>(0x80 | (cp & 0x3f));
    } else if (cp < 0x10000) {
        out += static_cast<char>(0xe0 | (cp >> 12));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3f));
        out += static_cast<char>(0x80 | (cp & 0x3f));
    } else {
        out += static_cast<char>(0xf0 | (cp >> 18));
        out += static_cast<char>(0x80 | ((cp >> 12) & 0x3f));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3f));
        out += static_cast<char>(0x80 | (cp & 0x3f));
    }
}

bool isValidUtf8(std::string_view s) {
    std::size_t i = 0;
    while (i < s.size()) {
        const auto c = static_cast<std::uint8_t>(s[i]);
        int extra = 0;
        char32_t cp = 0;
        if (c < 0x80) {
            ++i;
            continue;
        } else if (c >= 0xc2 && c <= 0xdf) {
            extra = 1;
            cp = c & 0x1f;
        } else if (c >= 0xe0 && c <= 0xef) {
            extra = 2;
            cp = c & 0x0f;
        } else if (c >= 0xf0 && c <= 0xf4) {
            extra = 3;
            cp = c & 0x07;
        } else {
            return false;
        }
        if (i + static_cast<std::size_t>(extra) >= s.size()) return false;
        for (int k = 1; k <= extra; ++k) {
            const auto b = static_cast<std::uint8_t>(s[i + static_cast<std::size_t>(k)]);
            if ((b & 0xc0) != 0x80) return false;
            cp = (cp << 6) | (b & 0x3f);
        }
        // Overlong forms, surrogates and code points beyond U+10FFFF.
        if ((extra == 2 && cp < 0x800) || (extra == 3 && (cp < 0x10000 || cp > 0x10ffff)) ||
            (cp >= 0xd800 && cp <= 0xdfff))
            return false;
        i += static_cast<std::size_t>(extra) + 1;
    }
    return true;
}

std::optional<std::string> decodeTextFile(std::string_view bytes, std::string& error) {
    auto startsWith = [&](std::string_view mark) { return bytes.substr(0, mark.size()) == mark; };
    if (startsWith("\xef\xbb\xbf")) {
        const std::string_view body = bytes.substr(3);
        if (!isValidUtf8(body)) {
            error = "it is marked as UTF-8 but is not UTF-8 text";
            return std::nullopt;
        }
        return std::string(body);
    }
    if (startsWith("\xfe\xff")) return fromUtf16(bytes.substr(2), true, error);
    if (startsWith("\xff\xfe")) return fromUtf16(bytes.substr(2), false, error);
    if (const auto bigEndian = unmarkedUtf16(bytes)) return fromUtf16(bytes, *bigEndian, error);
    if (isValidUtf8(bytes)) return std::string(bytes);
    std::string out;
    out.reserve(bytes.size() + bytes.size() / 8);
    for (const char c : bytes) appendUtf8(out, static_cast<std::uint8_t>(c));
    return out;
}

}  // namespace sonmetra
