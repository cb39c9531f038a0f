// The text of a label file as UTF-8, whatever encoding it came in. Praat
// writes ASCII or UTF-8 files, and UTF-16 (big-endian, with a byte order
// mark) as soon as a text needs more; older files are often ISO 8859-1.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace sonmetra {

// Recognises, in this order: a UTF-8 byte order mark; a UTF-16 mark
// (either byte order); UTF-16 without a mark, told by the zero bytes of
// its ASCII characters; valid UTF-8; otherwise each byte is taken as an
// ISO 8859-1 character. The mark is dropped. Returns nullopt, with the
// reason in `error`, for UTF-16 that is cut off or holds a broken pair.
std::optional<std::string> decodeTextFile(std::string_view bytes, std::string& error);

bool isValidUtf8(std::string_view text);

// Appends the UTF-8 form of one code point (at most U+10FFFF).
void appendUtf8(std::string& out, char32_t codePoint);

}  // namespace sonmetra
