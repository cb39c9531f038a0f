// One channel of a document: its 16-bit samples, acquisition parameters,
// calibration, name, units, labels, and the display state (visible range,
// cursor, selection) that every view of the document shares.
//
// Times are in ms from the start of the channel, sample positions are doubles
// holding whole numbers; ms = samples × (duration ÷ sample count).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "CLabel.h"
#include "SampleBlock.h"

namespace sonmetra {

struct StripRect {
    int left = 0, top = 0, right = 0, bottom = 0;
    int height() const { return bottom - top; }
    int width() const { return right - left; }
};

class CChannel {
public:
    CChannel() = default;
    virtual ~CChannel() = default;
    CChannel(const CChannel& other);
    // Deep copy of parameters, labels and samples. When memory is short it
    // shows "Error in '=' operator in CChannel class." and throws
    // UserException, leaving this channel as it was.
    CChannel& operator=(const CChannel& other);
    CChannel(CChannel&&) noexcept = default;
    CChannel& operator=(CChannel&&) noexcept = default;

    // Acquisition and file fields, in file order of meaning.
    std::int32_t m_audio = 0;  // channel kind: 1 marks the channel that carries sound
    SampleBlock m_samples;
    double m_durationMs = 0.0;
    double m_rateHz = 11025.0;
    double m_sampleCount = 0.0;
    std::int32_t m_bitsPerSample = 16;
    std::int32_t m_reservedA = 0;
    std::int32_t m_reservedB = 100;
    std::string m_name;
    std::int32_t m_number = 0;
    std::int32_t m_reservedD = 0;
    std::int32_t m_inUse = 0;
    std::int32_t m_reservedE = 0;
    std::int32_t m_reservedF = 0;
    std::int32_t m_reservedG = 0;
    std::string m_units = "mv";
    double m_gain = 8.0;
    double m_bandwidthHz = 5500.0;
    double m_reference = 0.0;  // raw level subtracted from readings
    std::int32_t m_reservedC = 0;
    double m_converterRange = 2500.0;
    double m_converterFullScale = 32768.0;
    double m_c3 = 0.0, m_c2 = 0.0, m_c1 = 1.0, m_c0 = 0.0;
    std::vector<CLabel> m_labels;  // kept in order of time

    // Display state shared by the views.
    double m_cursorSample = 0.0;
    double m_cursorMs = 0.0;
    double m_viewStartSample = 0.0;
    double m_viewEndSample = 0.0;
    double m_viewStartMs = 0.0;
    double m_viewEndMs = 0.0;
    double m_prevViewStartSample = 0.0;
    double m_prevViewEndSample = 0.0;
    double m_selStartMs = 0.0;
    double m_selEndMs = 0.0;
    double m_selStartSample = 0.0;
    double m_selEndSample = 0.0;
    double m_currentReading = 0.0;     // raw sample under the cursor, less the reference
    std::int32_t m_referenceCode = 0;  // -1, 0, 1: zero line at the bottom, middle, top of the strip
    StripRect m_strip;

    // Intensity and smoothing settings of the channel, and its intensity
    // contour (one value per sample, dB), drawn in blue over the trace.
    double m_intensityWindowMs = 20.0;
    double m_intensityStepMs = 10.0;
    std::int32_t m_normalise = 0;
    std::int32_t m_smoothingOn = 1;
    double m_smoothingLength = 5.0;
    std::vector<double> m_intensity;
    double m_intensityMin = 0.0;
    double m_intensityMax = 0.0;
    std::int32_t m_intensityValid = 0;
    std::int32_t m_intensityShown = 0;

    // A channel is shown and analysed only when it is in use and has samples.
    bool present() const { return m_inUse != 0 && m_sampleCount > 0.0 && m_durationMs > 0.0; }
    double msPerSample() const { return m_sampleCount > 0.0 ? m_durationMs / m_sampleCount : 0.0; }
    double viewLengthSamples() const { return m_viewEndSample - m_viewStartSample; }
    double viewLengthMs() const { return m_viewEndMs - m_viewStartMs; }
    double selLengthSamples() const { return m_selEndSample - m_selStartSample; }
    double selLengthMs() const { return m_selEndMs - m_selStartMs; }

    // The sample at time t (index = truncation of t × count ÷ duration), which
    // also becomes the current reading. 0 outside the samples.
    double sampleAt(double tMs);
    // Cursor by time or by sample, limited to the channel; the selection
    // collapses onto the cursor and the reading follows it.
    void setCursorTime(double tMs);
    void setCursorSample(double sample);
    // Calibrated value of a raw value v.
    double calibrated(double v) const;
    // Visible range, previous range, cursor and selection cover the whole channel.
    void resetDisplayToWhole();
    // Sets count and duration from the sample block and rate.
    void setSampleCountFromBlock();

private:
    double rawAtIndex(double index) const;
};

}  // namespace sonmetra
