// Takes one channel out of interleaved sample frames, block by block, so
// that a long file is never held twice in memory.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "document/BinaryFile.h"
#include "document/SampleBlock.h"

namespace sonmetra {

// Reads frameCount frames of channels × bytesPerSample bytes from offset and
// converts the sample of channel `chosen` in each with convert(const uint8_t*).
// The caller has already sized `out` to frameCount and bounded frameCount by
// the file's size. A read that comes up short (an I/O error) leaves the rest
// of the block as zeros and returns the number of frames converted.
template <typename Convert>
std::size_t readInterleavedChannel(BinaryFile& file, std::uint64_t offset, std::size_t frameCount, int channels,
                                   int bytesPerSample, int chosen, SampleBlock& out, Convert convert) {
    const std::size_t frameBytes = static_cast<std::size_t>(channels) * static_cast<std::size_t>(bytesPerSample);
    const std::size_t sampleOffset = static_cast<std::size_t>(chosen) * static_cast<std::size_t>(bytesPerSample);
    if (frameCount == 0 || !file.seek(offset)) return 0;
    constexpr std::size_t kBlockBytes = 1 << 18;
    const std::size_t framesPerBlock = std::max<std::size_t>(1, kBlockBytes / frameBytes);
    std::vector<std::uint8_t> buffer(std::min(framesPerBlock, frameCount) * frameBytes);
    std::size_t done = 0;
    while (done < frameCount) {
        const std::size_t want = std::min(framesPerBlock, frameCount - done);
        const std::size_t got = file.read(buffer.data(), want * frameBytes) / frameBytes;
        for (std::size_t i = 0; i < got; ++i) out[done + i] = convert(buffer.data() + i * frameBytes + sampleOffset);
        done += got;
        if (got < want) break;
    }
    return done;
}

}  // namespace sonmetra
