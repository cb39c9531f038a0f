// Opening the spectrogram window on a one-hour recording (44100 Hz audio) at
// full-window size, 1920x1080, offscreen: the computation for the image
// area and the first paint, as the Spectrogram All command does them. The
// cost follows the number of columns, not the length: the same window over
// one second of the same document costs about as much.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <chrono>
#include <cstdio>

#include "document/AppConfig.h"
#include "tests/view/SyntheticDoc.h"
#include "view/AppServices.h"
#include "view/spectrogram/CSpectrogramView.h"

namespace {

struct Bench {
    std::unique_ptr<sonmetra::CKestruneDoc> doc;
    sonmetra::AppConfig config;
};

Bench& bench() {
    static Bench b = [] {
        Bench fresh;
        const auto t0 = std::chrono::steady_clock::now();
        fresh.doc = synthetic::speechLike(3600.0, 44100.0, 1000.0);
        const auto t1 = std::chrono::steady_clock::now();
        std::fprintf(stderr, "one-hour document made: %.0f ms\n",
                     std::chrono::duration<double, std::milli>(t1 - t0).count());
        fresh.config.m_analysis = sonmetra::AnalysisSettings::defaultsForRate(44100.0);
        return fresh;
    }();
    AppServices::instance().config = &b.config;
    return b;
}

sonmetra::SpectrogramSettings& settings() { return bench().config.m_analysis.spectrogram; }

// One opening: a new view at 1920x1080 over `seconds` of the document from
// its middle, computed and painted once.
void openWindow(benchmark::State& state, double seconds) {
    Bench& b = bench();
    const sonmetra::CChannel& audio = b.doc->channel(0);
    SpectrogramRange range = SpectrogramRange::whole(audio);
    if (seconds < 3600.0) {
        range.startSample = 1800.0 * audio.m_rateHz;
        range.endSample = range.startSample + seconds * audio.m_rateHz;
    }
    int columns = 0, points = 0;
    for (auto _ : state) {
        CSpectrogramView view(b.doc.get());
        view.setRange(range);
        view.resize(1920, 1080);
        view.show();
        if (!view.recompute()) state.SkipWithError("no spectrogram");
        view.repaint();
        columns = view.data()->columns();
        points = view.data()->points();
    }
    state.counters["columns"] = columns;
    state.counters["points"] = points;
}

void BM_OpenHour(benchmark::State& state) {
    settings().displayFormants = 0;
    settings().drawWaveform = settings().drawIntensity = settings().drawLabels = 0;
    openWindow(state, 3600.0);
}

void BM_OpenHourFormants(benchmark::State& state) {
    settings().displayFormants = 1;
    settings().drawWaveform = settings().drawIntensity = settings().drawLabels = 0;
    openWindow(state, 3600.0);
}

// Formants and every pane; the waveform pane's min/max summary of the hour
// is built by each new view (27 ms of the figure).
void BM_OpenHourFormantsAndPanes(benchmark::State& state) {
    settings().displayFormants = 1;
    settings().drawWaveform = settings().drawIntensity = settings().drawLabels = 1;
    openWindow(state, 3600.0);
}

void BM_OpenOneSecond(benchmark::State& state) {
    settings().displayFormants = 0;
    settings().drawWaveform = settings().drawIntensity = settings().drawLabels = 0;
    openWindow(state, 1.0);
}

// A paint of the open window, as every mouse move over it causes.
void BM_Repaint(benchmark::State& state) {
    settings().displayFormants = 1;
    settings().drawWaveform = settings().drawIntensity = settings().drawLabels = 1;
    Bench& b = bench();
    CSpectrogramView view(b.doc.get());
    view.resize(1920, 1080);
    view.show();
    view.recompute();
    view.placeCursor(1800000.0, 1000.0);
    for (auto _ : state) view.repaint();
}

BENCHMARK(BM_OpenHour)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_OpenHourFormants)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_OpenHourFormantsAndPanes)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_OpenOneSecond)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Repaint)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    AppServices::instance().config = nullptr;
    return 0;
}
