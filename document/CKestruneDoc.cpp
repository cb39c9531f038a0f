#include "CKestruneDoc.h"

#include <atomic>

#include "AudioRate.h"
#include "PathNames.h"
#include "analysis/SampleRateRange.h"

namespace sonmetra {
namespace {

std::atomic<double> g_audioRate{11000.0};

}  // namespace

double audioRateInForce() { return g_audioRate.load(); }
void setAudioRateInForce(double rateHz) {
    if (rateInRange(rateHz)) g_audioRate.store(rateHz);
}

CKestruneDoc::CKestruneDoc() : m_analysis(AnalysisSettings::defaultsForRate(audioRateInForce())) {}

int CKestruneDoc::audioChannelIndex() const {
    for (int i = 0; i < m_channelCount; ++i)
        if (m_channels[static_cast<std::size_t>(i)].m_audio == 1) return i;
    return -1;
}

CChannel* CKestruneDoc::audioChannel() {
    const int i = audioChannelIndex();
    return i < 0 ? nullptr : &channel(i);
}

int CKestruneDoc::firstPresentIndex() const {
    for (int i = 0; i < m_channelCount; ++i)
        if (channel(i).present()) return i;
    return -1;
}

void CKestruneDoc::clearChannels() {
    for (auto& c : m_channels) c = CChannel();
    m_channelCount = 0;
}

void CKestruneDoc::setPathAndTitle(const std::string& path) {
    m_path = path;
    m_title = fileNameOf(path);
}

}  // namespace sonmetra
