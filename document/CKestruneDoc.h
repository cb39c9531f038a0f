// The signal document: 20 channel slots, the flags and marks that steer the
// save commands, and the document-level analysis settings.
//
// The document is a plain model: views and windows read it and ask it to
// change; it never knows they exist. Files are read through the reader
// sequence of DocumentOpener.h and written by KvdFormat.h.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "CChannel.h"
#include "analysis/AnalysisSettings.h"

namespace sonmetra {

class AppConfig;

// Answers of the "Generic File Selection" dialog, kept for the raw readers.
struct GenericFileSettings {
    std::int32_t headerBytes = 0;
    double rateHz = 10000.0;
    std::int32_t bits = 16;  // 8 or 16
    bool lowByteFirst = true;
};

class CKestruneDoc {
public:
    static constexpr int kSlots = 20;
    static constexpr int kMaxFileChannels = 19;

    CKestruneDoc();
    virtual ~CKestruneDoc() = default;
    CKestruneDoc(const CKestruneDoc&) = delete;
    CKestruneDoc& operator=(const CKestruneDoc&) = delete;

    // Channels.
    int channelCount() const { return m_channelCount; }
    CChannel& channel(int i) { return m_channels[static_cast<std::size_t>(i)]; }
    const CChannel& channel(int i) const { return m_channels[static_cast<std::size_t>(i)]; }
    std::array<CChannel, kSlots>& channelSlots() { return m_channels; }
    // Index of the first channel whose audio flag is 1, or -1.
    int audioChannelIndex() const;
    CChannel* audioChannel();
    // Index of the first present channel (the one the readouts follow), or -1.
    int firstPresentIndex() const;
    // Empties every slot and sets the count to 0.
    void clearChannels();
    void setChannelCount(int n) { m_channelCount = n; }

    // Flags and marks.
    bool holdsData() const { return m_holdsData != 0; }
    void setHoldsData(bool on) { m_holdsData = on ? 1 : 0; }
    bool isModified() const { return m_modified; }
    void setModified(bool on = true) { m_modified = on; }
    bool selectionFlag() const { return m_selectionFlag != 0; }
    void setSelectionFlag(bool on) { m_selectionFlag = on ? 1 : 0; }
    bool untitledMark() const { return m_untitledMark != 0; }
    bool foreignMark() const { return m_foreignMark != 0; }
    void setUntitledMark(bool on) { m_untitledMark = on ? 1 : 0; }
    void setForeignMark(bool on) { m_foreignMark = on ? 1 : 0; }
    bool needsSaveAs() const { return m_untitledMark != 0 || m_foreignMark != 0; }
    int fileTypeIndex() const { return m_fileTypeIndex; }
    void setFileTypeIndex(int i) { m_fileTypeIndex = i; }
    bool recordable() const { return m_recordable != 0; }
    void setRecordable(bool on) { m_recordable = on ? 1 : 0; }

    // Path and title (the file's name, "Untitled" until saved or opened).
    const std::string& path() const { return m_path; }
    const std::string& title() const { return m_title; }
    void setPathAndTitle(const std::string& path);
    void setTitle(const std::string& title) { m_title = title; }
    // Name of the reader that filled the document ("RVM_PC", "WAV", ...).
    const std::string& readerName() const { return m_readerName; }
    void setReaderName(const std::string& name) { m_readerName = name; }

    // Settings of the document.
    AnalysisSettings m_analysis;
    GenericFileSettings m_generic;
    double m_zoomRangeMs = 100.0;   // "From Cursor for Duration"
    double m_timeGridStepMs = 0.0;  // 0: the step follows the displayed duration

    // Saving. Each shows its own failure messages and returns false on
    // failure; a failed write never harms the file it would have replaced.
    // Writes the whole document (or only the selection) to path in the format
    // chosen by the file type index, without touching path, title or marks.
    bool writeFile(const std::string& path, bool selectionOnly);
    // Save As: takes the new file type index, clears the selection flag,
    // writes; on success takes the path and title and clears marks and modified.
    bool saveAs(const std::string& path, int fileTypeIndex);
    // Save under the current path (callers go to Save As while needsSaveAs()).
    bool save();
    bool saveCopyAs(const std::string& path);
    bool saveSelectionAs(const std::string& path);

private:
    std::array<CChannel, kSlots> m_channels;
    int m_channelCount = 0;
    std::int32_t m_holdsData = 0;
    std::int32_t m_untitledMark = 1;
    std::int32_t m_foreignMark = 0;
    std::int32_t m_selectionFlag = 0;
    std::int32_t m_fileTypeIndex = 1;
    std::int32_t m_recordable = 1;
    bool m_modified = false;
    std::string m_path;
    std::string m_title = "Untitled";
    std::string m_readerName;
};

}  // namespace sonmetra
