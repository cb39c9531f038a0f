// Saving a document: the document format or a WAV file of its first
// channel, written whole or as its selection. Kept apart from the document's
// other members because the writers know the document's types, and the
// document itself needs to know nothing of them.
#include "AtomicFileWriter.h"
#include "CKestruneDoc.h"
#include "KvdFormat.h"
#include "MessageService.h"
#include "WavWriter.h"
#include "res/StringTable.h"

namespace sonmetra {

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
