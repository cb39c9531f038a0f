#include "ScopeSnapshot.h"

#include <algorithm>

#include "UsbProtocol.h"
#include "document/AppConfig.h"

namespace sonmetra::usb {

std::vector<int> ScopeShownChannels(const AppConfig& config, int unitChannels) {
    std::vector<int> shown;
    const int channels = std::min(unitChannels, kScopeMaxChannels);
    for (int c = 0; c < channels; ++c)
        if (c == 0 || config.m_rows[static_cast<std::size_t>(c)].selected()) shown.push_back(c);
    return shown;
}

std::vector<int> ScopeSlotsOf(const MultiplexRow& row, int unitChannels, int multiplexType, int channel) {
    if (unitChannels == 9 && multiplexType == 1 && channel == 4) return {4, 12};
    return SlotsOf(row, channel);
}

bool SplitScopeStream(std::span<const std::uint8_t> stream, const ParameterBlock& block, int unitChannels,
                      int multiplexType, ScopeChannels& channels) {
    if (unitChannels != 5 && unitChannels != 9) return false;
    MultiplexRow row{};
    std::copy_n(block.begin(), row.size(), row.begin());
    for (int c = 0; c < unitChannels; ++c) {
        const std::vector<int> slots = ScopeSlotsOf(row, unitChannels, multiplexType, c);
        // The previous array goes as the new one takes its place.
        channels[static_cast<std::size_t>(c)] = Demultiplex(stream, slots);
    }
    return true;
}

std::vector<std::uint8_t> AcquireScopeStream(const ParameterBlock& block) {
    std::vector<std::uint8_t> stream(kScopeStreamBytes);
    RecordFromDevice(stream, kScopeUnitBytes, kScopeUnitCount, 16, block.data(),
                     static_cast<std::uint32_t>(block.size()));
    return stream;
}

}  // namespace sonmetra::usb
