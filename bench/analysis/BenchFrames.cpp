// One frame or column of each analysis on a vowel at 11025 Hz: the spectrogram
// column (128-point transform resampled to 256 points), its formants (LPC of
// order 14 and the factoring), and one frame of each pitch estimator. The
// per-frame figures behind the track times of bench_tracks.
#include <benchmark/benchmark.h>

#include <vector>

#include "BuildContext.h"
#include "VowelSynth.h"
#include "analysis/AutocorrelationPitch.h"
#include "analysis/CepstralPitch.h"
#include "analysis/FftSpectrum.h"
#include "analysis/LpcSpectrum.h"

namespace {

constexpr double kRate = 11025.0;

const std::vector<std::int16_t>& vowel() {
    static const auto v = [] {
        sonmetra::synth::VowelRecipe recipe;
        recipe.rateHz = kRate;
        recipe.seconds = 0.5;
        return sonmetra::synth::synthesizeVowel(recipe);
    }();
    return v;
}

void BM_SpectrogramColumn(benchmark::State& state) {
    const auto& s = vowel();
    std::vector<double> column(300);
    sonmetra::AnalysisWorkspace ws;
    int at = 0;
    for (auto _ : state) {
        for (int i = 0; i < 138; ++i) column[static_cast<std::size_t>(i)] = s[static_cast<std::size_t>(at + i)];
        sonmetra::FftSpectrum(column.data(), 128, 0.98, 1, 1, 256, 5000, kRate, ws);
        benchmark::DoNotOptimize(column.data());
        at = (at + 55) % 4000;
    }
}

// Four columns at a time, as the spectrogram makes them; the time is per column.
void BM_SpectrogramColumnsByFour(benchmark::State& state) {
    const auto& s = vowel();
    std::vector<std::vector<double>> columns(4, std::vector<double>(300));
    double* blocks[4] = {columns[0].data(), columns[1].data(), columns[2].data(), columns[3].data()};
    sonmetra::AnalysisWorkspace ws;
    int at = 0;
    for (auto _ : state) {
        for (auto& column : columns) {
            for (int i = 0; i < 138; ++i) column[static_cast<std::size_t>(i)] = s[static_cast<std::size_t>(at + i)];
            at = (at + 55) % 4000;
        }
        sonmetra::FftSpectra(blocks, 128, 0.98, 1, 256, 5000, kRate, ws);
        benchmark::DoNotOptimize(blocks[3]);
    }
    state.SetItemsProcessed(4 * state.iterations());
}

void BM_ColumnFormants(benchmark::State& state) {
    const auto& s = vowel();
    std::vector<double> block(200);
    sonmetra::AnalysisWorkspace ws;
    int at = 0;
    for (auto _ : state) {
        for (int i = 0; i < 159; ++i) block[static_cast<std::size_t>(i)] = s[static_cast<std::size_t>(at + i)];
        sonmetra::LpcSpectrum(block.data(), 14, 154, 0.98, 1, 0, 256, 5000, kRate, 1, 1, ws);
        benchmark::DoNotOptimize(sonmetra::LastFormants(ws));
        at = (at + 55) % 4000;
    }
}

void BM_CepstralFrame(benchmark::State& state) {
    const auto& s = vowel();
    const auto mode = state.range(0) ? sonmetra::CepstralState::Complete : sonmetra::CepstralState::ForNextFrame;
    sonmetra::AnalysisWorkspace ws;
    double at = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            sonmetra::CepstralPitch(s.data(), at, static_cast<double>(s.size()), kRate, 50, 500, 1024, 385, ws, mode));
        at = at + 110.25 > 4000 ? 0 : at + 110.25;
    }
}

void BM_AutocorrelationFrame(benchmark::State& state) {
    const auto& s = vowel();
    sonmetra::AnalysisWorkspace ws;
    double at = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            sonmetra::AutocorrelationPitch(s.data(), 0, static_cast<double>(s.size()), at, 385, kRate, 50, 500, ws));
        at = at + 110.25 > 4000 ? 0 : at + 110.25;
    }
}

BENCHMARK(BM_SpectrogramColumn);
BENCHMARK(BM_SpectrogramColumnsByFour);
BENCHMARK(BM_ColumnFormants);
BENCHMARK(BM_CepstralFrame)->ArgName("complete")->Arg(1)->Arg(0);
BENCHMARK(BM_AutocorrelationFrame);

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    sonmetra::bench::AddBuildContext();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
