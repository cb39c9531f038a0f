#include "CKestruneDoc.h"

#include <atomic>

#include "AtomicFileWriter.h"
#include "AudioRate.h"
#include "DocumentOpener.h"
#include "KvdFormat.h"
#include "MessageService.h"
#include "WavWriter.h"
#include "analysis/SampleRateRange.h"
#include "res/StringTable.h"

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

bool CKestruneDoc::writeFile(const std::string& path, bool selectionOnly) {
    return writeFileAtomically(path, [&](std::FILE* file) {
        if (m_fileTypeIndex == 2) return m_channelCount > 0 && writeWavChannel(file, m_channels[0], selectionOnly);
        return writeKvd(file, *this, selectionOnly);
    });
}

bool CKestruneDoc::saveAs(const std::string& path, int fileTypeIndex) {
    m_fileTypeIndex = fileTypeIndex;
    m_selectionFlag = 0;
    if (!writeFile(path, false)) {
        beep();
        showMessage(IDS_SAVE_ERROR);
        return false;
    }
    setPathAndTitle(path);
    m_untitledMark = 0;
    m_foreignMark = 0;
    m_modified = false;
    return true;
}

bool CKestruneDoc::save() {
    m_selectionFlag = 0;
    if (!writeFile(m_path, false)) {
        beep();
        showMessage(IDS_SAVE_ERROR);
        return false;
    }
    m_untitledMark = 0;
    m_foreignMark = 0;
    m_modified = false;
    return true;
}

bool CKestruneDoc::saveCopyAs(const std::string& path) {
    // A copy is always written in the document format, and always whole.
    const std::int32_t selection = m_selectionFlag;
    const std::int32_t type = m_fileTypeIndex;
    m_selectionFlag = 0;
    m_fileTypeIndex = 1;
    const bool ok = writeFile(path, false);
    m_selectionFlag = selection;
    m_fileTypeIndex = type;
    if (!ok) {
        beep();
        showMessage(IDS_SAVE_ERROR);
        return false;
    }
    m_foreignMark = 0;
    m_modified = false;
    return true;
}

bool CKestruneDoc::saveSelectionAs(const std::string& path) {
    const std::int32_t type = m_fileTypeIndex;
    m_fileTypeIndex = 1;
    const bool ok = writeFile(path, true);
    m_fileTypeIndex = type;
    if (!ok) {
        beep();
        showMessage(IDS_SAVE_ERROR);
        return false;
    }
    return true;
}

}  // namespace sonmetra
