// Tracks and spectrograms shared among threads give what one thread taking
// the frames in order gives, to the bit, and leave the caller's workspace in
// the same state: on espeak-ng speech and on silence, clipping, very short
// ranges and ranges that end inside a frame, from clean and from used
// workspaces. Also progress and cancellation across threads.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "analysis/CepstralPitch.h"
#include "analysis/FrameIntensity.h"
#include "analysis/PitchTrack.h"
#include "analysis/Spectrogram.h"

namespace sonmetra {
namespace {

// espeak-ng's speech (22050 Hz, 16 bit) read straight from its standard output.
const std::vector<std::int16_t>& speech() {
    static const std::vector<std::int16_t> samples = [] {
        std::vector<std::int16_t> s;
        std::FILE* p = popen(
            "espeak-ng --stdout 'The north wind and the sun were disputing which was the stronger.' 2>/dev/null", "r");
        if (!p) return s;
        std::vector<unsigned char> bytes;
        unsigned char buf[65536];
        for (std::size_t got; (got = std::fread(buf, 1, sizeof buf, p)) > 0;) bytes.insert(bytes.end(), buf, buf + got);
        pclose(p);
        if (bytes.size() < 44 || std::memcmp(bytes.data() + 36, "data", 4) != 0) return s;
        for (std::size_t i = 44; i + 1 < bytes.size(); i += 2)
            s.push_back(static_cast<std::int16_t>(bytes[i] | bytes[i + 1] << 8));
        return s;
    }();
    return samples;
}

// Every other sample of the speech: the same words at 11025 Hz.
std::vector<std::int16_t> halved(const std::vector<std::int16_t>& s) {
    std::vector<std::int16_t> h;
    for (std::size_t i = 0; i < s.size(); i += 2) h.push_back(s[i]);
    return h;
}

// A square wave at full scale, both extremes held for 40 samples.
std::vector<std::int16_t> clipped(std::size_t n) {
    std::vector<std::int16_t> s(n);
    for (std::size_t i = 0; i < n; ++i) s[i] = (i / 40) % 2 ? std::int16_t{-32768} : std::int16_t{32767};
    return s;
}

bool sameBits(const double* a, const double* b, std::size_t n) { return std::memcmp(a, b, n * sizeof(double)) == 0; }

template <class V>
bool sameBits(const V& a, const V& b) {
    return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(a[0])) == 0);
}

// Every buffer a later call may read: the same bits on both workspaces.
void expectSameState(const AnalysisWorkspace& a, const AnalysisWorkspace& b, const std::string& what) {
    EXPECT_TRUE(sameBits(a.m_re, b.m_re)) << what;
    EXPECT_TRUE(sameBits(a.m_im, b.m_im)) << what;
    EXPECT_TRUE(sameBits(a.m_pitchFrame, b.m_pitchFrame)) << what;
    EXPECT_TRUE(sameBits(a.m_cepstrum, b.m_cepstrum)) << what;
    EXPECT_TRUE(sameBits(a.m_fine, b.m_fine)) << what;
    EXPECT_TRUE(sameBits(a.m_pitchY2, b.m_pitchY2)) << what;
    EXPECT_TRUE(sameBits(a.m_splineY2, b.m_splineY2)) << what;
    EXPECT_TRUE(sameBits(a.m_acRe, b.m_acRe)) << what;
    EXPECT_EQ(a.m_lastFormants == nullptr, b.m_lastFormants == nullptr) << what;
    EXPECT_EQ(a.m_lpc.order, b.m_lpc.order) << what;
    EXPECT_TRUE(sameBits(a.m_lpc.predictor, b.m_lpc.predictor, kMaxLpcOrder + 1)) << what;
    EXPECT_TRUE(sameBits(a.m_lpc.reflection, b.m_lpc.reflection, kMaxLpcOrder + 1)) << what;
    EXPECT_TRUE(sameBits(&a.m_lpc.energy, &b.m_lpc.energy, 1)) << what;
    EXPECT_EQ(a.m_formants.quadraticCount, b.m_formants.quadraticCount) << what;
    EXPECT_EQ(a.m_formants.formantCount, b.m_formants.formantCount) << what;
    EXPECT_TRUE(sameBits(a.m_formants.p1, b.m_formants.p1, kMaxQuadratics)) << what;
    EXPECT_TRUE(sameBits(a.m_formants.frequency, b.m_formants.frequency, kMaxQuadratics)) << what;
    EXPECT_TRUE(sameBits(a.m_formants.bandwidth, b.m_formants.bandwidth, kMaxQuadratics)) << what;
}

