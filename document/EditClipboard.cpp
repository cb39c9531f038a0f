#include "EditClipboard.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "CKestruneDoc.h"
#include "MessageService.h"
#include "UserException.h"
#include "res/StringTable.h"

namespace sonmetra {

std::size_t wholeSample(double position, std::size_t limit) {
    if (!(position > 0.0)) return 0;  // also catches NaN
    const double t = std::trunc(position);
    return t >= static_cast<double>(limit) ? limit : static_cast<std::size_t>(t);
}

double msPerSampleOf(const CChannel& c) {
    if (c.m_sampleCount > 0.0 && c.m_durationMs > 0.0) return c.m_durationMs / c.m_sampleCount;
    return c.m_rateHz > 0.0 ? 1000.0 / c.m_rateHz : 0.0;
}

void copyChannelFields(const CChannel& from, CChannel& to) {
    to.m_audio = from.m_audio;
    to.m_durationMs = from.m_durationMs;
    to.m_rateHz = from.m_rateHz;
    to.m_sampleCount = from.m_sampleCount;
    to.m_bitsPerSample = from.m_bitsPerSample;
    to.m_reservedA = from.m_reservedA;
    to.m_reservedB = from.m_reservedB;
    to.m_name = from.m_name;
    to.m_number = from.m_number;
    to.m_reservedD = from.m_reservedD;
    to.m_inUse = from.m_inUse;
    to.m_reservedE = from.m_reservedE;
    to.m_reservedF = from.m_reservedF;
    to.m_reservedG = from.m_reservedG;
    to.m_units = from.m_units;
    to.m_gain = from.m_gain;
    to.m_bandwidthHz = from.m_bandwidthHz;
    to.m_reference = from.m_reference;
    to.m_reservedC = from.m_reservedC;
    to.m_converterRange = from.m_converterRange;
    to.m_converterFullScale = from.m_converterFullScale;
    to.m_c3 = from.m_c3;
    to.m_c2 = from.m_c2;
    to.m_c1 = from.m_c1;
    to.m_c0 = from.m_c0;
    to.m_cursorSample = from.m_cursorSample;
    to.m_cursorMs = from.m_cursorMs;
    to.m_viewStartSample = from.m_viewStartSample;
    to.m_viewEndSample = from.m_viewEndSample;
    to.m_viewStartMs = from.m_viewStartMs;
    to.m_viewEndMs = from.m_viewEndMs;
    to.m_prevViewStartSample = from.m_prevViewStartSample;
    to.m_prevViewEndSample = from.m_prevViewEndSample;
    to.m_selStartMs = from.m_selStartMs;
    to.m_selEndMs = from.m_selEndMs;
    to.m_selStartSample = from.m_selStartSample;
    to.m_selEndSample = from.m_selEndSample;
    to.m_currentReading = from.m_currentReading;
    to.m_referenceCode = from.m_referenceCode;
    to.m_strip = from.m_strip;
    to.m_intensityWindowMs = from.m_intensityWindowMs;
    to.m_intensityStepMs = from.m_intensityStepMs;
    to.m_normalise = from.m_normalise;
    to.m_smoothingOn = from.m_smoothingOn;
    to.m_smoothingLength = from.m_smoothingLength;
}

void EditClipboard::copyFrom(const CKestruneDoc& doc) {
    const int count = doc.channelCount();
    m_valid = false;
    m_channelCount = 0;
    if (m_channels.size() < static_cast<std::size_t>(CKestruneDoc::kSlots))
        m_channels.resize(static_cast<std::size_t>(CKestruneDoc::kSlots));

    for (int i = 0; i < count; ++i) {
        const CChannel& src = doc.channel(i);
        ClipChannel& clip = m_channels[static_cast<std::size_t>(i)];
        copyChannelFields(src, clip.record);

        // The range in whole samples; its ms form follows from it, so that the
        // duration of every edited channel stays count × ms per sample.
        const std::size_t first = wholeSample(src.m_selStartSample, src.m_samples.size());
        const std::size_t length = wholeSample(src.m_selEndSample - src.m_selStartSample, src.m_samples.size() - first);
        const double ratio = msPerSampleOf(src);
        clip.lengthSamples = static_cast<double>(length);
        clip.lengthMs = clip.lengthSamples * ratio;

        CChannel& rec = clip.record;
        rec.m_selStartSample = static_cast<double>(first);
        rec.m_selEndSample = static_cast<double>(first + length);
        rec.m_selStartMs = rec.m_selStartSample * ratio;
        rec.m_selEndMs = rec.m_selEndSample * ratio;
        rec.m_sampleCount = clip.lengthSamples;
        rec.m_durationMs = clip.lengthMs;
        rec.m_intensity.clear();
        rec.m_intensityValid = 0;
        rec.m_intensityShown = 0;

        rec.m_samples.clear();
        if (!rec.m_samples.resizeForOverwrite(length)) {
            beep();
            showMessage(IDS_NO_MEMORY);
            throw UserException();
        }
        if (length > 0) std::memcpy(rec.m_samples.data(), src.m_samples.data() + first, length * 2);

        rec.m_labels.clear();
        for (const CLabel& l : src.m_labels) {
            if (l.timeMs >= rec.m_selStartMs && l.timeMs < rec.m_selEndMs) {
                rec.m_labels.push_back(l);
                rec.m_labels.back().timeMs = l.timeMs - rec.m_selStartMs;
            }
        }
    }
    // Records beyond the count would only hold memory.
    for (std::size_t i = static_cast<std::size_t>(count); i < m_channels.size(); ++i) m_channels[i] = ClipChannel();

    m_channelCount = count;
    m_valid = true;
}

}  // namespace sonmetra
