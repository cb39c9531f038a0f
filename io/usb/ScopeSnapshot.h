// One snapshot of the live scope: a short acquisition from the unit, split
// into the unit's channels.
//
// 1. The parameter block comes from the record options, as for a recording.
// 2. RecordFromDevice acquires 2 units of 44,032 bytes: 44,032 words, 2752
//    rows of the multiplex table.
// 3. A unit of 5 or 9 channels has its stream split: channel c receives, in
//    order, the words of the slots the block's row gives c, so it holds
//    44,032 x (its slots) / 16 samples. One exception is kept on purpose
//    because the scope has always shown it: a 9-channel unit with multiplex
//    type 1 gives channel 4 the slots 4 and 12, which carry the audio
//    channel, not its own slots 5 and 13. Channels 5-8 take slots 6, 7, 14
//    and 15 as the row says.
// 4. Units of 13 and 16 channels are not split: their data are dropped and
//    the channels keep what they held.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "Multiplex.h"
#include "ParameterBlock.h"

namespace sonmetra {
class AppConfig;
}

namespace sonmetra::usb {

inline constexpr int kScopeMaxChannels = 16;
inline constexpr std::uint32_t kScopeStreamBytes = kScopeUnitBytes * kScopeUnitCount;

// The samples of the last snapshot, by channel number of the unit.
using ScopeChannels = std::array<std::vector<std::int16_t>, kScopeMaxChannels>;

// The channels the scope shows, in channel order: the audio channel (0)
// always, as it is always recorded, and each further channel of the unit
// whose row of the record options is selected. None for a unit of unknown size.
std::vector<int> ScopeShownChannels(const AppConfig& config, int unitChannels);

// The slots whose words channel `channel` receives (the 9-channel type-1
// exception included).
std::vector<int> ScopeSlotsOf(const MultiplexRow& row, int unitChannels, int multiplexType, int channel);

// Splits a snapshot's stream into `channels` by the row sent in the block
// (its first 16 bytes). False, with `channels` untouched, for a unit that
// has neither 5 nor 9 channels.
bool SplitScopeStream(std::span<const std::uint8_t> stream, const ParameterBlock& block, int unitChannels,
                      int multiplexType, ScopeChannels& channels);

// Acquires one snapshot's stream with the block (the unit's messages and
// UserException as RecordFromDevice reports them).
std::vector<std::uint8_t> AcquireScopeStream(const ParameterBlock& block);

}  // namespace sonmetra::usb
