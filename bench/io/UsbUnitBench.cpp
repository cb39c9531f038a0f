// The host's share of the external unit's transfers, which must stay far
// below the time the unit needs for the same data: converting one playback
// block (44,032 bytes, 2 s of sound at 11025 Hz) and splitting one minute of
// a 9-channel recording (10.6 MB at 11000 Hz, multiplex type 2) into its
// document channels.
#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "document/AppConfig.h"
#include "document/CKestruneDoc.h"
#include "io/usb/UnitRecording.h"
#include "io/usb/UsbProtocol.h"

namespace {

using namespace sonmetra;
using namespace sonmetra::usb;

void BM_ConvertPlaybackBlock(benchmark::State& state) {
    std::vector<std::uint8_t> source(kPlayBlockBytes);
    for (std::size_t i = 0; i < source.size(); ++i) source[i] = static_cast<std::uint8_t>(i * 31);
    std::vector<std::uint8_t> block(kPlayBlockBytes);
    for (auto _ : state) {
        block = source;
        ConvertForPlayback(block.data(), block.size());
        benchmark::DoNotOptimize(block.data());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kPlayBlockBytes);
}
BENCHMARK(BM_ConvertPlaybackBlock)->Unit(benchmark::kMicrosecond);

void BM_SplitOneMinuteOfNineChannels(benchmark::State& state) {
    AppConfig config;
    config.m_multiplexType = 2;
    config.m_recordTimeMs = 60000;
    for (int r = 1; r <= 8; ++r) config.m_rows[static_cast<std::size_t>(r)].word = ChannelRow::kSelected;
    const UnitRecordingPlan plan = PlanUnitRecording(config, 9);
    std::vector<std::uint8_t> stream(plan.streamBytes());
    for (std::size_t i = 0; i < stream.size(); ++i) stream[i] = static_cast<std::uint8_t>(i * 7);
    for (auto _ : state) {
        CKestruneDoc doc;
        benchmark::DoNotOptimize(FillDocumentFromUnit(doc, plan, stream));
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * stream.size()));
}
BENCHMARK(BM_SplitOneMinuteOfNineChannels)->Unit(benchmark::kMillisecond);

}  // namespace
