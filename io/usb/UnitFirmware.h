// A model of the acquisition unit's firmware: what the unit does with each
// vendor request and bulk transfer. The simulated driver (SimulatedUsbDriver.h)
// calls it directly; the umockdev test answers libusb's usbdevfs requests
// from it, so both the protocol and the real transport meet the same unit.
//
// Behaviour:
// - 0xB7 answers 64 bytes: byte 0 the size code (4, 5, 6, 7 for 5, 9, 13, 16
//   channels) in the high four bits, then "Sonmetra simulated unit".
// - 0xB1 takes the 320-byte parameter block; 0xB2 starts streaming from the
//   first slot of the block's multiplex row, 0xB4 stops.
// - While streaming, the word of stream slot w carries input i = row[w % 16];
//   it is input i's k-th sample, k counting i's slots since 0xB2, and its
//   value is InputSample(i, k, rate of i). The rate follows the block's
//   divider count for i (audio: /512, data inputs: /800), so a recording
//   demultiplexed at the right rates shows each input's own waveform.
// - 0xB3 starts playback with clock value v (a sample every 256 - v ticks of
//   2 MHz); bulk writes are kept until the next 0xB3.
// - Requests with the wrong direction or size are refused (a stall); bulk
//   transfers outside streaming or playback get no answer.
// Faults for tests: a refused request code, a stream that ends early with a
// short packet or goes silent.
// Thread-safe: the umockdev handler thread and the test thread both use it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <vector>

#include "ParameterBlock.h"

namespace sonmetra::usb {

enum class BulkEnd { Complete, ShortPacket, NoAnswer, Stall };
struct BulkResult {
    std::size_t bytes = 0;  // moved before the transfer ended
    BulkEnd end = BulkEnd::Complete;
};

class UnitFirmware {
public:
    explicit UnitFirmware(int unitChannels = 9);

    // Configuration.
    void setUnitChannels(int channels);  // 5, 9, 13, 16; anything else answers code 0
    int unitChannels() const;
    void setIdentifyByte(std::uint8_t byte0);  // answer this byte 0 instead

    // The unit's side of the transfers. controlRequest returns the bytes
    // moved, or -1 when the unit refuses the request.
    long controlRequest(bool toHost, std::uint8_t request, std::uint16_t value, std::uint16_t index, std::uint8_t* data,
                        std::size_t length);
    BulkResult bulkIn(std::uint8_t* data, std::size_t length);
    BulkResult bulkOut(const std::uint8_t* data, std::size_t length);

    // The test signal of each input at sample k and a rate: audio (0) a 220 Hz
    // tone whose loudness swells twice a second; data inputs slow waves of
    // i Hz (sine, triangle, sawtooth, square in turn) at their own level.
    static std::int16_t InputSample(int input, std::uint64_t k, double rateHz);
    // The rate of input i under the block last received (11,000 Hz without one).
    double inputRateHz(int input) const;
    // Bytes per second of the stream: the audio rate x 16 slots / audio's slots x 2.
    double streamBytesPerSecond() const;
    // The playback rate of the clock value last received.
    double playRateHz() const;

    // What the unit has seen.
    bool streaming() const;
    bool playing() const;
    std::vector<std::uint8_t> requestLog() const;  // request codes in order
    std::optional<ParameterBlock> parameterBlock() const;
    std::uint16_t playClockValue() const;
    std::uint64_t streamedBytes() const;
    std::vector<std::vector<std::uint8_t>> playedBlocks() const;
    // The played samples turned back from the converter's order.
    std::vector<std::int16_t> playedSamples() const;

    // Faults.
    void refuseRequest(std::uint8_t request);  // every later request with this code is refused
    // After `bytes` of a stream the unit ends the transfer with a short
    // packet (ShortPacket) or goes silent (NoAnswer).
    void endStreamAfter(std::uint64_t bytes, BulkEnd how);
    void clearFaults();

private:
    std::int16_t streamWord(std::uint64_t word) const;  // caller holds m_mutex

    mutable std::mutex m_mutex;
    int m_channels;
    std::optional<std::uint8_t> m_identifyByte;
    std::optional<ParameterBlock> m_block;
    bool m_streaming = false;
    bool m_playing = false;
    std::uint64_t m_streamOffset = 0;  // bytes of the current stream delivered
    std::uint16_t m_playValue = 0;
    std::vector<std::uint8_t> m_requests;
    std::vector<std::vector<std::uint8_t>> m_played;
    std::vector<std::uint8_t> m_refused;
    std::optional<std::uint64_t> m_streamEnd;
    BulkEnd m_streamEndHow = BulkEnd::ShortPacket;
    // Filled from the block at 0xB2: per slot its input, the input's slots
    // before it in the row, the input's slots per row and its rate.
    struct Slot {
        int input = 0;
        int before = 0;
        int perRow = 16;
        double rateHz = 11000.0;
    };
    std::array<Slot, kSlotsPerRow> m_slots{};
};

}  // namespace sonmetra::usb
