#include "CChannel.h"

#include <algorithm>
#include <cmath>

#include "MessageService.h"
#include "UserException.h"
#include "res/StringTable.h"

namespace sonmetra {

CChannel::CChannel(const CChannel& other) { *this = other; }

CChannel& CChannel::operator=(const CChannel& other) {
    if (this == &other) return *this;
    try {
        // Build the copies first so that a failure leaves this channel intact.
        std::vector<CLabel> labels = other.m_labels;
        SampleBlock samples;
        if (!samples.resize(other.m_samples.size())) throw std::bad_alloc();
        std::copy(other.m_samples.begin(), other.m_samples.end(), samples.begin());
        std::vector<double> intensity = other.m_intensity;
        std::string name = other.m_name;
        std::string units = other.m_units;

        // Every plain field, then the owned parts.
        m_audio = other.m_audio;
        m_durationMs = other.m_durationMs;
        m_rateHz = other.m_rateHz;
        m_sampleCount = other.m_sampleCount;
        m_bitsPerSample = other.m_bitsPerSample;
        m_reservedA = other.m_reservedA;
        m_reservedB = other.m_reservedB;
        m_number = other.m_number;
        m_reservedD = other.m_reservedD;
        m_inUse = other.m_inUse;
        m_reservedE = other.m_reservedE;
        m_reservedF = other.m_reservedF;
        m_reservedG = other.m_reservedG;
        m_gain = other.m_gain;
        m_bandwidthHz = other.m_bandwidthHz;
        m_reference = other.m_reference;
        m_reservedC = other.m_reservedC;
        m_converterRange = other.m_converterRange;
        m_converterFullScale = other.m_converterFullScale;
        m_c3 = other.m_c3;
        m_c2 = other.m_c2;
        m_c1 = other.m_c1;
        m_c0 = other.m_c0;
        m_cursorSample = other.m_cursorSample;
        m_cursorMs = other.m_cursorMs;
        m_viewStartSample = other.m_viewStartSample;
        m_viewEndSample = other.m_viewEndSample;
        m_viewStartMs = other.m_viewStartMs;
        m_viewEndMs = other.m_viewEndMs;
        m_prevViewStartSample = other.m_prevViewStartSample;
        m_prevViewEndSample = other.m_prevViewEndSample;
        m_selStartMs = other.m_selStartMs;
        m_selEndMs = other.m_selEndMs;
        m_selStartSample = other.m_selStartSample;
        m_selEndSample = other.m_selEndSample;
        m_currentReading = other.m_currentReading;
        m_referenceCode = other.m_referenceCode;
        m_strip = other.m_strip;
        m_intensityWindowMs = other.m_intensityWindowMs;
        m_intensityStepMs = other.m_intensityStepMs;
        m_normalise = other.m_normalise;
        m_smoothingOn = other.m_smoothingOn;
        m_smoothingLength = other.m_smoothingLength;
        m_intensityMin = other.m_intensityMin;
        m_intensityMax = other.m_intensityMax;
        m_intensityValid = other.m_intensityValid;
        m_intensityShown = other.m_intensityShown;

        m_name = std::move(name);
        m_units = std::move(units);
        m_labels = std::move(labels);
        m_samples = std::move(samples);
        m_intensity = std::move(intensity);
    } catch (const std::bad_alloc&) {
        showMessage(IDS_CHANNEL_COPY_ERROR);
        throw UserException();
    }
    return *this;
}

double CChannel::rawAtIndex(double index) const {
    if (m_samples.empty()) return 0.0;
    const double last = static_cast<double>(m_samples.size() - 1);
    const double i = std::clamp(index, 0.0, last);
    return static_cast<double>(m_samples[static_cast<std::size_t>(i)]);
}

double CChannel::sampleAt(double tMs) {
    if (!(m_durationMs > 0.0)) return 0.0;
    const double index = std::trunc(tMs * m_sampleCount / m_durationMs);
    m_currentReading = rawAtIndex(index);
    return m_currentReading;
}

void CChannel::setCursorTime(double tMs) {
    if (!(m_durationMs > 0.0)) return;
    m_cursorSample = std::clamp(tMs * m_sampleCount / m_durationMs, 0.0, m_sampleCount);
    m_cursorMs = std::clamp(tMs, 0.0, m_durationMs);
    m_currentReading = rawAtIndex(std::trunc(m_cursorSample)) - m_reference;
    m_selStartMs = m_selEndMs = m_cursorMs;
    m_selStartSample = m_selEndSample = m_cursorSample;
}

void CChannel::setCursorSample(double sample) {
    if (!(m_sampleCount > 0.0)) return;
    setCursorTime(sample * m_durationMs / m_sampleCount);
}

double CChannel::calibrated(double v) const {
    const double x = (m_converterRange / m_converterFullScale) * v / m_gain;
    return m_c3 * x * x * x + m_c2 * x * x + m_c1 * x + m_c0;
}

void CChannel::resetDisplayToWhole() {
    m_viewStartSample = m_prevViewStartSample = 0.0;
    m_viewEndSample = m_prevViewEndSample = m_sampleCount;
    m_viewStartMs = 0.0;
    m_viewEndMs = m_durationMs;
    m_cursorSample = m_cursorMs = 0.0;
    m_selStartSample = m_selEndSample = 0.0;
    m_selStartMs = m_selEndMs = 0.0;
}

void CChannel::setSampleCountFromBlock() {
    m_sampleCount = static_cast<double>(m_samples.size());
    m_durationMs = m_rateHz > 0.0 ? m_sampleCount * 1000.0 / m_rateHz : 0.0;
}

}  // namespace sonmetra
