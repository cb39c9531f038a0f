// The Intensity and Smooth commands' work on a 10-minute document of the
// kind the unit records: 22050 Hz audio and two data channels at 5512.5 Hz
// (airflow, pressure), with the default settings (20 ms window, 10 ms step;
// smoothing over 5 samples). Times the contour of every channel, as the
// Intensity command computes it, and the moving average of every channel,
// as Smooth runs it. The command blocks the window while it runs, so this is
// the wait a user sees.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>

#include "document/CKestruneDoc.h"
#include "document/ChannelAnalysis.h"

namespace sonmetra {
namespace {

constexpr double kSeconds = 600.0;

// A channel of a slowly swelling tone with a little noise: every window
// holds power, as in speech, so no frame takes the quiet path.
void fillChannel(CChannel& ch, double rateHz, double toneHz, bool audio) {
    const auto n = static_cast<std::size_t>(rateHz * kSeconds);
    ch.m_inUse = 1;
    ch.m_audio = audio ? 1 : 0;
    ch.m_rateHz = rateHz;
    if (!ch.m_samples.resize(n)) return;
    std::uint32_t noise = 11;
    for (std::size_t i = 0; i < n; ++i) {
        noise = noise * 1664525u + 1013904223u;
        const double t = static_cast<double>(i) / rateHz;
        const double level = 6000.0 * (1.2 + std::sin(2.0 * M_PI * 0.7 * t));
        ch.m_samples[i] =
            static_cast<std::int16_t>(level * std::sin(2.0 * M_PI * toneHz * t) + static_cast<int>(noise >> 27) - 16);
    }
    ch.setSampleCountFromBlock();
    ch.m_smoothingOn = 1;
    ch.m_smoothingLength = 5.0;
}

CKestruneDoc& tenMinutes() {
    static CKestruneDoc doc;
    static const bool filled = [] {
        fillChannel(doc.channel(0), 22050.0, 180.0, true);
        fillChannel(doc.channel(1), 5512.5, 3.0, false);
        fillChannel(doc.channel(2), 5512.5, 1.5, false);
        doc.setChannelCount(3);
        doc.setHoldsData(true);
        return true;
    }();
    (void)filled;
    return doc;
}

void BM_IntensityEveryChannel(benchmark::State& state) {
    CKestruneDoc& doc = tenMinutes();
    for (auto _ : state) {
        if (ComputeIntensityAllChannels(doc) != AnalysisStatus::Ok) state.SkipWithError("intensity failed");
        benchmark::DoNotOptimize(doc.channel(0).m_intensityMax);
    }
    const double samples = doc.channel(0).m_sampleCount + doc.channel(1).m_sampleCount + doc.channel(2).m_sampleCount;
    state.counters["samples/s"] = benchmark::Counter(samples, benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(BM_IntensityEveryChannel)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_SmoothEveryChannel(benchmark::State& state) {
    CKestruneDoc& doc = tenMinutes();
    for (auto _ : state) {
        if (SmoothAllChannels(doc) != AnalysisStatus::Ok) state.SkipWithError("smoothing failed");
        benchmark::DoNotOptimize(doc.channel(0).m_samples[0]);
    }
    const double samples = doc.channel(0).m_sampleCount + doc.channel(1).m_sampleCount + doc.channel(2).m_sampleCount;
    state.counters["samples/s"] = benchmark::Counter(samples, benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(BM_SmoothEveryChannel)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace sonmetra

BENCHMARK_MAIN();
