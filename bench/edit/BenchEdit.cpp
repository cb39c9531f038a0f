// Cut, Paste and Undo on a one-hour document: audio at 44100 Hz plus two
// data channels (at 11025 Hz, and for the heavier case at 44100 Hz too).
// Each timed step includes the undo save of the whole document to the temp
// file; the document is put back between iterations outside the timing.
// Real time is the figure that counts (the temp file goes through the
// system's file cache); the machine should be otherwise idle.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <filesystem>
#include <memory>
#include <string>

#include "document/CKestruneDoc.h"
#include "document/EditClipboard.h"
#include "document/EditOperations.h"
#include "document/MessageService.h"

namespace sonmetra {
namespace {

constexpr double kHourMs = 3600.0 * 1000.0;

struct Fixture {
    CKestruneDoc doc;
    EditClipboard clipboard;
    UndoTempFile undo;
    RecordingMessageService messages;
    std::unique_ptr<ScopedMessageService> scope;

    explicit Fixture(double dataRateHz) {
        scope = std::make_unique<ScopedMessageService>(&messages);
        const double rates[3] = {44100.0, dataRateHz, dataRateHz};
        for (int ch = 0; ch < 3; ++ch) {
            CChannel& c = doc.channel(ch);
            c.m_inUse = 1;
            c.m_audio = ch == 0 ? 1 : 0;
            c.m_rateHz = rates[ch];
            const auto n = static_cast<std::size_t>(rates[ch] * 3600.0);
            (void)c.m_samples.resize(n);
            for (std::size_t i = 0; i < n; i += 97) c.m_samples[i] = static_cast<std::int16_t>(i);
            c.m_sampleCount = static_cast<double>(n);
            c.m_durationMs = kHourMs;
            c.resetDisplayToWhole();
            for (int k = 0; k < 600; ++k) {  // a label every 6 s
                CLabel l;
                l.timeMs = k * 6000.0;
                l.text = "label " + std::to_string(k);
                c.m_labels.push_back(l);
            }
        }
        doc.setChannelCount(3);
        doc.setHoldsData(true);
        undo.setPath((std::filesystem::temp_directory_path() / "bench_edit_Untitled@@tmp").string());
    }
    ~Fixture() { std::filesystem::remove(undo.path()); }

    // Ten seconds from the middle of the hour.
    void selectTenSeconds() {
        for (int ch = 0; ch < 3; ++ch) {
            CChannel& c = doc.channel(ch);
            c.m_selStartMs = 1800.0 * 1000.0;
            c.m_selEndMs = c.m_selStartMs + 10000.0;
            c.m_selStartSample = c.m_selStartMs * c.m_rateHz / 1000.0;
            c.m_selEndSample = c.m_selEndMs * c.m_rateHz / 1000.0;
        }
    }
    void cursorAtMiddle() {
        for (int ch = 0; ch < 3; ++ch) doc.channel(ch).setCursorTime(1800.0 * 1000.0);
    }
};

// Puts the clipboard's samples back where they were cut (no temp file).
void putBack(Fixture& f) {
    for (int ch = 0; ch < 3; ++ch) {
        const ClipChannel& clip = f.clipboard.channel(ch);
        replaceRange(f.doc.channel(ch), static_cast<std::size_t>(clip.record.m_selStartSample), 0, &clip.record);
    }
}

// Takes the pasted samples out again (no temp file).
void takeOut(Fixture& f, double atMs) {
    for (int ch = 0; ch < 3; ++ch) {
        CChannel& c = f.doc.channel(ch);
        const auto first = static_cast<std::size_t>(atMs * c.m_rateHz / 1000.0);
        replaceRange(c, first, f.clipboard.channel(ch).record.m_samples.size(), nullptr);
    }
}

// Between timed steps the written temp file is flushed to disk, as it is
// while a user looks at the result of one edit before the next.
void settle() { ::sync(); }

void BM_Cut(benchmark::State& state) {
    Fixture f(static_cast<double>(state.range(0)));
    for (auto _ : state) {
        state.PauseTiming();
        f.selectTenSeconds();
        settle();
        state.ResumeTiming();
        cutSelection(f.doc, f.clipboard, f.undo);
        state.PauseTiming();
        putBack(f);
        state.ResumeTiming();
    }
}

void BM_Paste(benchmark::State& state) {
    Fixture f(static_cast<double>(state.range(0)));
    f.selectTenSeconds();
    copySelection(f.doc, f.clipboard);
    for (auto _ : state) {
        state.PauseTiming();
        f.cursorAtMiddle();
        settle();
        state.ResumeTiming();
        pasteClipboard(f.doc, f.clipboard, f.undo, false);
        state.PauseTiming();
        takeOut(f, 1800.0 * 1000.0);
        state.ResumeTiming();
    }
}

void BM_Undo(benchmark::State& state) {
    Fixture f(static_cast<double>(state.range(0)));
    for (auto _ : state) {
        state.PauseTiming();
        f.selectTenSeconds();
        cutSelection(f.doc, f.clipboard, f.undo);
        settle();
        state.ResumeTiming();
        if (!f.undo.restore(f.doc)) state.SkipWithError("undo failed");
    }
}

BENCHMARK(BM_Cut)->Arg(11025)->Arg(44100)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(4);
BENCHMARK(BM_Paste)->Arg(11025)->Arg(44100)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(4);
BENCHMARK(BM_Undo)->Arg(11025)->Arg(44100)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(4);

}  // namespace
}  // namespace sonmetra

BENCHMARK_MAIN();
