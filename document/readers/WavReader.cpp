#include "WavReader.h"

#include <cstring>

#include "ImportDefaults.h"
#include "InterleavedData.h"
#include "document/ByteOrder.h"

namespace sonmetra {
namespace {

constexpr std::uint16_t kTagPcm = 1;
constexpr std::uint16_t kTagMuLaw = 7;

struct WavLayout {
    bool haveFormat = false;
    bool haveData = false;
    std::uint16_t tag = 0;
    std::uint16_t channels = 0;
    std::uint32_t rateHz = 0;
    std::uint16_t bits = 0;
    std::uint64_t dataOffset = 0;
    std::uint64_t dataBytes = 0;  // as much of the claimed size as the file holds
};

// Walks the chunks after the 12-byte RIFF header. Chunks are taken in any
// order; a chunk whose size runs past the end of the file ends the walk,
// and a data chunk that does so keeps the part that is there.
bool scanChunks(BinaryFile& file, WavLayout& layout) {
    const std::uint64_t fileSize = file.size();
    std::uint64_t pos = 12;
    while (pos + 8 <= fileSize && !(layout.haveFormat && layout.haveData)) {
        std::uint8_t head[8];
        if (!file.seek(pos) || !file.readExact(head, 8)) return false;
        const std::uint64_t size = getLe32(head + 4);
        const std::uint64_t body = pos + 8;
        if (std::memcmp(head, "fmt ", 4) == 0 && !layout.haveFormat) {
            std::uint8_t fmt[16];
            if (size < sizeof fmt || !file.readExact(fmt, sizeof fmt)) return false;
            layout.tag = getLe16(fmt);
            layout.channels = getLe16(fmt + 2);
            layout.rateHz = getLe32(fmt + 4);
            layout.bits = getLe16(fmt + 14);
            layout.haveFormat = true;
        } else if (std::memcmp(head, "data", 4) == 0 && !layout.haveData) {
            layout.dataOffset = body;
            layout.dataBytes = std::min(size, fileSize - body);
            layout.haveData = true;
        }
        pos = body + size + (size & 1);  // chunks are padded to an even length
    }
    return layout.haveFormat && layout.haveData;
}

}  // namespace

ReadStatus readWav(BinaryFile& file, CKestruneDoc& doc, ReadContext& context) {
    std::uint8_t riff[12];
    if (!file.seek(0) || !file.readExact(riff, sizeof riff)) return ReadStatus::NotMyType;
    if (std::memcmp(riff, "RIFF", 4) != 0 || std::memcmp(riff + 8, "WAVE", 4) != 0) return ReadStatus::NotMyType;

    WavLayout w;
    if (!scanChunks(file, w)) return ReadStatus::NotMyType;
    const bool pcm = w.tag == kTagPcm && (w.bits == 8 || w.bits == 16);
    const bool muLaw = w.tag == kTagMuLaw && w.bits == 8;
    if (!(pcm || muLaw) || w.channels == 0 || !plausibleImportRate(w.rateHz)) return ReadStatus::NotMyType;

    // Frames are laid out from the channel count and sample size; the block
    // align field is not trusted, since writers get it wrong.
    const int bytesPerSample = w.bits / 8;
    const std::uint64_t frameBytes = static_cast<std::uint64_t>(w.channels) * bytesPerSample;
    const auto frames = static_cast<std::size_t>(w.dataBytes / frameBytes);

    // Nothing to choose from: a channel count too large for even one frame.
    if (w.channels > 1 && frames == 0) return ReadStatus::NotMyType;
    const int chosen = chooseImportChannel(context, w.channels);
    if (chosen < 0) return ReadStatus::NotMyType;

    SampleBlock samples;
    if (!allocateImportSamples(samples, frames)) return ReadStatus::Abandoned;
    std::size_t got = 0;
    if (muLaw) {
        got = readInterleavedChannel(file, w.dataOffset, frames, w.channels, 1, chosen, samples,
                                     [](const std::uint8_t* p) { return muLawToSample(*p); });
    } else if (bytesPerSample == 1) {
        got = readInterleavedChannel(file, w.dataOffset, frames, w.channels, 1, chosen, samples,
                                     [](const std::uint8_t* p) { return unsigned8ToSample(*p); });
    } else {
        got = readInterleavedChannel(file, w.dataOffset, frames, w.channels, 2, chosen, samples,
                                     [](const std::uint8_t* p) { return static_cast<std::int16_t>(getLe16(p)); });
    }
    (void)samples.resize(got);  // shrinking never fails
    applyImportDefaults(doc, std::move(samples), w.rateHz, context.fileName, "WAV");
    return ReadStatus::Accepted;
}

}  // namespace sonmetra
