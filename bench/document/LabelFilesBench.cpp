// Label files of a long annotation: one hour of speech with a word tier
// (12 000 intervals, a pause between each two words) and a phone tier
// (45 000 intervals that fill the hour) as a TextGrid in Praat's long
// format. Times reading the file's text, turning both tiers into channel
// labels, and writing the labels back as a TextGrid.
#include <benchmark/benchmark.h>

#include <string>

#include "document/CKestruneDoc.h"
#include "document/MessageService.h"
#include "document/labels/LabelTransfer.h"
#include "document/labels/TextGridFormat.h"

namespace sonmetra {
namespace {

constexpr double kHourS = 3600.0;

LabelFile hourOfAnnotation() {
    LabelFile file;
    file.xmaxS = kHourS;
    LabelTier words{"words", TierKind::Interval, 0.0, kHourS, {}};
    const int wordCount = 12000;
    for (int i = 0; i < wordCount; ++i) {
        const double start = i * kHourS / wordCount;
        const double mid = start + 0.6 * kHourS / wordCount;
        words.items.push_back({start, mid, "word" + std::to_string(i)});
        words.items.push_back({mid, (i + 1) * kHourS / wordCount, ""});
    }
    LabelTier phones{"phones", TierKind::Interval, 0.0, kHourS, {}};
    const int phoneCount = 45000;
    for (int i = 0; i < phoneCount; ++i)
        phones.items.push_back({i * kHourS / phoneCount, (i + 1) * kHourS / phoneCount, i % 7 ? "a" : "ts"});
    file.tiers = {words, phones};
    return file;
}

struct Hour {
    std::string text = formatTextGrid(hourOfAnnotation());
    CKestruneDoc doc;
    RecordingMessageService quiet;
    ScopedMessageService install{&quiet};
    Hour() {
        for (int i = 0; i < 2; ++i) {
            CChannel& c = doc.channel(i);
            if (!c.m_samples.resize(static_cast<std::size_t>(kHourS * 1000))) std::abort();
            c.m_rateHz = 1000.0;
            c.setSampleCountFromBlock();
            c.m_inUse = 1;
        }
        doc.setChannelCount(2);
        doc.setHoldsData(true);
    }
};

Hour& hour() {
    static Hour h;
    return h;
}

void BM_ReadTextGrid(benchmark::State& state) {
    Hour& h = hour();
    std::string error;
    for (auto _ : state) benchmark::DoNotOptimize(parseTextGrid(h.text, error));
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * h.text.size()));
}

void BM_ImportTiers(benchmark::State& state) {
    Hour& h = hour();
    std::string error;
    const auto file = parseTextGrid(h.text, error);
    for (auto _ : state) {
        auto prepared = prepareLabelImport(h.doc, *file, {{0, 0}, {1, 1}}, CLabel{}, "hour");
        applyLabelImport(h.doc, std::move(*prepared));
    }
}

void BM_WriteTextGrid(benchmark::State& state) {
    Hour& h = hour();
    std::string error;
    const auto file = parseTextGrid(h.text, error);
    auto prepared = prepareLabelImport(h.doc, *file, {{0, 0}, {1, 1}}, CLabel{}, "hour");
    applyLabelImport(h.doc, std::move(*prepared));
    const std::vector<TierExport> tiers = {{0, "words", TierKind::Interval}, {1, "phones", TierKind::Interval}};
    for (auto _ : state) {
        const auto out = tiersFromChannels(h.doc, tiers, LabelFileFormat::TextGrid, error);
        benchmark::DoNotOptimize(formatTextGrid(*out));
    }
}

BENCHMARK(BM_ReadTextGrid)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ImportTiers)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_WriteTextGrid)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace sonmetra

BENCHMARK_MAIN();
