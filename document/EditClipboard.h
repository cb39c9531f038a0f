// The program-wide edit clipboard: what the last Copy or Cut took from a
// document, one record per channel, ready to be pasted into any open
// document (or into an empty one, which then takes the channels whole).
//
// Each record is a channel record: the source channel's name, units and
// header fields, the copied selection in ms and samples (in the selection
// fields of the record), the copied samples, and the labels that lay inside
// the selection with their times made relative to its start. The record's
// duration and sample count are the copied length, so that a paste into an
// empty document can take the record as it stands.
#pragma once

#include <cstddef>
#include <vector>

#include "CChannel.h"

namespace sonmetra {

class CKestruneDoc;

struct ClipChannel {
    CChannel record;
    double lengthMs = 0.0;
    double lengthSamples = 0.0;
};

class EditClipboard {
public:
    bool valid() const { return m_valid; }
    int channelCount() const { return m_channelCount; }
    const ClipChannel& channel(int i) const { return m_channels[static_cast<std::size_t>(i)]; }

    // Copy: takes the selection of every channel of doc. When a sample block
    // cannot be had it beeps, shows the memory message, leaves the clipboard
    // invalid and throws UserException; doc is never touched.
    void copyFrom(const CKestruneDoc& doc);

private:
    bool m_valid = false;
    int m_channelCount = 0;
    std::vector<ClipChannel> m_channels;
};

// Sample index of a sample position held as a double: truncated, limited to
// [0, limit].
std::size_t wholeSample(double position, std::size_t limit);
// Milliseconds per sample of a channel; from the rate while it holds no samples.
double msPerSampleOf(const CChannel& c);
// Copies every field of a channel record except its samples, labels and
// intensity contour (the fields a clipboard record takes over).
void copyChannelFields(const CChannel& from, CChannel& to);

}  // namespace sonmetra
