#include "FileText.h"

#include <cstdint>

namespace sonmetra {
namespace {

// Windows-1252 at 0x80..0x9F; 0 marks the five bytes it leaves unassigned.
constexpr char16_t kCp1252High[32] = {0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                      0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,
                                      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                      0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

void appendUtf8(std::string& out, char32_t c) {
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

}  // namespace

bool isValidUtf8(std::string_view bytes) {
    std::size_t i = 0;
    while (i < bytes.size()) {
        const auto c = static_cast<std::uint8_t>(bytes[i]);
        if (c < 0x80) {
            ++i;
            continue;
        }
        int more = 0;
        char32_t code = 0;
        char32_t least = 0;
        if (c >= 0xC2 && c <= 0xDF) {
            more = 1, code = c & 0x1F, least = 0x80;
        } else if (c >= 0xE0 && c <= 0xEF) {
            more = 2, code = c & 0x0F, least = 0x800;
        } else if (c >= 0xF0 && c <= 0xF4) {
            more = 3, code = c & 0x07, least = 0x10000;
        } else {
            return false;
        }
        if (i + static_cast<std::size_t>(more) >= bytes.size()) return false;
        for (int k = 1; k <= more; ++k) {
            const auto b = static_cast<std::uint8_t>(bytes[i + k]);
            if ((b & 0xC0) != 0x80) return false;
            code = (code << 6) | (b & 0x3F);
        }
        // Overlong forms, surrogates and values past U+10FFFF are no UTF-8.
        if (code < least || (code >= 0xD800 && code <= 0xDFFF) || code > 0x10FFFF) return false;
        i += static_cast<std::size_t>(more) + 1;
    }
    return true;
}

std::string fileTextToUtf8(std::string_view bytes) {
    if (isValidUtf8(bytes)) return std::string(bytes);
    std::string out;
    out.reserve(bytes.size() * 2);
    for (const char ch : bytes) {
        const auto b = static_cast<std::uint8_t>(ch);
        if (b >= 0x80 && b < 0xA0) {
            const char16_t mapped = kCp1252High[b - 0x80];
            appendUtf8(out, mapped != 0 ? mapped : b);
        } else {
            appendUtf8(out, b);
        }
    }
    return out;
}

}  // namespace sonmetra
