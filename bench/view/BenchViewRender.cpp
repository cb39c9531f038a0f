// Full renders of the waveform view of a one-hour document at 1920x1080
// (trace layer from scratch and the paint onto the backing store): the whole
// signal, 1000 samples per pixel column, one sample per column, 100 line
// steps of a zoomed view each followed by its render, and one mouse move of
// a selection drag. Run under
// QT_SCALE_FACTOR=2 to measure the layers of a high-DPI screen.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <chrono>
#include <cstdio>

#include "document/MinMaxSummary.h"
#include "tests/view/SyntheticDoc.h"
#include "view/CKestruneView.h"

namespace {

struct Bench {
    std::unique_ptr<sonmetra::CKestruneDoc> doc;
    std::unique_ptr<CKestruneView> view;
};

Bench& bench() {
    static Bench b = [] {
        Bench fresh;
        const auto t0 = std::chrono::steady_clock::now();
        fresh.doc = synthetic::speechLike(3600.0, 44100.0, 1000.0);
        fresh.view = std::make_unique<CKestruneView>(fresh.doc.get());
        fresh.view->resize(1920, 1080);
        fresh.view->show();  // offscreen: paints go to a backing store as on a screen
        for (int i = 0; i < 20; ++i) QCoreApplication::processEvents();
        fresh.view->channelsEdited();
        fresh.view->repaint();  // builds the summaries once, as opening a document does
        const auto t1 = std::chrono::steady_clock::now();
        std::fprintf(stderr, "document made, summaries built, first render: %.0f ms (dpr %.1f)\n",
                     std::chrono::duration<double, std::milli>(t1 - t0).count(), fresh.view->devicePixelRatioF());
        return fresh;
    }();
    return b;
}

// Every channel shows `columns` × `samplesPerColumn` audio samples from `startMs`.
void showRange(double startMs, double samplesPerColumn) {
    Bench& b = bench();
    const double columns = b.view->traceArea().width() * b.view->devicePixelRatioF();
    const double lengthMs = columns * samplesPerColumn / 44.1;
    for (int i = 0; i < b.doc->channelCount(); ++i) {
        auto& ch = b.doc->channel(i);
        const double perMs = ch.m_sampleCount / ch.m_durationMs;
        ch.m_viewStartSample = startMs * perMs;
        ch.m_viewEndSample = (startMs + lengthMs) * perMs;
        ch.m_viewStartMs = startMs;
        ch.m_viewEndMs = startMs + lengthMs;
    }
    b.view->scrollBarFromRange();
}

// A full render: trace layer from scratch, then the paint onto the backing store.
void renderLoop(benchmark::State& state) {
    Bench& b = bench();
    for (auto _ : state) {
        b.view->requestRedraw();
        b.view->repaint();
    }
}

void BM_FullView(benchmark::State& state) {
    bench().view->zoom(5);
    renderLoop(state);
}

void BM_Zoom1To1000(benchmark::State& state) {
    showRange(1234567.0, 1000.0);
    renderLoop(state);
}

void BM_Zoom1To1(benchmark::State& state) {
    showRange(1234567.0, 1.0);
    renderLoop(state);
}

// One iteration = 100 line steps of a 1:1000 view, each rendered in full.
void BM_Scroll100Steps(benchmark::State& state) {
    Bench& b = bench();
    for (auto _ : state) {
        state.PauseTiming();
        showRange(600000.0, 1000.0);
        state.ResumeTiming();
        for (int step = 0; step < 100; ++step) {
            b.view->hScroll(timebase::ScrollRequest::LineForward);
            b.view->repaint();
        }
    }
}

// A mouse move of a drag: the selection changes, the trace layer does not.
void BM_DragStep(benchmark::State& state) {
    Bench& b = bench();
    showRange(600000.0, 1000.0);
    b.view->repaint();
    const double start = b.view->displayStartMs();
    b.view->mouseDownAtMs(start + 10.0);
    double ms = start + 20.0;
    for (auto _ : state) {
        b.view->mouseMoveAtMs(ms);
        b.view->repaint();
        ms += 1.0;
    }
    b.view->mouseUpAtMs(ms);
}

void BM_SummaryBuildOneHourAudio(benchmark::State& state) {
    const auto& audio = bench().doc->channel(0);
    for (auto _ : state) {
        sonmetra::MinMaxSummary s;
        s.rebuild(audio.m_samples.data(), audio.m_samples.size());
        benchmark::DoNotOptimize(s.level(0).data());
    }
}

}  // namespace

BENCHMARK(BM_FullView)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Zoom1To1000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Zoom1To1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Scroll100Steps)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DragStep)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SummaryBuildOneHourAudio)->Unit(benchmark::kMillisecond)->Iterations(3);

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    // The view is a widget: it must go before the application object does.
    bench().view.reset();
    return 0;
}
