#include "SpectrumAnalysis.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

#include "analysis/FftSpectrum.h"
#include "document/CChannel.h"
#include "document/CKestruneDoc.h"

double displayRangeHz(const sonmetra::FftLpcSettings& settings, double rateHz) {
    return std::clamp(static_cast<double>(settings.frequencyRangeHz), 1.0, std::max(1.0, rateHz / 2.0));
}

int appliedPointsOf(const sonmetra::FftLpcSettings& settings, double rateHz) {
    const int n = sonmetra::FftSizeOfIndex(std::clamp(settings.fftSizeIndex, 0, 7));
    const int longestMs = static_cast<int>(n * 1000.0 / rateHz);
    if (settings.appliedWindowMs >= longestMs) return n;
    return std::clamp(static_cast<int>(settings.appliedWindowMs * rateHz / 1000.0), 2, n);
}

double windowGainDb(int appliedPoints) { return 20.0 * std::log10(0.27 * appliedPoints); }

int SpectrumResult::nearestBin(double hz) const {
    if (levelDb.empty()) return 0;
    return std::clamp(static_cast<int>(std::lround(hz / binHz())), 0, bins() - 1);
}

double SpectrumResult::levelAt(double hz) const {
    if (bins() < 2) return levelDb.empty() ? 0.0 : levelDb[0];
    const double at = std::clamp(hz / binHz(), 0.0, bins() - 1.0);
    const int k = std::min(static_cast<int>(at), bins() - 2);
    const double t = at - k;
    return levelDb[static_cast<std::size_t>(k)] * (1.0 - t) + levelDb[static_cast<std::size_t>(k) + 1] * t;
}

double SpectrumResult::inverseFilterDb(double hz) const {
    // A(e^jω) = Σ a[k]·e^(−jωk), by a rotating phasor.
    const double omega = 2.0 * std::numbers::pi * hz / rateHz;
    const std::complex<double> step = std::polar(1.0, -omega);
    std::complex<double> phasor = 1.0, sum = 0.0;
    for (const double a : predictor) {
        sum += a * phasor;
        phasor *= step;
    }
    const double power = std::norm(sum);
    return power == 0.0 ? 0.0 : -10.0 * std::log10(power);
}

sonmetra::AnalysisStatus SpectrumAnalysis::run(const sonmetra::CChannel& audio, double startSample, double endSample,
                                               const sonmetra::FftLpcSettings& settings,
                                               const sonmetra::AnalysisProgress& progress) {
    const double count = std::min(audio.m_sampleCount, static_cast<double>(audio.m_samples.size()));
    sonmetra::SpectrumWindowInput in;
    in.samples = audio.m_samples.data();
    in.sampleCount = count;
    in.startSample = std::clamp(startSample, 0.0, count);
    in.endSample = std::clamp(endSample, in.startSample, count);
    in.rateHz = audio.m_rateHz;
    sonmetra::SpectrumWindowOptions options;
    options.appliedPoints = appliedPointsOf(settings, in.rateHz);

    sonmetra::SpectrumWindowState state = m_state;  // F and BW carry over; the rest is replaced
    const sonmetra::AnalysisStatus status =
        sonmetra::ComputeSpectrumWindow(in, settings, options, state, progress, m_workspace);
    if (status != sonmetra::AnalysisStatus::Ok) return status;
    m_state = std::move(state);

    SpectrumResult r;
    r.rateHz = in.rateHz;
    r.fftPoints = sonmetra::FftSizeOfIndex(settings.fftSizeIndex);
    r.appliedPoints = options.appliedPoints;
    r.startSample = in.startSample;
    r.endSample = in.endSample;
    r.frames = m_state.frames;
    const double gain = windowGainDb(r.appliedPoints);
    r.levelDb.reserve(m_state.spectrum.size());
    for (const double raw : m_state.spectrum) r.levelDb.push_back(raw - gain);
    const sonmetra::LpcRecord& lpc = m_workspace.m_lpc;
    r.predictor.assign(lpc.predictor, lpc.predictor + lpc.order + 1);
    r.hasEnvelope = std::all_of(r.predictor.begin(), r.predictor.end(), [](double a) { return std::isfinite(a); });
    r.formantHz = m_state.formantHz;
    r.bandwidthHz = m_state.bandwidthHz;

    if (r.hasEnvelope && !r.levelDb.empty()) {
        // Equal mean power of spectrum and envelope over bins 1 .. the range.
        const int last = std::clamp(static_cast<int>(displayRangeHz(settings, r.rateHz) / r.binHz()), 1, r.bins() - 1);
        double spectrumPower = 0.0, envelopePower = 0.0;
        for (int k = 1; k <= last; ++k) {
            spectrumPower += std::pow(10.0, r.levelDb[static_cast<std::size_t>(k)] / 10.0);
            envelopePower += std::pow(10.0, r.inverseFilterDb(k * r.binHz()) / 10.0);
        }
        const double offset = 10.0 * std::log10(spectrumPower / envelopePower);
        r.envelopeOffsetDb = std::isfinite(offset) ? offset : 0.0;
    }
    m_result = std::move(r);
    return status;
}

bool spectrumRangeOf(const sonmetra::CKestruneDoc& doc, bool average, double& startSample, double& endSample) {
    const int index = doc.audioChannelIndex();
    if (index < 0 || !doc.channel(index).present()) return false;
    const sonmetra::CChannel& audio = doc.channel(index);
    if (average) {
        startSample = std::min(audio.m_selStartSample, audio.m_selEndSample);
        endSample = std::max(audio.m_selStartSample, audio.m_selEndSample);
    } else {
        startSample = endSample = audio.m_cursorSample;
    }
    return true;
}
