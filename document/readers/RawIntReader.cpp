#include "RawIntReader.h"

#include "AsciiReader.h"
#include "ImportDefaults.h"
#include "InterleavedData.h"
#include "document/ByteOrder.h"
#include "document/MessageService.h"
#include "res/StringTable.h"

namespace sonmetra {

ReadStatus readRawInt(BinaryFile& file, CKestruneDoc& doc, ReadContext&) {
    // Text, numbers or words, is the ASCII reader's to take or to refuse.
    if (isPlainText(file)) return ReadStatus::NotMyType;

    const GenericFileSettings& g = doc.m_generic;
    const bool settingsOk = (g.bits == 8 || g.bits == 16) && g.headerBytes >= 0 && plausibleImportRate(g.rateHz);
    const std::uint64_t header = settingsOk ? static_cast<std::uint64_t>(g.headerBytes) : 0;
    const int bytesPerSample = g.bits == 8 ? 1 : 2;
    const std::uint64_t count = header < file.size() ? (file.size() - header) / bytesPerSample : 0;
    if (!settingsOk || count == 0) {
        showMessage(IDS_GENERIC_READ_ERROR);
        return ReadStatus::Abandoned;
    }

    SampleBlock samples;
    if (!allocateImportSamples(samples, static_cast<std::size_t>(count))) return ReadStatus::Abandoned;
    const auto n = static_cast<std::size_t>(count);
    std::size_t got = 0;
    if (bytesPerSample == 1) {
        got = readInterleavedChannel(file, header, n, 1, 1, 0, samples,
                                     [](const std::uint8_t* p) { return signed8ToSample(*p); });
    } else if (g.lowByteFirst) {
        got = readInterleavedChannel(file, header, n, 1, 2, 0, samples,
                                     [](const std::uint8_t* p) { return static_cast<std::int16_t>(getLe16(p)); });
    } else {
        got = readInterleavedChannel(file, header, n, 1, 2, 0, samples,
                                     [](const std::uint8_t* p) { return static_cast<std::int16_t>(getBe16(p)); });
    }
    if (got != n) {
        showMessage(IDS_GENERIC_READ_ERROR);
        return ReadStatus::Abandoned;
    }
    applyImportDefaults(doc, std::move(samples), g.rateHz, "int_binary file", "int_binary");
    return ReadStatus::Accepted;
}

}  // namespace sonmetra
