#include "WavWriter.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "ByteOrder.h"

namespace sonmetra {

bool writeWavChannel(std::FILE* file, const CChannel& channel, bool selectionOnly) {
    std::size_t first = 0;
    std::size_t count = channel.m_samples.size();
    if (selectionOnly) {
        const double start = std::max(0.0, std::trunc(channel.m_selStartSample));
        const double length = std::max(0.0, std::trunc(channel.m_selEndSample - channel.m_selStartSample));
        first = std::min(static_cast<std::size_t>(start), count);
        count = std::min(static_cast<std::size_t>(length), count - first);
    }
    const auto rate = static_cast<std::uint32_t>(std::max(0.0, channel.m_rateHz));
    const auto dataBytes = static_cast<std::uint32_t>(count * 2);

    std::uint8_t header[44] = {};
    std::memcpy(header, "RIFF", 4);
    putLe32(header + 4, 36 + dataBytes);
    std::memcpy(header + 8, "WAVEfmt ", 8);
    putLe32(header + 16, 16);
    putLe16(header + 20, 1);  // PCM
    putLe16(header + 22, 1);  // one channel
    putLe32(header + 24, rate);
    putLe32(header + 28, 2 * rate);
    putLe16(header + 32, 2);
    putLe16(header + 34, static_cast<std::uint16_t>(channel.m_bitsPerSample));
    std::memcpy(header + 36, "data", 4);
    putLe32(header + 40, dataBytes);
    if (std::fwrite(header, 1, sizeof header, file) != sizeof header) return false;
    return writeSamplesLe(file, channel.m_samples.data() + first, count);
}

}  // namespace sonmetra
