// The pitch window's costs on the interface thread, offscreen: the picture
// of a ten-minute track at 1920x1080 (whole, a cursor step over it, and
// zoomed to two seconds), the time the Pitch command keeps the interface
// thread (copying the channel and starting the worker) for a ten-minute and
// a one-hour recording, and the whole computation on the worker against the
// library's routine called directly, to show what the worker adds; and how
// long the progress bar can stand still over an hour.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <vector>

#include "tests/view/SyntheticDoc.h"
#include "view/pitch/PitchComputation.h"
#include "view/pitch/PitchDrawing.h"

namespace {

struct Track {
    std::unique_ptr<sonmetra::CKestruneDoc> doc;
    std::shared_ptr<PitchResults> results;
};

// Ten minutes of the synthetic voice at 11025 Hz, tracked once.
Track& tenMinutes() {
    static Track t = [] {
        Track fresh;
        const auto t0 = std::chrono::steady_clock::now();
        fresh.doc = synthetic::speechLike(600.0, 11025.0, 1000.0);
        fresh.results = std::make_shared<PitchResults>();
        PitchComputation::runAndWait(makePitchJob(*fresh.doc, 0, sonmetra::PitchSettings{}), *fresh.results);
        const auto t1 = std::chrono::steady_clock::now();
        std::fprintf(stderr, "ten minutes made and tracked (%d frames): %.0f ms\n", fresh.results->frameCount(),
                     std::chrono::duration<double, std::milli>(t1 - t0).count());
        return fresh;
    }();
    return t;
}

void drawPicture(benchmark::State& state, double startMs, double endMs) {
    Track& t = tenMinutes();
    PitchPicture picture;
    picture.results = t.results.get();
    picture.labels = &t.doc->channel(0).m_labels;
    picture.startMs = startMs;
    picture.endMs = endMs;
    picture.cursorMs = startMs + (endMs - startMs) / 3;
    picture.title = "ten minutes";
    QImage image(1920, 1080, QImage::Format_ARGB32_Premultiplied);
    for (auto _ : state) {
        image.fill(Qt::white);
        QPainter p(&image);
        drawPitchPicture(p, image.size(), picture);
        p.end();
        benchmark::DoNotOptimize(image.bits());
    }
}

void BM_PictureWholeTenMinutes(benchmark::State& state) { drawPicture(state, 0.0, 600000.0); }

// A cursor step over the whole ten minutes as the window paints it: the
// kept background layer copied, the overlay drawn at a new cursor.
void BM_CursorStepWholeTenMinutes(benchmark::State& state) {
    Track& t = tenMinutes();
    PitchPicture picture;
    picture.results = t.results.get();
    picture.labels = &t.doc->channel(0).m_labels;
    picture.startMs = 0.0;
    picture.endMs = 600000.0;
    picture.title = "ten minutes";
    const QSize size(1920, 1080);
    QImage background(size, QImage::Format_ARGB32_Premultiplied);
    background.fill(Qt::white);
    {
        QPainter p(&background);
        drawPitchBackground(p, size, picture);
    }
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    double cursorMs = 0.0;
    for (auto _ : state) {
        cursorMs = cursorMs > 590000.0 ? 0.0 : cursorMs + 997.0;
        picture.cursorMs = cursorMs;
        QPainter p(&image);
        p.drawImage(QPoint(0, 0), background);
        drawPitchOverlay(p, size, picture);
        p.end();
        benchmark::DoNotOptimize(image.bits());
    }
}
void BM_PictureTwoSeconds(benchmark::State& state) { drawPicture(state, 300000.0, 302000.0); }

// What the Pitch command costs the interface thread before the worker takes
// over: the copy of the channel and the start of the thread (the job is
// abandoned at once, which waits for its first frame).
void startCommand(benchmark::State& state, double seconds, double rateHz) {
    const auto doc = synthetic::speechLike(seconds, rateHz, 1000.0);
    PitchComputation computation;
    for (auto _ : state) {
        computation.start(makePitchJob(*doc, 0, sonmetra::PitchSettings{}), {});
        state.PauseTiming();
        computation.abandon();
        state.ResumeTiming();
    }
}
void BM_StartTenMinutes11k(benchmark::State& state) { startCommand(state, 600.0, 11025.0); }
void BM_StartOneHour44k(benchmark::State& state) { startCommand(state, 3600.0, 44100.0); }

// The whole computation of a minute of audio at 44100 Hz on the worker
// (copy, track, frame levels, summary) against the library's routine alone.
void BM_WorkerMinute44k(benchmark::State& state) {
    const auto doc = synthetic::speechLike(60.0, 44100.0, 1000.0);
    for (auto _ : state) {
        PitchResults r;
        PitchComputation::runAndWait(makePitchJob(*doc, 0, sonmetra::PitchSettings{}), r);
        benchmark::DoNotOptimize(r.track.track.data());
    }
}
void BM_LibraryMinute44k(benchmark::State& state) {
    const auto doc = synthetic::speechLike(60.0, 44100.0, 1000.0);
    const sonmetra::CChannel& ch = doc->channel(0);
    for (auto _ : state) {
        sonmetra::PitchTrackInput in;
        in.samples = ch.m_samples.data();
        in.sampleCount = ch.m_sampleCount;
        in.endSample = ch.m_sampleCount;
        in.rateHz = ch.m_rateHz;
        sonmetra::PitchSettings settings;
        sonmetra::PitchTrackResult r;
        sonmetra::ComputePitchTrack(in, settings, r);
        benchmark::DoNotOptimize(r.track.data());
    }
}

// What the window's progress bar sees over an hour at 44100 Hz: the worker's
// progress reports, timed. The longest wait between two reports (and before
// the first and after the last, when the frame levels and the waveform
// summary are made) is how long the bar can stand still.
void BM_ProgressOneHour44k(benchmark::State& state) {
    const auto doc = synthetic::speechLike(3600.0, 44100.0, 1000.0);
    const PitchJob job = makePitchJob(*doc, 0, sonmetra::PitchSettings{});
    for (auto _ : state) {
        using Clock = std::chrono::steady_clock;
        std::vector<Clock::time_point> reports;
        reports.reserve(400000);
        PitchResults r;
        const Clock::time_point start = Clock::now();
        runPitchJob(job, r, [&](int, int) {
            reports.push_back(Clock::now());
            return true;
        });
        const Clock::time_point end = Clock::now();
        const auto ms = [](Clock::duration d) { return std::chrono::duration<double, std::milli>(d).count(); };
        double longest = reports.empty() ? ms(end - start) : ms(reports.front() - start);
        for (std::size_t i = 1; i < reports.size(); ++i) longest = std::max(longest, ms(reports[i] - reports[i - 1]));
        state.counters["reports"] = static_cast<double>(reports.size());
        state.counters["longest_gap_ms"] = longest;
        state.counters["after_last_ms"] = reports.empty() ? 0.0 : ms(end - reports.back());
    }
}

}  // namespace

BENCHMARK(BM_PictureWholeTenMinutes)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CursorStepWholeTenMinutes)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PictureTwoSeconds)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StartTenMinutes11k)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_StartOneHour44k)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);
BENCHMARK(BM_WorkerMinute44k)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);
BENCHMARK(BM_LibraryMinute44k)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);
BENCHMARK(BM_ProgressOneHour44k)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
