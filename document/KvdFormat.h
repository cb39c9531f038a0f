// The document file format ("kvd"): a 512-byte file header, then per
// stored channel a 248-byte channel header, its 368-byte label records and
// its 16-bit samples. "RVM_PC" files are little-endian and are read and
// written; "RVM_Mac" files are big-endian and only read.
#pragma once

#include <cstdio>

#include "FileReader.h"

namespace sonmetra {

namespace kvd {
constexpr std::size_t kFileHeaderSize = 512;
constexpr std::size_t kChannelHeaderSize = 248;
constexpr std::size_t kLabelRecordSize = 368;
constexpr char kMarkerPc[] = "RVM_PC";
constexpr char kMarkerMac[] = "RVM_Mac";
}  // namespace kvd

ReadStatus readRvmPc(BinaryFile& file, CKestruneDoc& doc, ReadContext& context);
ReadStatus readRvmMac(BinaryFile& file, CKestruneDoc& doc, ReadContext& context);

// Writes every in-use channel as an "RVM_PC" file: whole, or only the
// selection of each channel (durations, samples and labels rebased to the
// selection start, labels at both ends included). False when a write fails.
bool writeKvd(std::FILE* file, const CKestruneDoc& doc, bool selectionOnly);

// Applies the audio-channel rule after a read: flags as read if any channel
// is flagged; otherwise the first channel above 8000 Hz becomes the audio channel.
void applyAudioChannelRule(CKestruneDoc& doc);

}  // namespace sonmetra
