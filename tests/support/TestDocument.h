// Documents built in memory for the tests and benchmarks: a channel slot
// filled with known samples, in use, its count, duration and display
// following from the samples. No Qt, so that every layer's tests can use it.
#pragma once

#include <cstdint>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "document/CKestruneDoc.h"

namespace sonmetra::test {

// Fills channel slot `index` of doc with `count` samples, sampleAt(0),
// sampleAt(1), ... called once each in that order (so that a generator may
// keep state), at rateHz; the channel is in use, 16-bit, named `name`, the
// sound channel when `audio` holds, and shows the whole of itself. The document
// then holds data and counts at least index + 1 channels. Throws
// std::bad_alloc when the samples do not fit in memory.
template <class SampleAt>
void fillChannel(CKestruneDoc& doc, int index, const std::string& name, double rateHz, std::size_t count,
                 SampleAt sampleAt, bool audio = false) {
    CChannel& ch = doc.channel(index);
    ch.m_name = name;
    ch.m_rateHz = rateHz;
    ch.m_audio = audio ? 1 : 0;
    ch.m_inUse = 1;
    ch.m_bitsPerSample = 16;
    if (!ch.m_samples.resize(count)) throw std::bad_alloc();
    std::int16_t* p = ch.m_samples.data();
    for (std::size_t i = 0; i < count; ++i) p[i] = static_cast<std::int16_t>(sampleAt(i));
    ch.setSampleCountFromBlock();
    ch.resetDisplayToWhole();
    if (doc.channelCount() <= index) doc.setChannelCount(index + 1);
    doc.setHoldsData(true);
}

// The same with the samples given.
inline void fillChannel(CKestruneDoc& doc, int index, const std::string& name, double rateHz,
                        const std::vector<std::int16_t>& samples, bool audio = false) {
    fillChannel(
        doc, index, name, rateHz, samples.size(), [&samples](std::size_t i) { return samples[i]; }, audio);
}

// The labels of a channel as (time in ms, text), in their order.
inline std::vector<std::pair<double, std::string>> labelsOf(const CChannel& c) {
    std::vector<std::pair<double, std::string>> v;
    for (const CLabel& l : c.m_labels) v.emplace_back(l.timeMs, l.text);
    return v;
}

}  // namespace sonmetra::test