PitchTrackInput pitchInput(const std::vector<std::int16_t>& s, double rate, double start, double end) {
    PitchTrackInput in;
    in.samples = s.data();
    in.sampleCount = static_cast<double>(s.size());
    in.startSample = start;
    in.endSample = end;
    in.rateHz = rate;
    in.offset = 3.0;
    return in;
}

// Leaves a workspace the way earlier, different tracks leave it: another
// window and F0 range, whose frame array (with the part short end frames
// copied) and fine cepstrum entries stay behind.
void dirty(AnalysisWorkspace& ws) {
    static const std::vector<std::int16_t> h = halved(speech());
    PitchSettings other;
    other.windowMs = 60;
    other.stepMs = 3;
    other.lowHz = 40;
    other.highHz = 620;
    int L = 0, n = 0;
    PitchWindowSize(other, 11025.0, L, n);
    PitchTrackResult r;
    for (const double end : {5512.0, L + 60.0}) {
        PitchTrackInput in = pitchInput(h, 11025.0, 0, end);
        in.threads = 1;
        ASSERT_EQ(ComputePitchTrack(in, other, r, {}, ws), AnalysisStatus::Ok);
    }
    ASSERT_GT(r.frameCount, 0);
}

struct PitchCase {
    std::string name;
    const std::vector<std::int16_t>* samples;
    double rate, start, end;
    PitchSettings settings;
};

// One thread against several, on clean and on used workspaces, both methods.
void expectSamePitch(const PitchCase& c) {
    for (const PitchMethod method : {PitchMethod::Cepstral, PitchMethod::AutoCorrelation}) {
        for (const bool used : {false, true}) {
            PitchSettings s1 = c.settings;
            s1.method = method;
            AnalysisWorkspace ws1;
            if (used) dirty(ws1);
            PitchTrackInput in = pitchInput(*c.samples, c.rate, c.start, c.end);
            in.threads = 1;
            PitchTrackResult one;
            const AnalysisStatus status = ComputePitchTrack(in, s1, one, {}, ws1);
            if (method == PitchMethod::Cepstral && status == AnalysisStatus::Ok) {
                // The track's estimates, which spare most frames the complete
                // workspace, are the plain estimator's frame after frame.
                AnalysisWorkspace plain;
                if (used) dirty(plain);
                PitchSettings s0 = c.settings;
                int L = 0, n = 0;
                PitchWindowSize(s0, c.rate, L, n);
                std::vector<double> raw(static_cast<std::size_t>(one.frameCount));
                for (int i = 0; i < one.frameCount; ++i)
                    raw[static_cast<std::size_t>(i)] =
                        CepstralPitch(in.samples, i * one.stepSamples + in.startSample, in.endSample - in.startSample,
                                      c.rate, s0.lowHz, s0.highHz, n, L, plain);
                EXPECT_TRUE(sameBits(raw, one.raw)) << c.name << (used ? " used" : " clean");
                expectSameState(ws1, plain, c.name + " plain estimator");
            }
            for (const int threads : {2, 3, 5}) {
                const std::string what = c.name + (method == PitchMethod::Cepstral ? " cepstral" : " autocorrelation") +
                                         (used ? " used" : " clean") + " threads " + std::to_string(threads);
                PitchSettings s2 = c.settings;
                s2.method = method;
                AnalysisWorkspace ws2;
                if (used) dirty(ws2);
                in.threads = threads;
                PitchTrackResult many;
                ASSERT_EQ(ComputePitchTrack(in, s2, many, {}, ws2), status) << what;
                EXPECT_EQ(many.frameCount, one.frameCount) << what;
                EXPECT_TRUE(sameBits(many.raw, one.raw)) << what;
                EXPECT_TRUE(sameBits(many.track, one.track)) << what;
                EXPECT_EQ(s2.windowMs, s1.windowMs) << what;
                expectSameState(ws2, ws1, what);
            }
        }
    }
}

