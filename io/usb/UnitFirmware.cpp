#include "UnitFirmware.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>

#include "Multiplex.h"

namespace sonmetra::usb {
namespace {

constexpr double kDefaultRateHz = 11000.0;
constexpr char kIdentifyText[] = "Sonmetra simulated unit";

std::uint8_t sizeCode(int channels) {
    switch (channels) {
        case 5:
            return 4;
        case 9:
            return 5;
        case 13:
            return 6;
        case 16:
            return 7;
        default:
            return 0;
    }
}

double wave(int shape, double phase) {
    const double frac = phase - std::floor(phase);
    switch (shape) {
        case 0:
            return std::sin(2.0 * std::numbers::pi * frac);
        case 1:
            return frac < 0.5 ? 4.0 * frac - 1.0 : 3.0 - 4.0 * frac;  // triangle
        case 2:
            return 2.0 * frac - 1.0;  // sawtooth
        default:
            return frac < 0.5 ? 1.0 : -1.0;  // square
    }
}

// The rate input i is sampled at under a block (the default without one).
double blockRateHz(const std::optional<ParameterBlock>& block, int input) {
    if (!block) return kDefaultRateHz;
    if (input == 0) return RateFromDividerCount(StoredDividerCount(block->data(), kBlockAudioDivider), kAudioDivisor);
    if (input < 1 || input > kDividedInputs) return kDefaultRateHz;
    const std::size_t at = kBlockInputDividers + 2 * static_cast<std::size_t>(input - 1);
    return RateFromDividerCount(StoredDividerCount(block->data(), at), kDataDivisor);
}

}  // namespace

UnitFirmware::UnitFirmware(int unitChannels) : m_channels(unitChannels) {}

void UnitFirmware::setUnitChannels(int channels) {
    std::lock_guard lock(m_mutex);
    m_channels = channels;
}

int UnitFirmware::unitChannels() const {
    std::lock_guard lock(m_mutex);
    return m_channels;
}

void UnitFirmware::setIdentifyByte(std::uint8_t byte0) {
    std::lock_guard lock(m_mutex);
    m_identifyByte = byte0;
}

std::int16_t UnitFirmware::InputSample(int input, std::uint64_t k, double rateHz) {
    const double t = rateHz > 0.0 ? static_cast<double>(k) / rateHz : 0.0;
    if (input == 0) {
        const double swell = 0.6 + 0.4 * std::sin(2.0 * std::numbers::pi * 2.0 * t);
        return static_cast<std::int16_t>(std::lround(12000.0 * swell * std::sin(2.0 * std::numbers::pi * 220.0 * t)));
    }
    const double level = 2000.0 * ((input % 5) - 2);
    const double amplitude = 12000.0 + 1500.0 * (input % 4);
    return static_cast<std::int16_t>(std::lround(level + amplitude * wave((input - 1) % 4, input * t)));
}

long UnitFirmware::controlRequest(bool toHost, std::uint8_t request, std::uint16_t value, std::uint16_t /*index*/,
                                  std::uint8_t* data, std::size_t length) {
    std::lock_guard lock(m_mutex);
    m_requests.push_back(request);
    if (std::find(m_refused.begin(), m_refused.end(), request) != m_refused.end()) return -1;
    switch (request) {
        case kRequestIdentify: {
            if (!toHost || length == 0) return -1;
            std::uint8_t answer[kIdentifyBytes] = {};
            answer[0] = m_identifyByte.value_or(static_cast<std::uint8_t>(sizeCode(m_channels) << 4));
            std::memcpy(answer + 1, kIdentifyText, sizeof kIdentifyText);
            const std::size_t n = std::min(length, kIdentifyBytes);
            std::memcpy(data, answer, n);
            return static_cast<long>(n);
        }
        case kRequestSetup: {
            if (toHost || length != kParameterBlockBytes) return -1;
            ParameterBlock block{};
            std::memcpy(block.data(), data, kParameterBlockBytes);
            m_block = block;
            return static_cast<long>(length);
        }
        case kRequestStart: {
            if (toHost || length != 0) return -1;
            m_streaming = true;
            m_playing = false;
            m_streamOffset = 0;
            MultiplexRow row{};
            if (m_block) std::copy_n(m_block->begin(), kSlotsPerRow, row.begin());
            for (std::size_t s = 0; s < kSlotsPerRow; ++s) {
                Slot& slot = m_slots[s];
                slot.input = row[s];
                slot.before = static_cast<int>(std::count(row.begin(), row.begin() + static_cast<long>(s), row[s]));
                slot.perRow = SlotCount(row, row[s]);
                slot.rateHz = blockRateHz(m_block, slot.input);
            }
            return 0;
        }
        case kRequestPlay:
            if (toHost || length != 0) return -1;
            m_playing = true;
            m_streaming = false;
            m_playValue = value;
            m_played.clear();
            return 0;
        case kRequestStop:
            if (toHost || length != 0) return -1;
            m_streaming = false;
            m_playing = false;
            return 0;
        default:
            return -1;
    }
}

std::int16_t UnitFirmware::streamWord(std::uint64_t word) const {
    const Slot& slot = m_slots[word % kSlotsPerRow];
    const std::uint64_t k =
        (word / kSlotsPerRow) * static_cast<std::uint64_t>(slot.perRow) + static_cast<std::uint64_t>(slot.before);
    return InputSample(slot.input, k, slot.rateHz);
}

BulkResult UnitFirmware::bulkIn(std::uint8_t* data, std::size_t length) {
    std::lock_guard lock(m_mutex);
    BulkResult result;
    if (!m_streaming) {
        result.end = BulkEnd::NoAnswer;
        return result;
    }
    std::size_t n = length;
    if (m_streamEnd) {
        const std::uint64_t left = *m_streamEnd > m_streamOffset ? *m_streamEnd - m_streamOffset : 0;
        if (left < n) {
            n = static_cast<std::size_t>(left);
            result.end = m_streamEndHow;
        }
    }
    for (std::size_t i = 0; i < n; ++i) {
        const std::uint64_t byte = m_streamOffset + i;
        const auto word = static_cast<std::uint16_t>(streamWord(byte / 2));
        data[i] = static_cast<std::uint8_t>(byte % 2 == 0 ? word & 0xFF : word >> 8);
    }
    m_streamOffset += n;
    result.bytes = n;
    return result;
}

BulkResult UnitFirmware::bulkOut(const std::uint8_t* data, std::size_t length) {
    std::lock_guard lock(m_mutex);
    BulkResult result;
    if (!m_playing) {
        result.end = BulkEnd::NoAnswer;
        return result;
    }
    m_played.emplace_back(data, data + length);
    result.bytes = length;
    return result;
}

double UnitFirmware::inputRateHz(int input) const {
    std::lock_guard lock(m_mutex);
    return blockRateHz(m_block, input);
}

double UnitFirmware::streamBytesPerSecond() const {
    std::lock_guard lock(m_mutex);
    const double audioRate = blockRateHz(m_block, 0);
    MultiplexRow row{};
    if (m_block) std::copy_n(m_block->begin(), kSlotsPerRow, row.begin());
    const int audioSlots = std::max(1, SlotCount(row, 0));
    return audioRate * static_cast<double>(kSlotsPerRow) / audioSlots * 2.0;
}

double UnitFirmware::playRateHz() const {
    std::lock_guard lock(m_mutex);
    const int ticks = 256 - static_cast<int>(m_playValue);
    return ticks > 0 ? 2000000.0 / ticks : 0.0;
}

bool UnitFirmware::streaming() const {
    std::lock_guard lock(m_mutex);
    return m_streaming;
}

bool UnitFirmware::playing() const {
    std::lock_guard lock(m_mutex);
    return m_playing;
}

std::vector<std::uint8_t> UnitFirmware::requestLog() const {
    std::lock_guard lock(m_mutex);
    return m_requests;
}

std::optional<ParameterBlock> UnitFirmware::parameterBlock() const {
    std::lock_guard lock(m_mutex);
    return m_block;
}

std::uint16_t UnitFirmware::playClockValue() const {
    std::lock_guard lock(m_mutex);
    return m_playValue;
}

std::uint64_t UnitFirmware::streamedBytes() const {
    std::lock_guard lock(m_mutex);
    return m_streamOffset;
}

std::vector<std::vector<std::uint8_t>> UnitFirmware::playedBlocks() const {
    std::lock_guard lock(m_mutex);
    return m_played;
}

std::vector<std::int16_t> UnitFirmware::playedSamples() const {
    std::lock_guard lock(m_mutex);
    std::vector<std::int16_t> samples;
    for (const auto& block : m_played) {
        for (std::size_t i = 0; i + 1 < block.size(); i += 2) {
            std::uint16_t v = static_cast<std::uint16_t>(block[i] | (block[i + 1] << 8));
            std::uint16_t straight = 0;
            for (int bit = 0; bit < 16; ++bit) {
                straight = static_cast<std::uint16_t>((straight << 1) | (v & 1u));
                v = static_cast<std::uint16_t>(v >> 1);
            }
            samples.push_back(static_cast<std::int16_t>(static_cast<std::uint16_t>(straight - 32767u)));
        }
    }
    return samples;
}

void UnitFirmware::refuseRequest(std::uint8_t request) {
    std::lock_guard lock(m_mutex);
    m_refused.push_back(request);
}

void UnitFirmware::endStreamAfter(std::uint64_t bytes, BulkEnd how) {
    std::lock_guard lock(m_mutex);
    m_streamEnd = bytes;
    m_streamEndHow = how;
}

void UnitFirmware::clearFaults() {
    std::lock_guard lock(m_mutex);
    m_refused.clear();
    m_streamEnd.reset();
}

}  // namespace sonmetra::usb
