#include "UnitRecording.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "document/AppConfig.h"
#include "document/CKestruneDoc.h"

namespace sonmetra::usb {
namespace {

constexpr double kRateTolerance = 0.005;

}  // namespace

bool UnitRecordingPlan::timesMatch() const {
    for (const UnitChannelPlan& c : channels)
        if (!c.timeMatches) return false;
    return true;
}

std::uint32_t RecordingUnitCount(double recordTimeMs, double audioRateHz, int audioSlots) {
    const double audioSamples = std::max(1.0, std::ceil(recordTimeMs * audioRateHz / 1000.0));
    const double rows = std::ceil(audioSamples / std::max(1, audioSlots));
    const double units = std::ceil(rows * kRowBytes / kRecordingUnitBytes);
    return static_cast<std::uint32_t>(std::clamp(units, 1.0, 4.0e9));
}

AcquisitionSettings AcquisitionFromConfig(const AppConfig& config, int unitChannels) {
    AcquisitionSettings acq;
    acq.unitChannels = unitChannels;
    acq.multiplexType = config.m_multiplexType;
    acq.inputLine = config.m_inputLine;
    acq.audioRateHz = config.m_externalRateHz;
    for (std::size_t i = 0; i < acq.inputs.size(); ++i) {
        const ChannelRow& row = config.m_rows[i];
        acq.inputs[i] = InputFrontEnd{static_cast<double>(row.rateHz), static_cast<double>(row.bandwidthHz),
                                      static_cast<double>(row.gain)};
    }
    return acq;
}

UnitRecordingPlan PlanUnitRecording(const AppConfig& config, int unitChannels) {
    UnitRecordingPlan plan;
    const AcquisitionSettings acq = AcquisitionFromConfig(config, unitChannels);
    plan.block = BuildParameterBlock(acq);
    plan.row = MultiplexRowFor(unitChannels, config.m_multiplexType);
    const MultiplexRow row = plan.row.value_or(MultiplexRow{});
    plan.recordTimeMs = config.m_recordTimeMs;
    plan.unitCount = RecordingUnitCount(plan.recordTimeMs, acq.audioRateHz, SlotCount(row, 0));
    const std::uint64_t rows = plan.streamBytes() / kRowBytes;

    for (int input = 0; input < static_cast<int>(config.m_rows.size()); ++input) {
        const ChannelRow& settings = config.m_rows[static_cast<std::size_t>(input)];
        const int slots = SlotCount(row, input);
        if (slots == 0 || (input > 0 && !settings.selected())) continue;
        UnitChannelPlan c;
        c.input = input;
        c.name = input == 0 ? "Audio" : "ch" + std::to_string(input);
        c.carriedRateHz = DeliveredRateHz(row, input, acq.audioRateHz);
        c.rateHz = input == 0 ? acq.audioRateHz : (settings.rateHz > 0 ? settings.rateHz : c.carriedRateHz);
        c.gain = settings.gain > 0 ? settings.gain : 1.0;
        c.bandwidthHz = settings.bandwidthHz > 0 ? settings.bandwidthHz : c.rateHz / 2.0;
        const double wanted = std::round(plan.recordTimeMs * c.carriedRateHz / 1000.0);
        c.samples = static_cast<std::size_t>(std::min(wanted, static_cast<double>(rows * slots)));
        c.timeMatches = std::fabs(c.rateHz - c.carriedRateHz) <= kRateTolerance * c.carriedRateHz;
        plan.channels.push_back(std::move(c));
    }
    return plan;
}

bool FillDocumentFromUnit(CKestruneDoc& doc, const UnitRecordingPlan& plan, std::span<const std::uint8_t> stream) {
    const MultiplexRow row = plan.row.value_or(MultiplexRow{});
    std::vector<CChannel> channels(plan.channels.size());
    for (std::size_t n = 0; n < plan.channels.size(); ++n) {
        const UnitChannelPlan& c = plan.channels[n];
        const std::vector<int> slots = SlotsOf(row, c.input);
        CChannel& ch = channels[n];
        if (!ch.m_samples.resizeForOverwrite(c.samples)) return false;
        const std::size_t got = Demultiplex(stream, slots, std::span<std::int16_t>(ch.m_samples.data(), c.samples));
        if (!ch.m_samples.resize(got)) return false;
        ch.m_audio = c.input == 0 ? 1 : 0;
        ch.m_bitsPerSample = 16;
        ch.m_referenceCode = 0;
        ch.m_inUse = 1;
        ch.m_number = static_cast<std::int32_t>(n + 1);
        ch.m_name = c.name;
        ch.m_rateHz = c.rateHz;
        ch.m_gain = c.gain;
        ch.m_bandwidthHz = c.bandwidthHz;
        ch.setSampleCountFromBlock();
        ch.resetDisplayToWhole();
    }
    doc.clearChannels();
    for (std::size_t n = 0; n < channels.size(); ++n) doc.channel(static_cast<int>(n)) = std::move(channels[n]);
    doc.setChannelCount(static_cast<int>(channels.size()));
    doc.setHoldsData(!channels.empty() && doc.channel(0).m_sampleCount > 0);
    doc.setModified(true);
    return true;
}

std::span<const std::uint8_t> SampleBytes(const SampleBlock& samples) {
    // The unit takes little-endian words, which is how this host keeps them.
    static_assert(std::endian::native == std::endian::little);
    return {reinterpret_cast<const std::uint8_t*>(samples.data()), samples.size() * 2};
}

}  // namespace sonmetra::usb
