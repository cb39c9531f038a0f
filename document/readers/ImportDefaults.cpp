#include "ImportDefaults.h"

#include <cmath>
#include <utility>

#include "document/MessageService.h"
#include "res/StringTable.h"

namespace sonmetra {

bool plausibleImportRate(double rateHz) { return rateInRange(rateHz); }

int chooseImportChannel(ReadContext& context, int channelCount) {
    if (channelCount <= 1) return channelCount == 1 ? 0 : -1;
    if (!context.dialogs) return 0;
    const int chosen = context.dialogs->chooseChannel(channelCount);
    return (chosen >= 0 && chosen < channelCount) ? chosen : -1;
}

bool allocateImportSamples(SampleBlock& samples, std::size_t n) {
    if (samples.resize(n)) return true;
    showMessage(IDS_NO_MEMORY);
    return false;
}

void applyImportDefaults(CKestruneDoc& doc, SampleBlock&& samples, double rateHz, const std::string& channelName,
                         const char* readerName) {
    doc.clearChannels();
    CChannel& ch = doc.channel(0);
    ch = CChannel{};
    ch.m_samples = std::move(samples);
    ch.m_audio = 1;
    ch.m_inUse = 1;
    ch.m_number = 1;
    ch.m_bitsPerSample = 16;
    ch.m_rateHz = rateHz;
    ch.setSampleCountFromBlock();
    ch.m_units = "bits";
    ch.m_name = channelName;
    ch.m_gain = 1.0;
    ch.m_bandwidthHz = rateHz * 0.5;
    ch.m_reference = 0.0;
    ch.m_c0 = 0.0;
    ch.m_reservedA = 0;
    ch.m_reservedB = 100;
    ch.m_reservedD = 1;  // marks data that came from a foreign file
    ch.resetDisplayToWhole();
    doc.setChannelCount(1);
    doc.setForeignMark(true);
    doc.setHoldsData(true);
    doc.setModified(false);
    doc.setReaderName(readerName);
}

std::int16_t muLawToSample(std::uint8_t code) {
    const unsigned u = static_cast<std::uint8_t>(~code);
    const int exponent = static_cast<int>((u >> 4) & 0x07);
    const int mantissa = static_cast<int>(u & 0x0F);
    const int magnitude = (((mantissa << 3) + 0x84) << exponent) - 0x84;
    return static_cast<std::int16_t>((u & 0x80) ? -magnitude : magnitude);
}

}  // namespace sonmetra
