// A recording from the unit into a document, shared by the workstation's
// Record command and sonmetra-cli.
//
// The plan comes from the record options: the unit's size, the multiplex
// type, the input line, the unit's audio rate A, the recording time T and
// the channel table. Rule for the number of recording units (176,128 bytes
// each): the audio channel needs ceil(T x A / 1000) samples; with e0 audio
// slots in the multiplex row that is ceil(samples / e0) rows of 32 bytes,
// rounded up to whole units. The stream then holds at least T of every input.
//
// Channels: "Audio" (input 0) always, and "ch%d" for each selected row i
// whose input the multiplex row samples. Input i is carried at
// A x e_i / e0 Hz (e_i its slots); its channel keeps the first
// T x that rate samples (rounded), takes the row's sample rate (the carried
// rate when the row has none), gain and bandwidth. When a row's rate differs
// from the carried rate by more than 0.5 %, its channel's duration is not
// the requested time: the plan says so and the caller warns that the data
// is not valid.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "Multiplex.h"
#include "ParameterBlock.h"

namespace sonmetra {
class AppConfig;
class CKestruneDoc;
class SampleBlock;
}  // namespace sonmetra

namespace sonmetra::usb {

struct UnitChannelPlan {
    int input = 0;
    std::string name;
    double rateHz = 0.0;         // the document's rate of the channel
    double carriedRateHz = 0.0;  // the rate the multiplex row carries it at
    double gain = 1.0;
    double bandwidthHz = 0.0;
    std::size_t samples = 0;
    bool timeMatches = true;
};

struct UnitRecordingPlan {
    ParameterBlock block{};
    std::optional<MultiplexRow> row;
    double recordTimeMs = 0.0;
    std::uint32_t unitCount = 0;
    std::vector<UnitChannelPlan> channels;

    std::uint64_t streamBytes() const { return std::uint64_t{unitCount} * kRecordingUnitBytes; }
    bool timesMatch() const;
};

// The acquisition settings of the record options for a unit of unitChannels
// (the live scope builds its parameter block from them too).
AcquisitionSettings AcquisitionFromConfig(const AppConfig& config, int unitChannels);

// Builds the plan and its parameter block from the record options in
// `config` for a unit of `unitChannels`. Reports "Unknown multiplex type." or
// "Wrong input source..." (UserException) as the block does.
UnitRecordingPlan PlanUnitRecording(const AppConfig& config, int unitChannels);
// Unit count for a recording time, audio rate and audio slots per row.
std::uint32_t RecordingUnitCount(double recordTimeMs, double audioRateHz, int audioSlots);

// Replaces the document's channels by the plan's, split out of the stream.
// False (document untouched) when memory for the samples cannot be had.
bool FillDocumentFromUnit(CKestruneDoc& doc, const UnitRecordingPlan& plan, std::span<const std::uint8_t> stream);

// The samples of a block as the little-endian bytes the unit plays.
std::span<const std::uint8_t> SampleBytes(const SampleBlock& samples);

}  // namespace sonmetra::usb
