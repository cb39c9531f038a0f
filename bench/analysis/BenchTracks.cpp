// A pitch track (both methods) and a spectrogram (one column per 5 ms, 256
// points) of a 10-minute 11025 Hz recording, with the number of allocations
// made per frame or column.
#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include "BuildContext.h"
#include "LongRecording.h"
#include "analysis/PitchTrack.h"
#include "analysis/Spectrogram.h"

namespace {

std::atomic<long> g_allocations{0};

}  // namespace

void* operator new(std::size_t size) {
    g_allocations.fetch_add(1, std::memory_order_relaxed);
    if (void* p = std::malloc(size ? size : 1)) return p;
    throw std::bad_alloc();
}
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    g_allocations.fetch_add(1, std::memory_order_relaxed);
    return std::malloc(size ? size : 1);
}
void* operator new[](std::size_t size, const std::nothrow_t& t) noexcept { return operator new(size, t); }
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }

namespace {

constexpr double kRate = 11025.0;
constexpr double kSeconds = 600.0;

const std::vector<std::int16_t>& recording() {
    static const auto r = sonmetra::bench::longRecording(kRate, kSeconds);
    return r;
}

void pitch(benchmark::State& state, sonmetra::PitchMethod method) {
    const auto& s = recording();
    sonmetra::PitchTrackInput in;
    in.threads = static_cast<int>(state.range(0));
    in.samples = s.data();
    in.sampleCount = static_cast<double>(s.size());
    in.endSample = in.sampleCount;
    in.rateHz = kRate;
    sonmetra::PitchTrackResult r;
    long allocations = 0;
    for (auto _ : state) {
        sonmetra::PitchSettings settings;
        settings.method = method;
        const long before = g_allocations.load();
        sonmetra::ComputePitchTrack(in, settings, r);
        allocations = g_allocations.load() - before;
        benchmark::DoNotOptimize(r.track.data());
    }
    state.counters["frames"] = r.frameCount;
    state.counters["allocs_per_frame"] = static_cast<double>(allocations) / r.frameCount;
}

void BM_PitchTrackCepstral(benchmark::State& state) { pitch(state, sonmetra::PitchMethod::Cepstral); }
void BM_PitchTrackAutocorrelation(benchmark::State& state) { pitch(state, sonmetra::PitchMethod::AutoCorrelation); }

void BM_Spectrogram(benchmark::State& state) {
    const auto& s = recording();
    sonmetra::SpectrogramInput in;
    in.threads = static_cast<int>(state.range(1));
    in.samples = s.data();
    in.sampleCount = static_cast<double>(s.size());
    in.endSample = in.sampleCount;
    in.rateHz = kRate;
    const int columns = static_cast<int>(kSeconds * 1000.0 / 5.0);
    const bool formants = state.range(0) != 0;
    const auto settings = sonmetra::AnalysisSettings::defaultsForRate(kRate).spectrogram;
    sonmetra::SpectrogramResult r;
    long allocations = 0;
    for (auto _ : state) {
        const long before = g_allocations.load();
        sonmetra::ComputeSpectrogram(in, settings, columns, 256, formants, r);
        allocations = g_allocations.load() - before;
        benchmark::DoNotOptimize(r.levels.data());
    }
    state.counters["columns"] = columns;
    state.counters["allocs_per_column"] = static_cast<double>(allocations) / columns;
}

// Threads: 1 (the calling thread only) and 0 (one per processor core).
// CPU time is that of the whole process, all threads together.
BENCHMARK(BM_PitchTrackCepstral)
    ->ArgName("threads")
    ->Arg(1)
    ->Arg(0)
    ->MeasureProcessCPUTime()
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3);
BENCHMARK(BM_PitchTrackAutocorrelation)
    ->ArgName("threads")
    ->Arg(1)
    ->Arg(0)
    ->MeasureProcessCPUTime()
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3);
BENCHMARK(BM_Spectrogram)
    ->ArgNames({"formants", "threads"})
    ->ArgsProduct({{0, 1}, {1, 0}})
    ->MeasureProcessCPUTime()
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3);

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    sonmetra::bench::AddBuildContext();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
