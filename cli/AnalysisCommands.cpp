#include "cli/AnalysisCommands.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "analysis/AnalysisSettings.h"
#include "analysis/FftSpectrum.h"
#include "analysis/LpcSpectrum.h"
#include "analysis/PitchTrack.h"
#include "analysis/Spectrogram.h"
#include "analysis/SpectrumWindow.h"
#include "cli/CliCommon.h"
#include "cli/SpectrogramOutput.h"
#include "document/ChannelAnalysis.h"
#include "document/ChannelRate.h"
#include "document/MessageService.h"

namespace sonmetra::cli {
namespace {

// Table text built in one buffer: the spectrogram of a long file writes
// millions of numbers.
class TableWriter {
public:
    explicit TableWriter(std::ostream& out) : m_out(out) { m_buf.reserve(1 << 16); }
    ~TableWriter() { flush(); }
    TableWriter& text(const char* s) {
        m_buf += s;
        return *this;
    }
    TableWriter& number(double v) {
        char b[64];
        const auto [end, ec] = std::to_chars(b, b + sizeof b, v);
        m_buf.append(b, ec == std::errc() ? end : b);
        return *this;
    }
    TableWriter& integer(long v) {
        char b[32];
        const auto [end, ec] = std::to_chars(b, b + sizeof b, v);
        m_buf.append(b, ec == std::errc() ? end : b);
        return *this;
    }
    TableWriter& tab() {
        m_buf += '\t';
        return endCheck();
    }
    TableWriter& line() {
        m_buf += '\n';
        return endCheck();
    }
    void flush() {
        m_out.write(m_buf.data(), static_cast<std::streamsize>(m_buf.size()));
        m_buf.clear();
    }

private:
    TableWriter& endCheck() {
        if (m_buf.size() > (1 << 20)) flush();
        return *this;
    }
    std::ostream& m_out;
    std::string m_buf;
};

[[noreturn]] void fail(const std::string& message) {
    beep();
    showMessage(message);
    throw CommandFailed();
}

void requireFiles(const CliArgs& args, std::size_t n) {
    if (args.positional.size() != n) throw UsageError(args.command + " takes " + std::to_string(n) + " file name(s)");
}

int wholeOption(const CliArgs& args, const std::string& name, int fallback, int lo, int hi) {
    const int v = args.integer(name, fallback);
    if (v < lo || v > hi)
        throw UsageError("--" + name + " takes a whole number from " + std::to_string(lo) + " to " +
                         std::to_string(hi));
    return v;
}

// Refuses a channel that no analysis can use, saying what is wrong with it.
void requireAnalysable(const CChannel& ch, int index) {
    if (ch.m_samples.empty()) fail("The channel holds no samples.");
    if (const std::string problem = channelRateProblem(ch, index); !problem.empty()) fail(problem);
    // Times become sample positions through the duration.
    if (!std::isfinite(ch.m_durationMs) || !(ch.m_durationMs > 0.0)) {
        char text[64];
        std::snprintf(text, sizeof text, "%.10g", ch.m_durationMs);
        fail("The duration of channel " + std::to_string(index + 1) + " is " + text + " ms, which cannot hold its " +
             std::to_string(ch.m_samples.size()) + " samples.");
    }
}

const CChannel& analysedChannel(const CKestruneDoc& doc, const CliArgs& args) {
    const int index = chosenChannel(doc, args);
    const CChannel& ch = doc.channel(index);
    requireAnalysable(ch, index);
    return ch;
}

double sampleCount(const CChannel& ch) { return std::min(ch.m_sampleCount, static_cast<double>(ch.m_samples.size())); }

// The analysed range: the selection given by --from-ms/--to-ms, else the whole channel.
void rangeOf(CKestruneDoc& doc, const CliArgs& args, const CChannel& ch, double& start, double& end) {
    if (applySelectionOptions(doc, args)) {
        start = ch.m_selStartSample;
        end = std::min(ch.m_selEndSample, sampleCount(ch));
    } else {
        start = 0.0;
        end = sampleCount(ch);
    }
}

double atCursor(const CliArgs& args, const CChannel& ch) {
    const double t = *args.number("at-ms");
    if (t < 0.0) throw UsageError("--at-ms must not be negative");
    return std::min(msToSample(ch, t), sampleCount(ch));
}

int runSpectrum(const CliArgs& args, CKestruneDoc& doc, std::ostream& out) {
    requireFiles(args, 1);
    const CChannel& ch = analysedChannel(doc, args);
    FftLpcSettings settings = AnalysisSettings::defaultsForRate(ch.m_rateHz).fftLpc;
    settings.fftSizeIndex = wholeOption(args, "fft-index", settings.fftSizeIndex, 0, 7);
    settings.lpcOrder = wholeOption(args, "order", settings.lpcOrder, 1, 400);
    settings.averageStepMs = wholeOption(args, "step-ms", settings.averageStepMs, 1, 100000);
    double start = 0.0, end = 0.0;
    if (args.has("at-ms")) {
        if (args.has("from-ms") || args.has("to-ms")) throw UsageError("give --at-ms or --from-ms/--to-ms, not both");
        start = end = atCursor(args, ch);
    } else if (args.has("from-ms") || args.has("to-ms")) {
        rangeOf(doc, args, ch, start, end);
    } else {
        throw UsageError("spectrum needs --at-ms T or --from-ms A --to-ms B");
    }
    SpectrumWindowInput in;
    in.samples = ch.m_samples.data();
    in.sampleCount = sampleCount(ch);
    in.startSample = start;
    in.endSample = end;
    in.rateHz = ch.m_rateHz;
    SpectrumWindowState state;
    if (ComputeSpectrumWindow(in, settings, SpectrumWindowOptions{}, state) != AnalysisStatus::Ok)
        fail("Could not allocate enough memory for this operation.");
    const int n = FftSizeOfIndex(settings.fftSizeIndex);
    TableWriter t(out);
    t.text("bin\tfrequency_hz\tdb").line();
    for (int k = 0; k < static_cast<int>(state.spectrum.size()); ++k)
        t.integer(k).tab().number(k * ch.m_rateHz / n).tab().number(state.spectrum[static_cast<std::size_t>(k)]).line();
    t.text("formants");
    for (const double f : state.formantHz) t.tab().number(f);
    t.line().text("bandwidths");
    for (const double b : state.bandwidthHz) t.tab().number(b);
    t.line();
    return 0;
}

int runLpc(const CliArgs& args, CKestruneDoc& doc, std::ostream& out) {
    requireFiles(args, 1);
    const CChannel& ch = analysedChannel(doc, args);
    if (!args.has("at-ms")) throw UsageError("lpc needs --at-ms T");
    const double cursor = atCursor(args, ch);
    const int order =
        wholeOption(args, "order", AnalysisSettings::defaultsForRate(ch.m_rateHz).fftLpc.lpcOrder, 1, 100000);
    const int n = wholeOption(args, "n", static_cast<int>(ch.m_rateHz * 0.001 * order), 1, 10000000);
    const double pre = args.number("pre-emphasis", 0.0);
    const std::string window = args.text("window", "hamming");
    if (window != "hamming" && window != "rect") throw UsageError("--window takes hamming or rect");

    std::vector<double> block(static_cast<std::size_t>(std::max(n + 6, 256)), 0.0);
    const long first = static_cast<long>(cursor);
    const long stop = std::min(static_cast<long>(sampleCount(ch)), first + n + 5);
    for (long j = first; j < stop; ++j)
        block[static_cast<std::size_t>(j - first)] = ch.m_samples[static_cast<std::size_t>(j)];
    AnalysisWorkspace& ws = defaultWorkspace();
    LpcSpectrum(block.data(), order, n, pre, window == "hamming" ? 1 : 0, 0, 0, 0, ch.m_rateHz, 1, 0, ws);
    const LpcRecord& rec = ws.m_lpc;

    TableWriter t(out);
    t.text("reflection").line().text("k\tvalue").line();
    for (int k = 1; k <= rec.order; ++k) t.integer(k).tab().number(rec.reflection[k]).line();
    t.text("predictor").line().text("i\tvalue").line();
    for (int i = 0; i <= rec.order; ++i) t.integer(i).tab().number(rec.predictor[i]).line();
    t.text("energy").line().text("value").line().number(rec.energy).line();
    t.text("formant").line().text("frequency_hz\tbandwidth_hz").line();
    if (const FormantRecord* f = LastFormants(ws))
        for (int i = 0; i < f->formantCount; ++i) t.number(f->frequency[i]).tab().number(f->bandwidth[i]).line();
    t.text("envelope").line().text("bin\tdb").line();
    for (int k = 0; k < kEnvelopePoints / 2; ++k) t.integer(k).tab().number(block[static_cast<std::size_t>(k)]).line();
    return 0;
}

int runPitch(const CliArgs& args, CKestruneDoc& doc, std::ostream& out) {
    requireFiles(args, 1);
    const CChannel& ch = analysedChannel(doc, args);
    PitchSettings s;
    const std::string method = args.text("method", "cepstral");
    if (method == "cepstral")
        s.method = PitchMethod::Cepstral;
    else if (method == "autocorrelation")
        s.method = PitchMethod::AutoCorrelation;
    else
        throw UsageError("--method takes cepstral or autocorrelation");
    s.windowMs = wholeOption(args, "window-ms", s.windowMs, 1, 100000);
    s.stepMs = wholeOption(args, "step-ms", s.stepMs, 1, 100000);
    s.deviationHz = wholeOption(args, "deviation-hz", s.deviationHz, 0, 1000000);
    s.thresholdPct = wholeOption(args, "threshold-pct", s.thresholdPct, 0, 100);
    s.lowHz = wholeOption(args, "low-hz", s.lowHz, 1, 1000000);
    s.highHz = wholeOption(args, "high-hz", s.highHz, 1, 1000000);
    if (s.highHz <= s.lowHz) throw UsageError("--high-hz must be above --low-hz");
    PitchTrackInput in;
    in.samples = ch.m_samples.data();
    in.sampleCount = sampleCount(ch);
    rangeOf(doc, args, ch, in.startSample, in.endSample);
    in.rateHz = ch.m_rateHz;
    in.offset = ch.m_reference;
    PitchTrackResult r;
    if (ComputePitchTrack(in, s, r) != AnalysisStatus::Ok) fail("Error in Pitch routine");
    const bool raw = args.flag("raw");
    const double msPerSample = ch.msPerSample();
    TableWriter t(out);
    t.text(raw ? "frame\ttime_ms\tf0_hz\traw_hz" : "frame\ttime_ms\tf0_hz").line();
    for (int i = 0; i < r.frameCount; ++i) {
        const auto k = static_cast<std::size_t>(i);
        t.integer(i).tab().number((i * r.stepSamples + in.startSample) * msPerSample).tab().number(r.track[k]);
        if (raw) t.tab().number(r.raw[k]);
        t.line();
    }
    return 0;
}

int runSpectrogram(const CliArgs& args, CKestruneDoc& doc, std::ostream& out) {
    requireFiles(args, 1);
    const CChannel& ch = analysedChannel(doc, args);
    if (!args.has("columns") || !args.has("points")) throw UsageError("spectrogram needs --columns C --points P");
    const int columns = wholeOption(args, "columns", 0, 1, 10000000);
    const int points = wholeOption(args, "points", 0, 1, 100000);
    SpectrogramSettings s = AnalysisSettings::defaultsForRate(ch.m_rateHz).spectrogram;
    s.fftSizeIndex = wholeOption(args, "fft-index", s.fftSizeIndex, 0, 7);
    s.frequencyRangeHz = wholeOption(args, "range-hz", s.frequencyRangeHz, 1, 10000000);
    s.dynamicRangeDb = wholeOption(args, "dynamic-db", s.dynamicRangeDb, 1, 100000);
    s.preEmphasis = args.number("pre-emphasis", s.preEmphasis);
    s.lpcOrder = wholeOption(args, "order", s.lpcOrder, 1, 400);
    const bool formants = args.flag("formants");
    SpectrogramInput in;
    in.samples = ch.m_samples.data();
    in.sampleCount = sampleCount(ch);
    rangeOf(doc, args, ch, in.startSample, in.endSample);
    in.rateHz = ch.m_rateHz;
    // The levels go to the files asked for, and the table to standard output
    // when no file takes them (or --output table asks for it all the same);
    // --output none writes nothing there.
    const std::string output = args.text("output", "table");
    if (output != "table" && output != "none") throw UsageError("--output takes table or none");
    SpectrogramResult r;
    if (ComputeSpectrogram(in, s, columns, points, formants, r) != AnalysisStatus::Ok)
        fail("Could not allocate enough memory for this operation");

    if (args.has("png") && !WriteSpectrogramPng(args.text("png"), r, s.dynamicRangeDb, s.frequencyRangeHz, formants))
        fail("Error in save operation.");
    if (args.has("npy") && !WriteSpectrogramNpy(args.text("npy"), r)) fail("Error in save operation.");
    const bool table = args.has("output") ? output == "table" : !args.has("png") && !args.has("npy");
    if (!table) return 0;
    TableWriter t(out);
    t.text("column");
    for (int k = 0; k < points; ++k) t.tab().text("level_").integer(k);
    t.line();
    for (int c = 0; c < columns; ++c) {
        t.integer(c);
        const double* col = r.column(c);
        for (int k = 0; k < points; ++k) t.tab().number(col[k]);
        t.line();
    }
    if (formants) {
        t.text("frame\tF1\tF2\tF3\tF4\tF5").line();
        for (int c = 0; c < columns; ++c) {
            t.integer(c);
            for (const std::int16_t f : r.formants[static_cast<std::size_t>(c)]) t.tab().integer(f);
            t.line();
        }
    }
    return 0;
}

int runIntensity(const CliArgs& args, CKestruneDoc& doc, std::ostream& out) {
    requireFiles(args, 1);
    const int index = chosenChannel(doc, args);
    CChannel& ch = doc.channel(index);
    requireAnalysable(ch, index);
    ch.m_intensityWindowMs = args.number("window-ms", ch.m_intensityWindowMs);
    ch.m_intensityStepMs = args.number("step-ms", ch.m_intensityStepMs);
    if (!(ch.m_intensityWindowMs > 0.0) || !(ch.m_intensityStepMs > 0.0))
        throw UsageError("--window-ms and --step-ms must be above 0");
    if (!(ch.m_intensityStepMs * ch.m_rateHz * 0.001 >= 1e-3))
        throw UsageError("--step-ms must be at least a thousandth of a sample at the channel's rate");
    if (args.flag("normalise")) ch.m_normalise = 1;
    const int every = wholeOption(args, "every", 1, 1, 2000000000);
    if (const std::string problem = intensityWorkProblem(ch, index); !problem.empty()) fail(problem);
    ch.m_intensityShown = 1;
    if (!ComputeIntensity(ch)) fail(kIntensityFailedText);
    TableWriter t(out);
    t.text("minimum\tmaximum").line().number(ch.m_intensityMin).tab().number(ch.m_intensityMax).line();
    t.text("sample\tvalue").line();
    for (std::size_t i = 0; i < ch.m_intensity.size(); i += static_cast<std::size_t>(every))
        t.integer(static_cast<long>(i)).tab().number(ch.m_intensity[i]).line();
    return 0;
}

int runSmooth(const CliArgs& args, CKestruneDoc& doc) {
    requireFiles(args, 2);
    if (!args.has("length")) throw UsageError("smooth needs --length M");
    const int length = wholeOption(args, "length", 1, 1, 2000000000);
    for (int i = 0; i < doc.channelCount(); ++i) {
        doc.channel(i).m_smoothingOn = 1;
        doc.channel(i).m_smoothingLength = length;
    }
    if (SmoothAllChannels(doc) != AnalysisStatus::Ok) fail(kSmoothFailedText);
    doc.setModified(true);
    doc.setFileTypeIndex(1);
    if (!doc.writeFile(args.positional[1], false)) fail("Error in save operation.");
    return 0;
}

}  // namespace

const std::set<std::string>& analysisValueOptions() {
    static const std::set<std::string> names = {
        "at-ms",        "from-ms", "to-ms",  "fft-index", "order",        "step-ms",       "n",
        "pre-emphasis", "window",  "method", "window-ms", "deviation-hz", "threshold-pct", "low-hz",
        "high-hz",      "columns", "points", "range-hz",  "dynamic-db",   "png",           "every",
        "length",       "channel", "npy",    "output"};
    return names;
}

bool isAnalysisCommand(const std::string& command) {
    return command == "spectrum" || command == "lpc" || command == "pitch" || command == "spectrogram" ||
           command == "intensity" || command == "smooth";
}

int runAnalysisCommand(const CliArgs& args, CKestruneDoc& doc, std::ostream& out) {
    if (args.command == "spectrum") return runSpectrum(args, doc, out);
    if (args.command == "lpc") return runLpc(args, doc, out);
    if (args.command == "pitch") return runPitch(args, doc, out);
    if (args.command == "spectrogram") return runSpectrogram(args, doc, out);
    if (args.command == "intensity") return runIntensity(args, doc, out);
    if (args.command == "smooth") return runSmooth(args, doc);
    throw UsageError("unknown command '" + args.command + "'");
}

const char* analysisUsage() {
    return "       spectrum FILE --at-ms T | --from-ms A --to-ms B [--fft-index I --order P --step-ms S]\n"
           "       lpc FILE --at-ms T [--order P] [--n N] [--pre-emphasis E] [--window hamming|rect]\n"
           "       pitch FILE [--from-ms A --to-ms B] [--method cepstral|autocorrelation] [--window-ms 35 "
           "--step-ms 10 --deviation-hz 100 --threshold-pct 1 --low-hz 50 --high-hz 500] [--raw]\n"
           "       spectrogram FILE --columns C --points P [--from-ms A --to-ms B] [--fft-index I --range-hz R "
           "--dynamic-db D --pre-emphasis E] [--formants --order P] [--png OUT] [--npy OUT] [--output table|none]\n"
           "       intensity FILE [--window-ms 20 --step-ms 10 --normalise] [--every K]\n"
           "       smooth IN OUT --length M\n"
           "       analysis options: --channel N (1-based; default the audio channel)";
}

}  // namespace sonmetra::cli
