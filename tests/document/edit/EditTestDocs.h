// Small documents for the edit tests: channels at 1000 Hz (1 ms per sample)
// so that sample positions and times read alike, sample i holding a value
// that names its channel and index.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "document/CKestruneDoc.h"
#include "document/EditClipboard.h"
#include "document/EditOperations.h"
#include "document/MessageService.h"
#include "tests/support/TestDocument.h"

namespace sonmetra::test {

inline std::int16_t valueOf(int channel, int index) { return static_cast<std::int16_t>(channel * 1000 + index); }

inline CLabel makeLabel(double timeMs, const std::string& text) {
    CLabel l;
    l.timeMs = timeMs;
    l.text = text;
    return l;
}

// `channels` channels of `samples` samples each at rateHz.
inline void fillDocument(CKestruneDoc& doc, int channels, int samples, double rateHz = 1000.0) {
    doc.clearChannels();
    for (int ch = 0; ch < channels; ++ch)
        EXPECT_NO_THROW(fillChannel(
            doc, ch, "ch" + std::to_string(ch + 1), rateHz, static_cast<std::size_t>(samples),
            [ch](std::size_t i) { return valueOf(ch, static_cast<int>(i)); }, ch == 0));
}

// Sets the same selection [startSample, endSample) on every channel.
inline void selectSamples(CKestruneDoc& doc, double startSample, double endSample) {
    for (int ch = 0; ch < doc.channelCount(); ++ch) {
        CChannel& c = doc.channel(ch);
        const double r = c.msPerSample();
        c.m_selStartSample = startSample;
        c.m_selEndSample = endSample;
        c.m_selStartMs = startSample * r;
        c.m_selEndMs = endSample * r;
    }
    doc.setSelectionFlag(true);
}

inline void placeCursor(CKestruneDoc& doc, double sample) {
    for (int ch = 0; ch < doc.channelCount(); ++ch) doc.channel(ch).setCursorSample(sample);
}

inline std::vector<int> samplesOf(const CChannel& c) {
    return std::vector<int>(c.m_samples.begin(), c.m_samples.end());
}

inline std::vector<double> labelTimes(const CChannel& c) {
    std::vector<double> t;
    for (const CLabel& l : c.m_labels) t.push_back(l.timeMs);
    return t;
}

// A folder of its own per test for the undo temp file of a document titled
// "Untitled", a recording message service, and the clipboard.
class EditFixture : public ::testing::Test {
protected:
    void SetUp() override {
        m_folder =
            std::filesystem::temp_directory_path() / ("sonmetra-edit-" + std::to_string(::getpid()) + "-" +
                                                      ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::create_directories(m_folder);
        m_undo.setPath(UndoTempFile::pathFor(m_folder.string() + "/", "Untitled"));
    }
    void TearDown() override { std::filesystem::remove_all(m_folder); }

    std::filesystem::path m_folder;
    RecordingMessageService m_messages;
    ScopedMessageService m_scope{&m_messages};
    UndoTempFile m_undo;
    EditClipboard m_clipboard;
};

}  // namespace sonmetra::test
