#include "Multiplex.h"

#include <algorithm>

#include "UsbConstants.h"
#include "document/MessageService.h"
#include "document/UserException.h"
#include "res/StringTable.h"

namespace sonmetra::usb {
namespace {

constexpr MultiplexRow kFive1 = {0, 1, 0, 2, 0, 3, 0, 4, 0, 1, 0, 2, 0, 3, 0, 4};
constexpr MultiplexRow kFive2 = {0, 1, 2, 3, 0, 1, 2, 4, 0, 1, 2, 3, 0, 1, 2, 4};
constexpr MultiplexRow kFive3 = {0, 1, 2, 3, 4, 5, 6, 7, 0, 1, 2, 3, 4, 5, 6, 7};
constexpr MultiplexRow kNine1 = {0, 1, 2, 3, 0, 4, 5, 6, 0, 1, 2, 3, 0, 4, 7, 8};
constexpr MultiplexRow kNine2 = {0, 1, 2, 3, 4, 5, 6, 7, 0, 1, 2, 3, 4, 5, 6, 8};
// No row is given for the larger units; audio keeps a quarter of the slots
// on a 13-channel unit, and a 16-channel unit samples every input once.
constexpr MultiplexRow kThirteen = {0, 1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 9, 0, 10, 11, 12};
constexpr MultiplexRow kSixteen = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};

}  // namespace

std::optional<MultiplexRow> MultiplexRowFor(int unitChannels, int multiplexType) {
    switch (unitChannels) {
        case 5:
            if (multiplexType == 1) return kFive1;
            if (multiplexType == 2) return kFive2;
            if (multiplexType == 3) return kFive3;
            return std::nullopt;
        case 9:
            if (multiplexType == 1) return kNine1;
            if (multiplexType == 2) return kNine2;
            beep();
            showMessage(IDS_UNKNOWN_MULTIPLEX_TYPE);
            throw UserException();
        case 13:
            return kThirteen;
        case 16:
            return kSixteen;
        default:
            return std::nullopt;
    }
}

int SlotCount(const MultiplexRow& row, int input) {
    return static_cast<int>(std::count(row.begin(), row.end(), static_cast<std::uint8_t>(input)));
}

std::vector<int> SlotsOf(const MultiplexRow& row, int input) {
    std::vector<int> slots;
    for (int s = 0; s < static_cast<int>(row.size()); ++s)
        if (row[static_cast<std::size_t>(s)] == input) slots.push_back(s);
    return slots;
}

std::vector<int> InputsOf(const MultiplexRow& row) {
    std::vector<int> inputs(row.begin(), row.end());
    std::sort(inputs.begin(), inputs.end());
    inputs.erase(std::unique(inputs.begin(), inputs.end()), inputs.end());
    return inputs;
}

double DeliveredRateHz(const MultiplexRow& row, int input, double audioRateHz) {
    const int audio = SlotCount(row, 0);
    return audio > 0 ? audioRateHz * SlotCount(row, input) / audio : 0.0;
}

std::size_t Demultiplex(std::span<const std::uint8_t> stream, std::span<const int> slots, std::span<std::int16_t> out) {
    const std::size_t rows = stream.size() / kRowBytes;
    std::size_t n = 0;
    for (std::size_t r = 0; r < rows && n < out.size(); ++r) {
        const std::uint8_t* row = stream.data() + r * kRowBytes;
        for (const int s : slots) {
            if (n >= out.size()) break;
            const std::uint8_t* w = row + 2 * static_cast<std::size_t>(s);
            out[n++] = static_cast<std::int16_t>(w[0] | (w[1] << 8));
        }
    }
    return n;
}

std::vector<std::int16_t> Demultiplex(std::span<const std::uint8_t> stream, std::span<const int> slots,
                                      std::size_t maxSamples) {
    const std::size_t available = stream.size() / kRowBytes * slots.size();
    std::vector<std::int16_t> out(std::min(maxSamples, available));
    out.resize(Demultiplex(stream, slots, std::span<std::int16_t>(out)));
    return out;
}

}  // namespace sonmetra::usb
