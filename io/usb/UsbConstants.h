// The numbers the unit and its host agree on: request codes, pipes, and the
// sizes of parameter blocks, recording units and playback blocks. Shared by
// the protocol, the transports and the simulated unit's firmware.
#pragma once

#include <cstddef>
#include <cstdint>

namespace sonmetra::usb {

// Vendor requests of the unit.
inline constexpr std::uint8_t kRequestSetup = 0xB1;     // host to unit: the 320-byte parameter block
inline constexpr std::uint8_t kRequestStart = 0xB2;     // host to unit: start acquisition
inline constexpr std::uint8_t kRequestPlay = 0xB3;      // host to unit: start playback, value = clock value
inline constexpr std::uint8_t kRequestStop = 0xB4;      // host to unit: end acquisition or playback
inline constexpr std::uint8_t kRequestIdentify = 0xB7;  // unit to host: 64 bytes

// Directions of the control packet.
inline constexpr std::uint8_t kHostToUnit = 0;
inline constexpr std::uint8_t kUnitToHost = 1;

// Pipes of the bulk transfers: reading comes from pipe 8, writing goes to pipe 1.
inline constexpr std::uint32_t kReadPipe = 8;
inline constexpr std::uint32_t kWritePipe = 1;

inline constexpr std::size_t kParameterBlockBytes = 320;
inline constexpr std::size_t kMultiplexTableBytes = 256;
inline constexpr std::size_t kIdentifyBytes = 64;
inline constexpr std::size_t kSlotsPerRow = 16;
inline constexpr std::size_t kRowBytes = kSlotsPerRow * 2;

// A recording reads whole units of 176,128 bytes (5504 rows of the multiplex
// table); the live scope takes 2 units of 44,032 bytes per snapshot.
inline constexpr std::uint32_t kRecordingUnitBytes = 176128;
inline constexpr std::uint32_t kScopeUnitBytes = 44032;
inline constexpr std::uint32_t kScopeUnitCount = 2;
// Reads come in chunks of this size less one unit.
inline constexpr std::uint32_t kChunkLimitBytes = 2097152;
// Playback goes out in blocks of 44,032 bytes; a tail is cut to a multiple of 64.
inline constexpr std::uint32_t kPlayBlockBytes = 44032;
inline constexpr std::uint32_t kPlayTailGranule = 64;

}  // namespace sonmetra::usb
