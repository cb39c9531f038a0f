// Text fields of files (channel names, units, label texts) as UTF-8.
//
// The document format stores them as plain bytes. Files written by this
// program hold UTF-8; files from the format's home system hold its 8-bit
// Windows-1252 ("ANSI") text, which is rarely valid UTF-8. A field that is
// valid UTF-8 is kept as it is; any other is read as Windows-1252, its five
// unassigned bytes becoming the control characters of the same number.
#pragma once

#include <string>
#include <string_view>

namespace sonmetra {

std::string fileTextToUtf8(std::string_view bytes);

}  // namespace sonmetra