TEST(ParallelPitch, SpeechGivesTheSameTrackToTheBit) {
    const auto& s = speech();
    ASSERT_GT(s.size(), 44100u) << "espeak-ng gave no speech";
    const auto h = halved(s);
    const double n = static_cast<double>(s.size()), hn = static_cast<double>(h.size());
    std::vector<PitchCase> cases = {
        {"whole, 22050 Hz", &s, 22050.0, 0, n, {}},
        {"whole, 11025 Hz", &h, 11025.0, 0, hn, {}},
        // Ends inside a frame: the range is not a whole number of steps.
        {"inside, ending within a frame", &h, 11025.0, 1234.5, hn - 777.25, {}},
        // Starts beyond its own length: every frame takes the short copy,
        // which reads nothing, and all of them analyse the block left before.
        {"late selection", &h, 11025.0, hn * 0.6, hn * 0.9, {}},
    };
    for (const auto& c : cases) expectSamePitch(c);
}

TEST(ParallelPitch, ShortRangesWhoseEndFramesCopyPartOfTheirWindow) {
    const auto h = halved(speech());
    ASSERT_GT(h.size(), 22050u);
    PitchSettings fine;  // 1 ms steps: dozens of frames in a range of a window or two
    fine.stepMs = 1;
    int L = 0, n = 0;
    PitchWindowSize(fine, 11025.0, L, n);
    std::vector<PitchCase> cases;
    // Below 2L + 10 samples the end frames copy part of their window and keep
    // the rest from the frames before; below L + 5 no frame copies a whole
    // window and the block starts as the workspace held it.
    // With L + 446 samples the last whole frame (frame 40, at 441.0) starts on
    // a whole sample and copies L values; x[L + 1] stays from frame 39.
    for (const double length : {L - 40.0, L + 4.0, L + 60.5, L + 446.0, 2.0 * L + 9.0, 2.0 * L + 200.0})
        cases.push_back({"length " + std::to_string(length), &h, 11025.0, 0.0, length, fine});
    for (const double length : {0.0, 12.0, 23.0, 50.0})  // 0, 1, 2 and 4 frames
        cases.push_back({"frames of " + std::to_string(length), &h, 11025.0, 500.0, 500.0 + length, fine});
    // At 10000 Hz every step is 10 samples and every position a whole number:
    // no whole frame copies L + 1 samples.
    PitchWindowSize(fine, 10000.0, L, n);
    for (const double length : {L + 4.0, L + 300.0, 2.0 * L + 100.0})
        cases.push_back({"whole positions, length " + std::to_string(length), &h, 10000.0, 0.0, length, fine});
    for (const auto& c : cases) expectSamePitch(c);
}

TEST(ParallelPitch, SilenceAndClipping) {
    const std::vector<std::int16_t> silence(40000, 0);
    const auto square = clipped(40000);
    std::vector<std::int16_t> mixed = halved(speech());
    for (std::size_t i = 5000; i < 9000 && i < mixed.size(); ++i) mixed[i] = 0;
    for (std::size_t i = 12000; i < 15000 && i < mixed.size(); ++i) mixed[i] = i % 50 < 25 ? 32767 : -32768;
    const std::vector<PitchCase> cases = {
        {"silence", &silence, 11025.0, 0, 40000, {}},
        {"clipping", &square, 11025.0, 0, 40000, {}},
        {"speech with silence and clipping", &mixed, 11025.0, 0, static_cast<double>(mixed.size()), {}},
    };
    for (const auto& c : cases) expectSamePitch(c);
}

