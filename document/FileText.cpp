#include "FileText.h"

#include <cstdint>

#include "labels/TextDecoding.h"

namespace sonmetra {
namespace {

// Windows-1252 at 0x80..0x9F; 0 marks the five bytes it leaves unassigned.
constexpr char16_t kCp1252High[32] = {0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                      0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,
                                      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                      0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

}  // namespace

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
