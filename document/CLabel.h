// One label of a channel: a text pinned to a time, with its font, colour,
// justification and line flag. The fields mirror the 368-byte label record
// of the document file; fields the program does not interpret are kept.
#pragma once

#include <cstdint>
#include <string>

#include "LogFont.h"

namespace sonmetra {

enum class Justification : std::int32_t { Left = 0, Center = 1, Right = 2 };

struct CLabel {
    double timeMs = 0.0;
    double secondCoordinate = 0.0;
    std::int32_t justification = 0;         // label parameter 1: 0 Left, 1 Center, 2 Right
    std::int32_t flag = 0;                  // only its low byte is significant: the "Add line" state
    std::int32_t params[4] = {0, 0, 0, 0};  // label parameters 2 to 5, kept as read
    std::int32_t red = 0, green = 0, blue = 0;
    LogFont font = LogFont::defaultFont();
    std::string text;  // at most 254 characters

    // Hit-test rectangle of the label in the strip (left, top, right, bottom
    // in pixels), set when the view draws it; not stored in files.
    int placement[4] = {0, 0, 0, 0};

    static constexpr std::size_t kRecordSize = 368;
    static constexpr std::size_t kMaxText = 254;

    bool lineFlag() const { return (flag & 0xff) != 0; }
    void setLineFlag(bool on) { flag = (flag & ~0xff) | (on ? 1 : 0); }
};

}  // namespace sonmetra