// The track's last steps in one pass give what CleanPitchTrack, FrameIntensity
// and the gate give one after the other.
TEST(ParallelPitch, CleaningAndGateMatchTheirRoutines) {
    const auto h = halved(speech());
    for (const int threads : {1, 3}) {
        PitchSettings s;
        PitchTrackInput in = pitchInput(h, 11025.0, 100.5, static_cast<double>(h.size()));
        in.threads = threads;
        PitchTrackResult r;
        ASSERT_EQ(ComputePitchTrack(in, s, r), AnalysisStatus::Ok);
        ASSERT_GT(r.frameCount, 100);
        std::vector<double> track(r.frameCount), power(r.frameCount);
        CleanPitchTrack(r.raw.data(), track.data(), r.frameCount, s.deviationHz);
        double minimum = 0, maximum = 0;
        FrameIntensity(h.data(), power.data(), minimum, maximum, in.offset, in.startSample, r.stepSamples,
                       r.stepSamples, r.frameCount, 0, 1);
        for (int i = 0; i < r.frameCount; ++i)
            if (power[i] <= maximum * s.thresholdPct * 0.01) track[i] = 0.0;
        EXPECT_TRUE(sameBits(track.data(), r.track.data(), track.size())) << threads;
        EXPECT_GT(std::count_if(track.begin(), track.end(), [](double v) { return v > 0.0; }), 20);
    }
}

TEST(ParallelPitch, ProgressNeverGoesBackAndCancelStopsEveryThread) {
    const auto h = halved(speech());
    PitchSettings s;
    PitchTrackInput in = pitchInput(h, 11025.0, 0, static_cast<double>(h.size()));
    in.threads = 4;
    PitchTrackResult r;
    int last = 0, calls = 0, reportedTotal = 0;
    ASSERT_EQ(ComputePitchTrack(in, s, r,
                                [&](int done, int total) {
                                    EXPECT_GE(done, last);
                                    last = done;
                                    reportedTotal = total;
                                    ++calls;
                                    return true;
                                }),
              AnalysisStatus::Ok);
    EXPECT_EQ(reportedTotal, r.frameCount);
    EXPECT_EQ(last, r.frameCount);
    EXPECT_GT(calls, 10);

    // The answer false is the last call; the result is empty.
    int callsAfter = 0;
    bool cancelled = false;
    const auto status = ComputePitchTrack(in, s, r, [&](int done, int) {
        callsAfter += cancelled;
        cancelled = done >= 40;
        return !cancelled;
    });
    EXPECT_EQ(status, AnalysisStatus::Cancelled);
    EXPECT_TRUE(cancelled);
    EXPECT_EQ(callsAfter, 0);
    EXPECT_TRUE(r.track.empty());
}

SpectrogramInput spectrogramInput(const std::vector<std::int16_t>& s, double rate, double start, double end) {
    SpectrogramInput in;
    in.samples = s.data();
    in.sampleCount = static_cast<double>(s.size());
    in.startSample = start;
    in.endSample = end;
    in.rateHz = rate;
    return in;
}

void expectSameSpectrogram(const std::string& name, const SpectrogramInput& base, const SpectrogramSettings& settings,
                           int columns, int points) {
    for (const bool formants : {false, true}) {
        for (const bool used : {false, true}) {
            AnalysisWorkspace ws1;
            if (used) dirty(ws1);
            SpectrogramInput in = base;
            in.threads = 1;
            SpectrogramResult one;
            const AnalysisStatus status = ComputeSpectrogram(in, settings, columns, points, formants, one, {}, ws1);
            for (const int threads : {2, 4}) {
                const std::string what = name + (formants ? " formants" : "") + (used ? " used" : " clean") +
                                         " threads " + std::to_string(threads);
                AnalysisWorkspace ws2;
                if (used) dirty(ws2);
                in.threads = threads;
                SpectrogramResult many;
                ASSERT_EQ(ComputeSpectrogram(in, settings, columns, points, formants, many, {}, ws2), status) << what;
                EXPECT_TRUE(sameBits(many.levels, one.levels)) << what;
                EXPECT_EQ(many.formants, one.formants) << what;
                EXPECT_EQ(many.formantsFound, one.formantsFound) << what;
                expectSameState(ws2, ws1, what);
            }
            // Into a result that held other levels of the same size: the
            // memory is reused as it stands, and every level is made afresh.
            AnalysisWorkspace ws3;
            if (used) dirty(ws3);
            in.threads = 2;
            SpectrogramResult reused;
            reused.levels.assign(one.levels.size(), std::numeric_limits<double>::quiet_NaN());
            const double* memory = reused.levels.data();
            const std::string what = name + (formants ? " formants" : "") + " reused";
            ASSERT_EQ(ComputeSpectrogram(in, settings, columns, points, formants, reused, {}, ws3), status) << what;
            if (!one.levels.empty()) {
                EXPECT_EQ(reused.levels.data(), memory) << what;
            }
            EXPECT_TRUE(sameBits(reused.levels, one.levels)) << what;
        }
    }
}

