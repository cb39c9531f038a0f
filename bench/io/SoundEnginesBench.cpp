// The work the sound engines do once per buffer at 44100 Hz, which must stay
// far below the buffer's own duration: one capture buffer processed (18063
// samples corrected, appended to the growing recording, one strip-chart
// column; 409.6 ms of sound) and one playback refill (9031 samples; 204.8 ms).
#include <benchmark/benchmark.h>

#include <atomic>
#include <cmath>
#include <memory>
#include <numbers>
#include <vector>

#include "document/SampleBlock.h"
#include "io/CWaveIn.h"
#include "io/CWaveOut.h"
#include "io/SimulatedWaveDevice.h"

namespace {

using namespace sonmetra;
constexpr unsigned kRateHz = 44100;

class CountingDisplay : public IWaveDisplay {
public:
    WaveRect clientRect() override { return WaveRect{0, 0, 1200, 600}; }
    void drawCaptureColumn(int, int, int, int) override { ++m_calls; }
    void invertRect(const WaveRect&) override { ++m_calls; }
    std::atomic<long> m_calls{0};
};

std::vector<std::int16_t> sine(std::size_t count) {
    std::vector<std::int16_t> samples(count);
    for (std::size_t i = 0; i < count; ++i)
        samples[i] = static_cast<std::int16_t>(20000.0 * std::sin(2.0 * std::numbers::pi * 440.0 * i / kRateHz));
    return samples;
}

void BM_CaptureBufferProcessed(benchmark::State& state) {
    CountingDisplay display;
    SampleBlock recording;
    auto engine = std::make_unique<CWaveIn>(SimulatedWaveDriver::create());
    engine->SetGain(1.5);
    engine->SetDcOffset(-12);
    engine->Init(&recording, kRateHz, 16, &display);
    const std::vector<std::int16_t> input = sine(static_cast<std::size_t>(engine->bufferLength()));
    std::vector<std::int16_t> buffer(input.size());
    for (auto _ : state) {
        state.PauseTiming();
        buffer = input;  // the device's fresh samples
        state.ResumeTiming();
        engine->ProcessBuffer(buffer.data());
        benchmark::DoNotOptimize(recording.data());
    }
    state.counters["samples"] = engine->bufferLength();
    state.counters["recorded_s"] = static_cast<double>(recording.size()) / kRateHz;
}
// A fixed count keeps the recording (and memory) bounded: 1500 buffers are
// about 10 minutes of sound.
BENCHMARK(BM_CaptureBufferProcessed)->Iterations(1500)->Unit(benchmark::kMicrosecond);

// Exposes the refill step, which normally runs on the engine's worker.
class RefillProbe : public CWaveOut {
public:
    using CWaveOut::CWaveOut;
    using CWaveOut::Refill;
};

void BM_PlaybackRefill(benchmark::State& state) {
    constexpr int kIterations = 1500;
    auto sim = SimulatedWaveDriver::create();
    sim->setCompletionSignals(false);  // the benchmark calls Refill itself
    CountingDisplay display;
    RefillProbe engine(sim);
    const int length = CWaveOut::bufferLengthForRate(kRateHz);
    const std::vector<std::int16_t> samples = sine(static_cast<std::size_t>((kIterations + 4) * length));
    SampleBlock source;
    if (!source.resize(samples.size())) return;
    std::copy(samples.begin(), samples.end(), source.begin());
    engine.SetProgress(&display, 1, 20, 0, 1180, 600);
    engine.Load(source, 0, static_cast<int>(source.size()), kRateHz, 0, 0);
    if (engine.Play() != kWaveNoError) return;
    for (auto _ : state) {
        state.PauseTiming();
        sim->playOutput(static_cast<std::size_t>(length));  // the device finishes one buffer
        state.ResumeTiming();
        engine.Refill();
        engine.StepProgress(nullptr);
    }
    state.counters["samples"] = length;
    engine.Pause();
    engine.Stop();
}
BENCHMARK(BM_PlaybackRefill)->Iterations(1500)->Unit(benchmark::kMicrosecond);

}  // namespace
