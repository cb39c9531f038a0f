// Praat's TextGrid files in their two text formats.
//
// The long format labels every value ("xmin = 0", "intervals [2]:"); the
// short format holds the same values alone, one a line. Both are read by
// one tokenizer that keeps numbers, quoted texts ("" stands for one
// quote) and <flags>, and steps over labels, brackets, '=', ':', '?' and
// '!' comments, so that the values come in the same order either way:
//
//   "ooTextFile" "TextGrid" xmin xmax <exists> tierCount
//   per tier: class name xmin xmax itemCount, then per item
//             xmin xmax text (IntervalTier) or time mark (TextTier)
//
// Times are in seconds. Writing produces the long format byte for byte as
// Praat writes it, so that Praat reads the file and saves it back unchanged.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "LabelTier.h"

namespace sonmetra {

// True when the (decoded) text starts as a Praat text file does.
bool isPraatTextFile(std::string_view text);

// Reads a decoded TextGrid text. On failure returns nullopt with what is
// wrong in `error` (a sentence without the file's name, e.g. "the file
// ends in tier 1 "words" after 3 of its 5 intervals").
std::optional<LabelFile> parseTextGrid(std::string_view text, std::string& error);

// The long text format, UTF-8 without a byte order mark.
std::string formatTextGrid(const LabelFile& file);

// A number as Praat writes one: the first of 15, 16 or 17 significant
// digits that reads back as the same double ("0.35", "1e-07").
std::string praatNumber(double v);

}  // namespace sonmetra
