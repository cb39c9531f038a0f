// The FFT/LPC spectrum window: computing it at the cursor and averaged over
// long selections, and drawing its picture, on a synthetic vowel at 44100 Hz.
//
//   QT_QPA_PLATFORM=offscreen build/bench/bench_spectrum_window
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <cmath>
#include <numbers>
#include <vector>

#include "analysis/AnalysisSettings.h"
#include "document/CChannel.h"
#include "view/spectrum/SpectrumAnalysis.h"
#include "view/spectrum/SpectrumPicture.h"

namespace {

constexpr double kRateHz = 44100.0;

// A minute of a buzzy vowel: harmonics of 120 Hz under three resonances.
const sonmetra::CChannel& vowelMinute() {
    static sonmetra::CChannel channel = [] {
        sonmetra::CChannel ch;
        ch.m_rateHz = kRateHz;
        ch.m_audio = 1;
        ch.m_inUse = 1;
        const std::size_t count = static_cast<std::size_t>(60 * kRateHz);
        (void)ch.m_samples.resize(count);
        const std::size_t period = static_cast<std::size_t>(kRateHz / 120.0);
        std::vector<double> one(period, 0.0);
        for (int h = 1; h * 120.0 < kRateHz / 2; ++h) {
            const double f = h * 120.0;
            double gain = 0.0;
            for (const double formant : {700.0, 1200.0, 2500.0})
                gain += 1.0 / (1.0 + std::pow((f - formant) / 80.0, 2.0));
            for (std::size_t i = 0; i < period; ++i)
                one[i] += gain * std::sin(2.0 * std::numbers::pi * f * static_cast<double>(i) / kRateHz);
        }
        for (std::size_t i = 0; i < count; ++i) ch.m_samples[i] = static_cast<std::int16_t>(4000.0 * one[i % period]);
        ch.setSampleCountFromBlock();
        return ch;
    }();
    return channel;
}

sonmetra::FftLpcSettings settings(int fftIndex) {
    sonmetra::FftLpcSettings s = sonmetra::AnalysisSettings::defaultsForRate(kRateHz).fftLpc;
    s.fftSizeIndex = fftIndex;
    s.appliedWindowMs = 1000;  // the whole frame
    return s;
}

void BM_AtCursor(benchmark::State& state) {
    SpectrumAnalysis analysis;
    const auto s = settings(static_cast<int>(state.range(0)));
    for (auto _ : state) benchmark::DoNotOptimize(analysis.run(vowelMinute(), 44100.0, 44100.0, s));
}

void BM_AverageOverSeconds(benchmark::State& state) {
    SpectrumAnalysis analysis;
    const auto s = settings(3);
    const double end = 1000.0 + state.range(0) * kRateHz;
    for (auto _ : state) benchmark::DoNotOptimize(analysis.run(vowelMinute(), 1000.0, end, s));
    state.counters["frames"] = analysis.result().frames;
}

void BM_DrawPicture(benchmark::State& state) {
    SpectrumAnalysis analysis;
    const auto s = settings(static_cast<int>(state.range(0)));
    analysis.run(vowelMinute(), 44100.0, 44100.0, s);
    SpectrumPicture picture;
    picture.result = &analysis.result();
    picture.settings = s;
    picture.title = "vowel.kvd::FFT/LPC";
    QImage image(1920, 1080, QImage::Format_ARGB32_Premultiplied);
    for (auto _ : state) {
        QPainter painter(&image);
        drawSpectrumPicture(painter, image.size(), picture);
    }
}

}  // namespace

BENCHMARK(BM_AtCursor)->Arg(3)->Arg(7)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_AverageOverSeconds)->Arg(1)->Arg(10)->Arg(60)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DrawPicture)->Arg(3)->Arg(7)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
