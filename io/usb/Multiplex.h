// The unit's multiplex table and the splitting of its stream into inputs.
//
// The unit scans a row of 16 slots over and over; each slot names the input
// sampled there, so an input that occurs k times in the row is sampled at
// k / 16 of the slot rate. The stream is a sequence of 16-bit little-endian
// words, one per slot, row after row.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <vector>

namespace sonmetra::usb {

using MultiplexRow = std::array<std::uint8_t, 16>;

// The row for a unit of 5, 9, 13 or 16 channels and multiplex type 1, 2 or 3.
//   5 channels: 1 = 0 1 0 2 0 3 0 4 ..., 2 = 0 1 2 3 0 1 2 4 ..., 3 = 0 1 2 3 4 5 6 7 ...
//   9 channels: 1 = 0 1 2 3 0 4 5 6 0 1 2 3 0 4 7 8, 2 = 0 1 2 3 4 5 6 7 0 1 2 3 4 5 6 8
//   13 channels (any type): 0 1 2 3 0 4 5 6 0 7 8 9 0 10 11 12, audio four times per row
//   16 channels (any type): 0 1 2 ... 15, every input once per row
// A 9-channel unit with another type: beep, "Unknown multiplex type.",
// UserException. A 5-channel unit with another type, or a unit of unknown
// size, has no table (nullopt: the table bytes stay zero).
std::optional<MultiplexRow> MultiplexRowFor(int unitChannels, int multiplexType);

// How often input occurs in the row.
int SlotCount(const MultiplexRow& row, int input);
// The slots that carry input, in order.
std::vector<int> SlotsOf(const MultiplexRow& row, int input);
// The inputs the row samples, ascending (0 first).
std::vector<int> InputsOf(const MultiplexRow& row);
// The rate at which the stream carries input when input 0 (audio) is
// sampled at audioRateHz: audio rate x its slots / audio's slots.
double DeliveredRateHz(const MultiplexRow& row, int input, double audioRateHz);

// The samples of the given slots of every whole row of the stream, in order,
// into `out` until it is full; returns how many were written.
std::size_t Demultiplex(std::span<const std::uint8_t> stream, std::span<const int> slots, std::span<std::int16_t> out);
// The same into a new vector, at most maxSamples.
std::vector<std::int16_t> Demultiplex(std::span<const std::uint8_t> stream, std::span<const int> slots,
                                      std::size_t maxSamples = std::numeric_limits<std::size_t>::max());

}  // namespace sonmetra::usb
