#include "NspReader.h"

#include <cstring>

#include "ImportDefaults.h"
#include "InterleavedData.h"
#include "document/ByteOrder.h"

namespace sonmetra {
namespace {

constexpr std::uint64_t kRateOffset = 20;

bool isId(const std::uint8_t* p, const char* id) { return std::memcmp(p, id, 4) == 0; }

}  // namespace

ReadStatus readNsp(BinaryFile& file, CKestruneDoc& doc, ReadContext&) {
    std::uint8_t head[12];
    if (!file.seek(0) || !file.readExact(head, sizeof head)) return ReadStatus::NotMyType;
    if (!isId(head, "FORM") || !isId(head + 4, "DS16")) return ReadStatus::NotMyType;

    // The total length decides where the scan ends, but never beyond the
    // end of the file.
    const std::int64_t total = static_cast<std::int32_t>(getLe32(head + 8));
    const std::uint64_t end = total <= 0 ? 0 : std::min<std::uint64_t>(static_cast<std::uint64_t>(total), file.size());

    bool haveHeader = false;
    bool haveData = false;
    std::int32_t rateHz = 0;
    std::uint64_t dataOffset = 0;
    std::size_t sampleCount = 0;

    std::uint64_t pos = 12;
    while (pos < end) {
        std::uint8_t chunk[8];
        if (!file.seek(pos) || !file.readExact(chunk, sizeof chunk)) break;
        const std::int32_t size = static_cast<std::int32_t>(getLe32(chunk + 4));
        if (size < 0) break;  // a negative size would walk backwards for ever
        if (isId(chunk, "HEDR") || isId(chunk, "HDR8")) {
            std::uint8_t rate[4];
            if (static_cast<std::uint64_t>(size) < kRateOffset + 4 || !file.seek(pos + 8 + kRateOffset) ||
                !file.readExact(rate, sizeof rate))
                return ReadStatus::NotMyType;
            rateHz = static_cast<std::int32_t>(getLe32(rate));
            haveHeader = true;
        } else if (isId(chunk, "SDA_") || isId(chunk, "SD_B")) {
            if (!haveHeader) return ReadStatus::NotMyType;
            if (haveData) break;  // only the first data chunk is read
            dataOffset = pos + 8;
            // A chunk that claims more than the file holds yields what is there.
            const std::uint64_t inFile = file.size() - std::min(file.size(), dataOffset);
            sampleCount =
                static_cast<std::size_t>(std::min<std::uint64_t>(static_cast<std::uint64_t>(size), inFile) / 2);
            haveData = true;
        }
        pos += static_cast<std::uint64_t>(size) + 8;
        pos += pos & 1;  // an odd chunk is followed by one pad byte
    }
    if (!haveHeader || !haveData || !plausibleImportRate(rateHz)) return ReadStatus::NotMyType;

    SampleBlock samples;
    if (!allocateImportSamples(samples, sampleCount)) return ReadStatus::Abandoned;
    const std::size_t got =
        readInterleavedChannel(file, dataOffset, sampleCount, 1, 2, 0, samples,
                               [](const std::uint8_t* p) { return static_cast<std::int16_t>(getLe16(p)); });
    (void)samples.resize(got);
    applyImportDefaults(doc, std::move(samples), rateHz, "NSP file", "NSP");
    return ReadStatus::Accepted;
}

}  // namespace sonmetra
