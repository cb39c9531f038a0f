// Channel labels to and from the label files of other tools (TextGrid and
// tab-separated label text).
//
// A label marks one time; a tier's interval spans two. An interval becomes
// a label with its text at its start, and its end becomes a second label
// with no text, unless another interval starts exactly there. The empty
// label is an ordinary label: it is drawn as a line, lists in the label
// list, moves with the samples through Cut and Paste and is saved in the
// document, so an interval's end survives editing the way its start does.
// Going back, a channel's labels make an interval tier when the channel
// holds an empty label (the mark of an imported end), else a point tier:
// every label with text starts an interval that runs to the next label,
// or to the end of the signal. Empty intervals and points are skipped.
//
// What the labels do not keep: tier names, a tier's own start and end
// (export spans 0 to the end of the signal), empty points, and the kind of
// a tier once all its end labels are deleted.
//
// Every function that can fail shows its message (through the message
// service) and changes nothing: a file is read whole before any channel
// changes, and is written through a temporary file.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "LabelTier.h"
#include "document/CKestruneDoc.h"

namespace sonmetra {

enum class LabelFileFormat { TextGrid, LabelTrack };

// Reads a TextGrid (recognised by its contents) or a tab-separated label
// text (every other file) in any encoding of TextDecoding.h. A label text
// becomes one tier named after the file.
std::optional<LabelFile> readLabelFile(const std::string& path);

// Where tiers go: tier index in the file, 0-based channel.
struct TierAssignment {
    std::size_t tier = 0;
    int channel = 0;
};

// The new label lists of the assigned channels, checked and ready to apply.
struct PreparedLabels {
    std::vector<std::pair<int, std::vector<CLabel>>> channels;
};

// Converts the assigned tiers with `style` (font, colour, justification,
// line flag of every new label). Fails, with its message, when a tier's
// text or times do not fit the label model: a text longer than 254 bytes
// or holding a NUL, a time before the start or past the end of the
// channel (by more than a sample), a channel without samples, or two tiers
// for one channel. `fileName` names the file in the messages.
std::optional<PreparedLabels> prepareLabelImport(const CKestruneDoc& doc, const LabelFile& file,
                                                 const std::vector<TierAssignment>& assignments, const CLabel& style,
                                                 const std::string& fileName);
// Replaces the labels of the prepared channels and marks the document modified.
void applyLabelImport(CKestruneDoc& doc, PreparedLabels prepared);

// The time in ms of a time in seconds, chosen so that dividing it by 1000
// gives the seconds back exactly where a double allows it: a file read
// and written again then keeps the same digits.
double msFromSeconds(double seconds);
// The seconds to write for a time in ms: the double with the fewest digits
// (as Praat writes numbers) that msFromSeconds turns back into the same ms.
// Where no double does (a few times in ms share one in seconds), ms ÷ 1000:
// the time read back is then off by less than a nanosecond.
double secondsFromMs(double ms);

// What one tier of an exported file holds.
struct TierExport {
    int channel = 0;
    std::string name;
    TierKind kind = TierKind::Point;
};

// Interval when the channel holds a label without text, else point.
TierKind suggestedTierKind(const CChannel& channel);
// The channel's name, or "Channel N" when it has none.
std::string defaultTierName(const CKestruneDoc& doc, int channel);
// One tier per channel that holds labels, in channel order.
std::vector<TierExport> defaultTierExports(const CKestruneDoc& doc);

// ".TextGrid" (any case) is a TextGrid; ".txt", ".tsv" and ".lab" are label texts.
std::optional<LabelFileFormat> labelFileFormatFor(const std::string& path);

// The tiers as they would be written (the grid spans 0, or the earliest
// label, to the end of the longest exported channel or the latest label).
// nullopt, with the reason in `error`, for labels the format cannot hold.
std::optional<LabelFile> tiersFromChannels(const CKestruneDoc& doc, const std::vector<TierExport>& tiers,
                                           LabelFileFormat format, std::string& error);

// Writes the tiers to path (a label text takes exactly one tier). Shows
// the message and returns false when the labels cannot be written.
bool exportLabelFile(const CKestruneDoc& doc, const std::vector<TierExport>& tiers, LabelFileFormat format,
                     const std::string& path);

}  // namespace sonmetra