TEST(ParallelSpectrogram, SpeechGivesTheSameLevelsAndFormantsToTheBit) {
    const auto h = halved(speech());
    ASSERT_GT(h.size(), 22050u);
    const double n = static_cast<double>(h.size());
    const SpectrogramSettings settings = AnalysisSettings::defaultsForRate(11025.0).spectrogram;
    // To the channel's end: the last columns' LPC copies are short and carry
    // the block over from column to column.
    // 160 points hold a column's samples: the column is made in its own place.
    expectSameSpectrogram("whole", spectrogramInput(h, 11025.0, 0, n), settings, 1500, 160);
    expectSameSpectrogram("dense end", spectrogramInput(h, 11025.0, n - 3000, n), settings, 900, 32);
    expectSameSpectrogram("inside", spectrogramInput(h, 11025.0, 333.3, n - 1500.7), settings, 700, 100);
    SpectrogramSettings wide = settings;
    wide.fftSizeIndex = 5;  // 1024 points, more than some columns can copy
    wide.preEmphasis = 0.0;
    wide.lpcOrder = 40;
    expectSameSpectrogram("wide", spectrogramInput(h, 11025.0, 0, n), wide, 600, 257);
}

TEST(ParallelSpectrogram, SilenceClippingAndTinyRanges) {
    const SpectrogramSettings settings = AnalysisSettings::defaultsForRate(11025.0).spectrogram;
    const std::vector<std::int16_t> silence(30000, 0);
    const auto square = clipped(30000);
    expectSameSpectrogram("silence", spectrogramInput(silence, 11025.0, 0, 30000), settings, 700, 64);
    expectSameSpectrogram("clipping", spectrogramInput(square, 11025.0, 0, 30000), settings, 700, 200);
    // Fewer samples than columns, a range shorter than the LPC block, and a
    // channel shorter than one transform.
    expectSameSpectrogram("tiny range", spectrogramInput(square, 11025.0, 29900, 30000), settings, 400, 16);
    const std::vector<std::int16_t> shortChannel(square.begin(), square.begin() + 100);
    expectSameSpectrogram("short channel", spectrogramInput(shortChannel, 11025.0, 0, 100), settings, 300, 16);
}

TEST(ParallelSpectrogram, CancelEmptiesTheResult) {
    const auto h = halved(speech());
    SpectrogramInput in = spectrogramInput(h, 11025.0, 0, static_cast<double>(h.size()));
    in.threads = 3;
    const SpectrogramSettings settings = AnalysisSettings::defaultsForRate(11025.0).spectrogram;
    SpectrogramResult r;
    int callsAfter = 0;
    bool cancelled = false;
    EXPECT_EQ(ComputeSpectrogram(in, settings, 5000, 64, true, r,
                                 [&](int done, int) {
                                     callsAfter += cancelled;
                                     cancelled = done >= 300;
                                     return !cancelled;
                                 }),
              AnalysisStatus::Cancelled);
    EXPECT_EQ(callsAfter, 0);
    EXPECT_TRUE(r.levels.empty());
    EXPECT_TRUE(r.formants.empty());
}

}  // namespace
}  // namespace sonmetra
