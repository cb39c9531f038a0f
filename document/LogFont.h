// A label's font as stored in document files: the 60-byte logical-font
// record (height first). Every byte read is kept, so that a file written
// back is identical to the one read.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <string>

namespace sonmetra {

struct LogFont {
    std::int32_t height = 14;  // pixels
    std::int32_t width = 0;
    std::int32_t escapement = 0;
    std::int32_t orientation = 0;
    std::int32_t weight = 400;  // 400 normal, 700 bold
    std::uint8_t italic = 0;
    std::uint8_t underline = 0;
    std::uint8_t strikeOut = 0;
    std::uint8_t charSet = 0;
    std::uint8_t outPrecision = 0;
    std::uint8_t clipPrecision = 0;
    std::uint8_t quality = 0;
    std::uint8_t pitchAndFamily = 0;
    std::array<char, 32> faceName{};  // NUL-terminated; bytes after the NUL are kept as read

    static constexpr std::size_t kRecordSize = 60;

    std::string face() const { return std::string(faceName.data(), strnlen(faceName.data(), faceName.size())); }
    void setFace(const std::string& name) {
        faceName.fill(0);
        std::memcpy(faceName.data(), name.data(), std::min(name.size(), faceName.size() - 1));
    }
    // The program's default font: "Arial", height 14, normal weight.
    static LogFont defaultFont() {
        LogFont f;
        f.setFace("Arial");
        return f;
    }
    bool operator==(const LogFont&) const = default;
};

}  // namespace sonmetra
