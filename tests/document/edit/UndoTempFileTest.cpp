// Save for undo and Undo through the temp file, with their messages.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "EditTestDocs.h"
#include "document/EditClipboard.h"
#include "document/EditOperations.h"
#include "document/MessageService.h"
#include "document/UserException.h"
#include "res/StringTable.h"

namespace sonmetra {
namespace {

using namespace test;

using UndoTempFileTest = EditFixture;

TEST_F(UndoTempFileTest, TempFileIsNamedAfterTheDocumentInTheFolder) {
    EXPECT_EQ(UndoTempFile::pathFor("/w/tmp/", "voice.kvd"), "/w/tmp/voice.kvd@@tmp");
}

TEST_F(UndoTempFileTest, UndoAfterCutRestoresSamplesLabelsFontsAndDisplayOnce) {
    CKestruneDoc doc;
    fillDocument(doc, 3, 40);
    CLabel styled = makeLabel(30, "styled");
    styled.font.height = -19;
    styled.font.weight = 700;
    styled.font.italic = 1;
    styled.font.quality = 3;  // a byte the program does not interpret
    styled.font.setFace("DejaVu Serif");
    styled.justification = 2;
    styled.setLineFlag(true);
    styled.red = 200;
    doc.channel(1).m_labels = {makeLabel(12, "cut away"), styled};
    doc.channel(2).m_gain = 2.5;             // the file keeps whole numbers only
    doc.channel(2).m_converterRange = 5000;  // not in the file at all
    for (int ch = 0; ch < 3; ++ch) {
        doc.channel(ch).m_viewStartSample = 5;
        doc.channel(ch).m_viewEndSample = 25;
    }
    selectSamples(doc, 10, 20);
    const auto before = samplesOf(doc.channel(1));

    cutSelection(doc, m_clipboard, m_undo);
    ASSERT_EQ(doc.channel(1).m_samples.size(), 30u);
    ASSERT_TRUE(m_undo.available());

    ASSERT_TRUE(m_undo.restore(doc));
    EXPECT_EQ(doc.channelCount(), 3);
    EXPECT_EQ(samplesOf(doc.channel(1)), before);
    EXPECT_EQ(labelTimes(doc.channel(1)), (std::vector<double>{12, 30}));
    const CLabel& back = doc.channel(1).m_labels[1];
    EXPECT_EQ(back.font, styled.font);
    EXPECT_EQ(back.justification, 2);
    EXPECT_TRUE(back.lineFlag());
    EXPECT_EQ(back.red, 200);
    EXPECT_DOUBLE_EQ(doc.channel(2).m_gain, 2.5);
    EXPECT_DOUBLE_EQ(doc.channel(2).m_converterRange, 5000.0);
    EXPECT_DOUBLE_EQ(doc.channel(0).m_viewStartSample, 5.0);
    EXPECT_DOUBLE_EQ(doc.channel(0).m_viewEndSample, 25.0);
    EXPECT_DOUBLE_EQ(doc.channel(0).m_selStartSample, 10.0);
    EXPECT_TRUE(doc.selectionFlag());
    EXPECT_TRUE(doc.isModified());

    // One step only: the second Undo is not offered.
    EXPECT_FALSE(m_undo.available());
    EXPECT_TRUE(m_messages.texts().empty());
}

TEST_F(UndoTempFileTest, UndoOfPasteAndOfClearRestoreTheDocumentBeforeEach) {
    CKestruneDoc doc;
    fillDocument(doc, 2, 12);
    const auto original = samplesOf(doc.channel(0));
    selectSamples(doc, 2, 6);
    copySelection(doc, m_clipboard);
    test::placeCursor(doc, 3);
    pasteClipboard(doc, m_clipboard, m_undo, false);
    ASSERT_EQ(doc.channel(0).m_samples.size(), 16u);
    ASSERT_TRUE(m_undo.restore(doc));
    EXPECT_EQ(samplesOf(doc.channel(0)), original);

    selectSamples(doc, 0, 5);
    doc.channel(0).m_reference = 99;
    clearToReference(doc, m_undo);
    ASSERT_EQ(doc.channel(0).m_samples[0], 99);
    ASSERT_TRUE(m_undo.restore(doc));
    EXPECT_EQ(samplesOf(doc.channel(0)), original);
}

TEST_F(UndoTempFileTest, TempFileThatCannotBeCreatedAsksWhetherToGoOn) {
    CKestruneDoc doc;
    fillDocument(doc, 2, 10);
    selectSamples(doc, 2, 4);
    m_undo.setPath((m_folder / "missing-folder" / "Untitled@@tmp").string());
    const std::vector<std::string> expected = {loadString(IDS_TEMP_SAVE_ERROR),
                                               loadString(IDS_UNDO_UNAVAILABLE_CONTINUE)};

    // No: the edit is abandoned, the document untouched.
    m_messages.queueAnswer(MsgAnswer::Ok);
    m_messages.queueAnswer(MsgAnswer::No);
    EXPECT_THROW(clearToReference(doc, m_undo), UserException);
    EXPECT_EQ(m_messages.texts(), expected);
    EXPECT_EQ(doc.channel(0).m_samples[2], 2);
    EXPECT_FALSE(doc.isModified());
    EXPECT_EQ(m_messages.beeps(), 1);

    // Yes: the edit goes on without undo.
    m_messages.clear();
    m_messages.queueAnswer(MsgAnswer::Ok);
    m_messages.queueAnswer(MsgAnswer::Yes);
    cutSelection(doc, m_clipboard, m_undo);
    EXPECT_EQ(m_messages.texts(), expected);
    EXPECT_EQ(doc.channel(0).m_samples.size(), 8u);
    EXPECT_FALSE(m_undo.available());
}

TEST_F(UndoTempFileTest, UnreadableOrForeignTempFileLeavesDocumentAsItIs) {
    CKestruneDoc doc;
    fillDocument(doc, 2, 10);
    selectSamples(doc, 2, 4);
    cutSelection(doc, m_clipboard, m_undo);

    std::filesystem::remove(m_undo.path());
    EXPECT_FALSE(m_undo.restore(doc));
    EXPECT_EQ(m_messages.lastText(), loadString(IDS_TEMP_READ_ERROR));
    EXPECT_EQ(doc.channel(0).m_samples.size(), 8u);

    {
        std::ofstream out(m_undo.path(), std::ios::binary);
        std::string mac(512, '\0');
        mac.replace(0, 7, "RVM_Mac");
        out << mac;
    }
    EXPECT_FALSE(m_undo.restore(doc));
    EXPECT_EQ(m_messages.lastText(), loadString(IDS_WRONG_TEMP_FILE));
    EXPECT_EQ(doc.channel(0).m_samples.size(), 8u);
    EXPECT_EQ(doc.channelCount(), 2);

    // A PC file cut short: the reader's own message, the document kept.
    selectSamples(doc, 0, 2);
    clearToReference(doc, m_undo);
    const auto size = std::filesystem::file_size(m_undo.path());
    std::filesystem::resize_file(m_undo.path(), size - 3);
    EXPECT_FALSE(m_undo.restore(doc));
    EXPECT_EQ(m_messages.lastText(), loadString(IDS_INCORRECT_DATA_COUNT));
    EXPECT_EQ(doc.channel(1).m_samples.size(), 8u);
    EXPECT_EQ(doc.channel(1).m_samples[0], 0);
}

// Labels entered, changed or deleted after an edit survive its Undo, each
// at the time of the sample it was put on.
TEST_F(UndoTempFileTest, UndoKeepsLabelWorkDoneAfterTheEditWithItsSamples) {
    CKestruneDoc doc;
    fillDocument(doc, 2, 40);
    doc.channel(0).m_labels = {makeLabel(5, "kept"), makeLabel(15, "cut away"), makeLabel(30, "renamed later"),
                               makeLabel(35, "deleted later")};
    selectSamples(doc, 10, 20);
    cutSelection(doc, m_clipboard, m_undo);
    ASSERT_EQ(labelTimes(doc.channel(0)), (std::vector<double>{5, 20, 25}));

    // After the cut: a label before the cut point, one after it, one on the
    // first sample after the cut, a rename and a deletion.
    auto& labels = doc.channel(0).m_labels;
    labels[1].text = "renamed";
    labels.erase(labels.begin() + 2);
    labels.push_back(makeLabel(3, "new early"));
    labels.push_back(makeLabel(10, "new at the cut"));
    labels.push_back(makeLabel(22, "new late"));
    doc.channel(1).m_labels = {makeLabel(0, "other channel")};

    ASSERT_TRUE(m_undo.restore(doc));
    std::vector<std::pair<double, std::string>> got;
    for (const CLabel& l : doc.channel(0).m_labels) got.emplace_back(l.timeMs, l.text);
    const std::vector<std::pair<double, std::string>> expected = {
        {3, "new early"}, {5, "kept"}, {15, "cut away"}, {20, "new at the cut"}, {30, "renamed"}, {32, "new late"}};
    EXPECT_EQ(got, expected);
    EXPECT_EQ(labelTimes(doc.channel(1)), (std::vector<double>{0}));
}

TEST_F(UndoTempFileTest, LabelsOnPastedSamplesGoToThePastePointOnUndo) {
    CKestruneDoc doc;
    fillDocument(doc, 1, 40);
    doc.channel(0).m_labels = {makeLabel(2, "clip label"), makeLabel(30, "late")};
    selectSamples(doc, 0, 5);
    m_clipboard.copyFrom(doc);
    test::placeCursor(doc, 20);
    doc.setSelectionFlag(false);
    pasteClipboard(doc, m_clipboard, m_undo, false);
    ASSERT_EQ(labelTimes(doc.channel(0)), (std::vector<double>{2, 22, 35}));

    // One label on the pasted samples, one after them; the pasted label is
    // deleted, which Undo takes away in any case.
    auto& labels = doc.channel(0).m_labels;
    labels.erase(labels.begin() + 1);
    labels.push_back(makeLabel(23, "on pasted"));
    labels.push_back(makeLabel(27, "after pasted"));

    ASSERT_TRUE(m_undo.restore(doc));
    std::vector<std::pair<double, std::string>> got;
    for (const CLabel& l : doc.channel(0).m_labels) got.emplace_back(l.timeMs, l.text);
    const std::vector<std::pair<double, std::string>> expected = {
        {2, "clip label"}, {20, "on pasted"}, {22, "after pasted"}, {30, "late"}};
    EXPECT_EQ(got, expected);
}

TEST_F(UndoTempFileTest, WithoutLaterLabelWorkUndoRestoresTheLabelsAsSaved) {
    CKestruneDoc doc;
    fillDocument(doc, 1, 20);
    doc.channel(0).m_labels = {makeLabel(4, "a"), makeLabel(4, "a"), makeLabel(12, "b")};
    selectSamples(doc, 2, 6);
    clearToReference(doc, m_undo);
    doc.channel(0).m_labels.push_back(makeLabel(4, "a"));  // a third equal label after the edit
    ASSERT_TRUE(m_undo.restore(doc));
    EXPECT_EQ(labelTimes(doc.channel(0)), (std::vector<double>{4, 4, 4, 12}));

    // An edit whose caller did not note its result restores the saved labels.
    UndoTempFile plain(m_undo.path());
    ASSERT_TRUE(plain.saveForUndo(doc));
    doc.channel(0).m_labels.clear();
    ASSERT_TRUE(plain.restore(doc));
    EXPECT_EQ(labelTimes(doc.channel(0)), (std::vector<double>{4, 4, 4, 12}));
}

}  // namespace
}  // namespace sonmetra
