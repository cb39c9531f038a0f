// Cut, Copy, Paste and Clear to Reference over several channels with labels.
#include <gtest/gtest.h>

#include <filesystem>

#include "EditTestDocs.h"
#include "document/EditClipboard.h"
#include "document/EditOperations.h"
#include "document/MessageService.h"
#include "document/UserException.h"
#include "res/StringTable.h"

namespace sonmetra {
namespace {

using namespace test;

using EditOperationsTest = EditFixture;

TEST_F(EditOperationsTest, CutRemovesRangeOnEveryChannelAndMovesLabelAtCutEnd) {
    CKestruneDoc doc;
    fillDocument(doc, 3, 10);
    doc.channel(0).m_labels = {makeLabel(2, "before"), makeLabel(4, "inside"), makeLabel(7, "at end")};
    doc.channel(2).m_labels = {makeLabel(6.5, "inside too"), makeLabel(9, "after")};
    selectSamples(doc, 4, 7);

    cutSelection(doc, m_clipboard, m_undo);

    for (int ch = 0; ch < 3; ++ch) {
        const std::vector<int> expected = {valueOf(ch, 0), valueOf(ch, 1), valueOf(ch, 2), valueOf(ch, 3),
                                           valueOf(ch, 7), valueOf(ch, 8), valueOf(ch, 9)};
        EXPECT_EQ(samplesOf(doc.channel(ch)), expected) << "channel " << ch;
        EXPECT_DOUBLE_EQ(doc.channel(ch).m_sampleCount, 7.0);
        EXPECT_DOUBLE_EQ(doc.channel(ch).m_durationMs, 7.0);
    }
    // The label on the first sample after the cut moves with it.
    EXPECT_EQ(labelTimes(doc.channel(0)), (std::vector<double>{2, 4}));
    EXPECT_EQ(doc.channel(0).m_labels[1].text, "at end");
    EXPECT_EQ(labelTimes(doc.channel(2)), (std::vector<double>{6}));

    // The clipboard holds the range with labels relative to its start.
    ASSERT_TRUE(m_clipboard.valid());
    ASSERT_EQ(m_clipboard.channelCount(), 3);
    EXPECT_EQ(samplesOf(m_clipboard.channel(1).record),
              (std::vector<int>{valueOf(1, 4), valueOf(1, 5), valueOf(1, 6)}));
    EXPECT_EQ(labelTimes(m_clipboard.channel(0).record), (std::vector<double>{0}));
    EXPECT_EQ(labelTimes(m_clipboard.channel(2).record), (std::vector<double>{2.5}));
    EXPECT_DOUBLE_EQ(m_clipboard.channel(0).lengthMs, 3.0);

    EXPECT_TRUE(doc.isModified());
    EXPECT_FALSE(doc.selectionFlag());
    EXPECT_DOUBLE_EQ(doc.channel(0).m_selEndSample, 0.0);
    EXPECT_TRUE(m_undo.available());
    EXPECT_TRUE(m_messages.texts().empty());
}

TEST_F(EditOperationsTest, CutOfWholeChannelIsRefusedAndCutsNothing) {
    CKestruneDoc doc;
    fillDocument(doc, 2, 8);
    selectSamples(doc, 0, 8);

    EXPECT_THROW(cutSelection(doc, m_clipboard, m_undo), UserException);

    EXPECT_EQ(m_messages.texts(), std::vector<std::string>{loadString(IDS_CUT_WHOLE_SIGNAL)});
    EXPECT_EQ(m_messages.beeps(), 1);
    for (int ch = 0; ch < 2; ++ch) EXPECT_EQ(doc.channel(ch).m_samples.size(), 8u);
    EXPECT_FALSE(doc.isModified());
    EXPECT_FALSE(m_undo.available());
}

TEST_F(EditOperationsTest, PasteAtCursorZeroPutsClipboardInFrontAndMovesLabels) {
    CKestruneDoc source;
    fillDocument(source, 2, 6);
    for (int ch = 0; ch < 2; ++ch)
        for (auto& s : source.channel(ch).m_samples) s = static_cast<std::int16_t>(-s - 1);
    source.channel(1).m_labels = {makeLabel(3, "copied")};
    selectSamples(source, 2, 5);
    copySelection(source, m_clipboard);

    CKestruneDoc doc;
    fillDocument(doc, 2, 5);
    doc.channel(1).m_labels = {makeLabel(0, "first"), makeLabel(4, "last")};
    placeCursor(doc, 0);

    EXPECT_EQ(pasteClipboard(doc, m_clipboard, m_undo, false), PasteOutcome::Inserted);

    const std::vector<int> expected = {-valueOf(1, 2) - 1, -valueOf(1, 3) - 1, -valueOf(1, 4) - 1, valueOf(1, 0),
                                       valueOf(1, 1),      valueOf(1, 2),      valueOf(1, 3),      valueOf(1, 4)};
    EXPECT_EQ(samplesOf(doc.channel(1)), expected);
    EXPECT_DOUBLE_EQ(doc.channel(0).m_durationMs, 8.0);
    EXPECT_EQ(labelTimes(doc.channel(1)), (std::vector<double>{1, 3, 7}));
    EXPECT_EQ(doc.channel(1).m_labels[0].text, "copied");
    EXPECT_EQ(doc.channel(1).m_labels[1].text, "first");
    EXPECT_TRUE(doc.isModified());
    EXPECT_TRUE(m_undo.available());
}

TEST_F(EditOperationsTest, PasteOverSelectionOfSameLengthKeepsLength) {
    CKestruneDoc doc;
    fillDocument(doc, 2, 10);
    doc.channel(0).m_labels = {makeLabel(1, "a"), makeLabel(5, "replaced"), makeLabel(8, "b")};
    selectSamples(doc, 0, 3);
    copySelection(doc, m_clipboard);  // samples 0..2, no label inside but "a" at 1
    selectSamples(doc, 4, 7);

    pasteClipboard(doc, m_clipboard, m_undo, true);

    EXPECT_EQ(doc.channel(0).m_samples.size(), 10u);
    EXPECT_DOUBLE_EQ(doc.channel(0).m_durationMs, 10.0);
    const std::vector<int> expected = {0, 1, 2, 3, 0, 1, 2, 7, 8, 9};
    EXPECT_EQ(samplesOf(doc.channel(0)), expected);
    EXPECT_EQ(labelTimes(doc.channel(0)), (std::vector<double>{1, 5, 8}));
    EXPECT_EQ(doc.channel(0).m_labels[1].text, "a");  // the pasted copy took the replaced label's place
}

TEST_F(EditOperationsTest, PasteIntoEmptyDocumentTakesClipboardChannels) {
    CKestruneDoc source;
    fillDocument(source, 3, 20, 2000.0);
    source.channel(2).m_rateHz = 2000.0;
    source.channel(1).m_name = "Flow";
    source.channel(1).m_labels = {makeLabel(5.0, "mid")};  // sample 10
    selectSamples(source, 8, 14);
    copySelection(source, m_clipboard);

    CKestruneDoc empty;
    EXPECT_EQ(pasteClipboard(empty, m_clipboard, m_undo, false), PasteOutcome::FilledEmptyDocument);

    ASSERT_EQ(empty.channelCount(), 3);
    EXPECT_TRUE(empty.holdsData());
    EXPECT_EQ(empty.channel(1).m_name, "Flow");
    EXPECT_DOUBLE_EQ(empty.channel(1).m_rateHz, 2000.0);
    EXPECT_DOUBLE_EQ(empty.channel(1).m_sampleCount, 6.0);
    EXPECT_DOUBLE_EQ(empty.channel(1).m_durationMs, 3.0);
    EXPECT_DOUBLE_EQ(empty.channel(1).m_viewEndSample, 6.0);
    EXPECT_EQ(labelTimes(empty.channel(1)), (std::vector<double>{1.0}));
    EXPECT_EQ(empty.channel(2).m_samples[0], valueOf(2, 8));
    EXPECT_FALSE(m_undo.available());
    EXPECT_TRUE(empty.isModified());
}

TEST_F(EditOperationsTest, PasteRefusesOtherChannelCountOrRateAfterWritingUndoCopy) {
    CKestruneDoc source;
    fillDocument(source, 2, 10);
    selectSamples(source, 2, 4);
    copySelection(source, m_clipboard);

    CKestruneDoc three;
    fillDocument(three, 3, 10);
    EXPECT_THROW(pasteClipboard(three, m_clipboard, m_undo, false), UserException);
    EXPECT_EQ(m_messages.lastText(), loadString(IDS_PASTE_CHANNEL_COUNT));
    EXPECT_EQ(three.channel(0).m_samples.size(), 10u);
    EXPECT_TRUE(m_undo.available());  // the undo copy was written first

    CKestruneDoc otherRate;
    fillDocument(otherRate, 2, 10);
    otherRate.channel(1).m_rateHz = 500.0;
    EXPECT_THROW(pasteClipboard(otherRate, m_clipboard, m_undo, false), UserException);
    EXPECT_EQ(m_messages.lastText(), loadString(IDS_PASTE_SAMPLE_RATE));
    EXPECT_EQ(otherRate.channel(1).m_samples.size(), 10u);
    EXPECT_FALSE(otherRate.isModified());
    EXPECT_EQ(m_messages.beeps(), 2);
}

TEST_F(EditOperationsTest, ChannelsAtDifferentRatesEachCutTheirOwnSamples) {
    CKestruneDoc doc;
    fillDocument(doc, 2, 20);
    CChannel& slow = doc.channel(1);  // 500 Hz, 2 ms per sample, same 20 ms
    (void)slow.m_samples.resize(10);
    slow.m_rateHz = 500.0;
    slow.m_sampleCount = 10;
    slow.m_durationMs = 20.0;
    slow.m_labels = {makeLabel(12.0, "late")};
    doc.channel(0).m_selStartSample = 4;
    doc.channel(0).m_selEndSample = 10;
    slow.m_selStartSample = 2;
    slow.m_selEndSample = 5;

    cutSelection(doc, m_clipboard, m_undo);

    EXPECT_DOUBLE_EQ(doc.channel(0).m_durationMs, 14.0);
    EXPECT_DOUBLE_EQ(slow.m_durationMs, 14.0);
    EXPECT_EQ(slow.m_samples.size(), 7u);
    EXPECT_EQ(labelTimes(slow), (std::vector<double>{6.0}));
}

TEST_F(EditOperationsTest, ClearToReferenceTruncatesStartAndClearsEveryIndexBelowEnd) {
    CKestruneDoc doc;
    fillDocument(doc, 2, 16);
    doc.channel(0).m_reference = 12.9;
    doc.channel(1).m_reference = -7.2;
    doc.channel(0).m_labels = {makeLabel(5, "kept")};
    selectSamples(doc, 3.4, 10.7);

    clearToReference(doc, m_undo);

    for (int ch = 0; ch < 2; ++ch) {
        const int level = ch == 0 ? 12 : -7;
        for (int i = 0; i < 16; ++i) {
            const int expected = (i >= 3 && i <= 10) ? level : valueOf(ch, i);
            EXPECT_EQ(doc.channel(ch).m_samples[static_cast<std::size_t>(i)], expected) << ch << ":" << i;
        }
    }
    EXPECT_EQ(doc.channel(0).m_samples.size(), 16u);
    EXPECT_EQ(labelTimes(doc.channel(0)), (std::vector<double>{5}));
    EXPECT_TRUE(doc.isModified());
    EXPECT_TRUE(m_undo.available());
}

}  // namespace
}  // namespace sonmetra
