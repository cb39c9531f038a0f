// Record and the play commands in a real waveform view, offscreen, on the
// simulated sound device stepped by the test; checked in the document and in
// what the view shows.
#include <gtest/gtest.h>

#include <QApplication>
#include <QTest>
#include <cmath>

#include "document/AudioRate.h"
#include "document/CKestruneDoc.h"
#include "document/MessageService.h"
#include "io/CWaveIn.h"
#include "io/SimulatedWaveDevice.h"
#include "tests/support/GuiTestSupport.h"
#include "tests/support/TestDocument.h"
#include "view/CKestruneView.h"
#include "view/CRecordPlay.h"
#include "view/ViewCommands.h"
#include "view/ViewWaveDisplay.h"

namespace {

using namespace sonmetra;
using Op = SimulatedWaveDriver::Op;

bool isBlack(QRgb c) { return qRed(c) < 60 && qGreen(c) < 60 && qBlue(c) < 60; }

void fillTone(CKestruneDoc& doc, double rateHz, double seconds) {
    ASSERT_NO_THROW(test::fillChannel(
        doc, 0, "Audio", rateHz, static_cast<std::size_t>(rateHz * seconds),
        [](std::size_t i) { return static_cast<std::int16_t>(i % 20000); }, true));
    doc.setChannelCount(1);
}

class RecordPlayGui : public ::testing::Test {
protected:
    void SetUp() override {
        registerRecordPlayCommands();
        setWaveDriver(m_sim);
        setAudioRateInForce(11000.0);
        m_view = test::shownView(&m_doc, QSize(600, 300));
        ASSERT_TRUE(QTest::qWaitForWindowExposed(m_view.get()));
        m_feature = m_view->extension<CRecordPlay>();
        ASSERT_NE(m_feature, nullptr);
    }
    void TearDown() override {
        m_view.reset();
        setWaveDriver(nullptr);
        CRecordPlay::setSaveAsHandler(nullptr);
    }
    QImage shot() { return m_view->grab().toImage().convertToFormat(QImage::Format_RGB32); }
    // Starts a recording and waits for timer 1.
    void startRecording() {
        m_feature->record();
        ASSERT_TRUE(test::waitFor([&] { return m_feature->recording(); }));
    }
    void completeCaptureBuffer(int expectedColumns) {
        ASSERT_TRUE(m_sim->completeInputBuffer());
        ASSERT_TRUE(
            test::waitFor([&] { return m_sim->queuedInputBuffers() == 2 && m_columnsSeen() >= expectedColumns; }));
    }
    // Black pixels in column x of the view.
    int blackInColumn(const QImage& img, int x) {
        int n = 0;
        for (int y = 0; y < img.height() - 30; ++y) n += isBlack(img.pixel(x, y)) ? 1 : 0;
        return n;
    }

    std::shared_ptr<SimulatedWaveDriver> m_sim = SimulatedWaveDriver::create();
    RecordingMessageService m_messages;
    ScopedMessageService m_scope{&m_messages};
    CKestruneDoc m_doc;
    std::unique_ptr<CKestruneView> m_view;
    CRecordPlay* m_feature = nullptr;
    std::function<int()> m_columnsSeen = [this] {
        // Columns arrive through the event loop: count drawn pixels in x = 0..9.
        const QImage img = shot();
        int columns = 0;
        for (int x = 0; x < 10; ++x) columns += blackInColumn(img, x) > 0 ? 1 : 0;
        return columns;
    };
};

TEST_F(RecordPlayGui, RecordsWholeBuffersIntoTheRecordedFileChannel) {
    m_sim->setInputSignal([](std::uint64_t frame, unsigned) { return std::int16_t(frame % 2 ? 16000 : -16000); });
    startRecording();
    EXPECT_TRUE(m_messages.texts().empty());
    EXPECT_EQ(m_sim->lastInputFormat().samplesPerSec, 11000u);

    completeCaptureBuffer(1);
    completeCaptureBuffer(2);
    completeCaptureBuffer(3);
    const QImage recordingShot = shot();
    test::shoot(recordingShot, "sonmetra_recording");
    // Three strip-chart columns of ±16000 at x = 0, 1, 2: a quarter of the
    // height each way, one pixel more below from the first sample's widening.
    const int y = static_cast<int>(16000 * (m_view->clientRect().height() / 65536.0));
    for (int x = 0; x < 3; ++x) EXPECT_EQ(blackInColumn(recordingShot, x), 2 * y + 2) << x;
    EXPECT_EQ(blackInColumn(recordingShot, 3), 0);

    // A press stops recording instead of placing a cursor.
    m_sim->feedInput(1000);  // part of a fourth buffer: kept
    QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, QPoint(200, 100));
    EXPECT_FALSE(m_feature->recording());
    EXPECT_FALSE(m_view->cursorPlaced());
    EXPECT_FALSE(m_sim->inputOpen());

    const int length = CWaveIn::bufferLengthForRate(11000);
    ASSERT_EQ(m_doc.channelCount(), 1);
    const CChannel& ch = m_doc.channel(0);
    EXPECT_EQ(ch.m_name, "Recorded file");
    EXPECT_EQ(ch.m_units, "bits");
    EXPECT_EQ(ch.m_audio, 1);
    EXPECT_EQ(ch.m_rateHz, 11000.0);
    const std::size_t total = 3u * length + 1000u;
    EXPECT_EQ(ch.m_sampleCount, static_cast<double>(total));
    ASSERT_EQ(ch.m_samples.size(), total);
    EXPECT_DOUBLE_EQ(ch.m_durationMs, total / 11.0);
    EXPECT_EQ(ch.m_viewEndSample, static_cast<double>(total));
    EXPECT_EQ(ch.m_samples[total - 1], (total - 1) % 2 ? 16000 : -16000);
    EXPECT_TRUE(m_doc.holdsData());
    EXPECT_TRUE(m_doc.isModified());
    EXPECT_EQ(ch.m_samples[0], -16000);
    // The view shows the new channel's trace.
    const QImage after = shot();
    test::shoot(after, "sonmetra_recorded");
    EXPECT_GT(blackInColumn(after, m_view->traceArea().center().x()), 10);
}

TEST_F(RecordPlayGui, TheSaveQuestionComesFirstAndCancelStartsNothing) {
    fillTone(m_doc, 8000, 2.0);
    m_doc.setTitle("speech.kvd");
    m_doc.setModified(true);
    m_doc.channel(0).m_labels.resize(1);
    m_messages.queueAnswer(MsgAnswer::Cancel);
    m_feature->record();
    QTest::qWait(30);
    EXPECT_EQ(m_messages.texts(), std::vector<std::string>{"Save 'speech.kvd' before recording ?"});
    EXPECT_FALSE(m_feature->recording());
    EXPECT_EQ(m_doc.channel(0).m_labels.size(), 1u);
    EXPECT_EQ(m_doc.channel(0).m_sampleCount, 16000.0);

    // Yes on an untitled document goes through Save As; a cancelled Save As records nothing.
    int saveAsCalls = 0;
    CRecordPlay::setSaveAsHandler([&](QWidget*, CKestruneDoc&) { return ++saveAsCalls > 1; });
    m_messages.queueAnswer(MsgAnswer::Yes);
    m_feature->record();
    QTest::qWait(30);
    EXPECT_EQ(saveAsCalls, 1);
    EXPECT_FALSE(m_feature->recording());
    m_messages.queueAnswer(MsgAnswer::Yes);
    startRecording();
    EXPECT_EQ(saveAsCalls, 2);
    EXPECT_TRUE(m_doc.channel(0).m_labels.empty());
}

TEST_F(RecordPlayGui, AMicThatCannotOpenIsReportedAndTheDocumentKept) {
    fillTone(m_doc, 8000, 2.0);
    m_sim->failNext(Op::InputOpen, kWaveAllocated);
    m_feature->record();
    QTest::qWait(30);
    EXPECT_FALSE(m_feature->recording());
    EXPECT_EQ(m_messages.texts(), (std::vector<std::string>{"Cannot Open Sound Input Device!",
                                                            "Error in opening the Mic.\nRecording will stop."}));
    EXPECT_EQ(m_doc.channel(0).m_sampleCount, 16000.0);
}

TEST_F(RecordPlayGui, WithoutSoundDevicesNothingBreaks) {
    m_sim->setDeviceCounts(0, 0);
    startRecording();
    EXPECT_EQ(m_messages.texts(), std::vector<std::string>{"No Sound Device"});
    const QImage banner = shot();
    test::shoot(banner, "sonmetra_no_device");
    QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, QPoint(200, 100));
    EXPECT_FALSE(m_feature->recording());
    EXPECT_FALSE(m_doc.holdsData());
    EXPECT_EQ(m_doc.channel(0).m_sampleCount, 0.0);

    fillTone(m_doc, 8000, 2.0);
    m_messages.clear();
    m_feature->playAll();
    EXPECT_EQ(m_messages.texts(), std::vector<std::string>{"No Sound Output Device"});
}

TEST_F(RecordPlayGui, PlayAllStreamsAndMovesTheCursorAcrossTheTraceArea) {
    fillTone(m_doc, 8000, 2.0);  // 16000 samples: over 1000 ms, so streamed in buffers of 1638
    m_view->channelsEdited();
    m_feature->playAll();
    ASSERT_TRUE(m_sim->outputOpen());
    EXPECT_FALSE(m_sim->outputPaused());
    ASSERT_TRUE(m_sim->completeOutputBuffer());
    ASSERT_TRUE(test::waitFor([&] { return m_feature->display().cursorShown(); }));

    // One inverted column at L + (R - L) / (16000 / 1638).
    const QRect trace = m_view->traceArea();
    const int expectedX = trace.left() + static_cast<int>((trace.width()) / (16000.0 / 1638.0));
    const QImage playing = shot();
    test::shoot(playing, "sonmetra_play_cursor");
    int inverted = 0;
    for (int y = trace.top(); y < trace.bottom() - 30; ++y) inverted += isBlack(playing.pixel(expectedX, y)) ? 1 : 0;
    EXPECT_GT(inverted, (trace.height() - 30) / 2) << "no cursor at x " << expectedX;

    for (int guard = 0; guard < 40 && m_sim->outputOpen(); ++guard) {
        const std::size_t written = m_sim->writtenBytes().size();
        if (!m_sim->completeOutputBuffer()) break;
        test::waitFor([&] { return !m_sim->outputOpen() || m_sim->writtenBytes().size() > written; });
    }
    ASSERT_TRUE(test::waitFor([&] { return !m_sim->outputOpen() && !m_feature->display().cursorShown(); }));
    // 16000 samples fill 9.77 buffers: the 10th holds the tail and ends in
    // silence; playback ends when the silent 11th has been played, and the
    // 12th, silent too, is cut short by the pause.
    const auto played = m_sim->played();
    ASSERT_EQ(played.size(), 11u * 1638u);
    for (std::size_t i = 0; i < played.size(); ++i)
        ASSERT_EQ(played[i], i < 16000 ? m_doc.channel(0).m_samples[i] : 0) << i;
    EXPECT_EQ(m_sim->writtenBytes().size(), 12u);
    EXPECT_TRUE(m_messages.texts().empty());
}

TEST_F(RecordPlayGui, ShortSignalsAndSelectionsGoOutAsAsked) {
    fillTone(m_doc, 8000, 0.9);  // 900 ms: one buffer
    m_view->channelsEdited();
    m_feature->playAll();
    EXPECT_EQ(m_sim->writtenBytes(), std::vector<std::uint32_t>{2u * 7200u});

    CChannel& ch = m_doc.channel(0);
    ch.m_selStartSample = 1000.4;
    ch.m_selEndSample = 3000.0;
    m_view->setSelectionPresent(true);
    m_feature->playSelection();  // replaces the previous playback
    ASSERT_TRUE(m_sim->completeOutputBuffer());
    const auto played = m_sim->played();
    ASSERT_EQ(played.size(), 2000u);
    EXPECT_EQ(played.front(), ch.m_samples[1000]);
    EXPECT_EQ(played.back(), ch.m_samples[2999]);
}

TEST_F(RecordPlayGui, SpacePlaysTheViewOrTheSelectionAndStopsEscapeStops) {
    fillTone(m_doc, 8000, 2.0);
    m_view->channelsEdited();
    m_view->zoom(1);  // 500 to 1500 ms shown
    m_view->setFocus();
    QTest::keyClick(m_view.get(), Qt::Key_Space);
    ASSERT_TRUE(m_feature->playing());
    ASSERT_TRUE(m_sim->completeOutputBuffer());
    ASSERT_FALSE(m_sim->played().empty());
    EXPECT_EQ(m_sim->played().front(), m_doc.channel(0).m_samples[4000]) << "the shown stretch, from its start";
    QTest::keyClick(m_view.get(), Qt::Key_Space);
    EXPECT_FALSE(m_feature->playing());
    EXPECT_FALSE(m_sim->outputOpen());

    // With a selection Space plays it; Escape stops.
    m_view->mouseDownAtMs(600.0);
    m_view->mouseMoveAtMs(700.0);
    m_view->mouseUpAtMs(700.0);
    ASSERT_TRUE(m_view->selectionPresent());
    const std::size_t before = m_sim->played().size();
    QTest::keyClick(m_view.get(), Qt::Key_Space);
    ASSERT_TRUE(m_feature->playing());
    ASSERT_TRUE(m_sim->completeOutputBuffer());
    const auto played = m_sim->played();
    ASSERT_GT(played.size(), before);
    const auto first = static_cast<std::size_t>(m_doc.channel(0).m_selStartSample);
    EXPECT_EQ(played[before], m_doc.channel(0).m_samples[first]);
    QTest::keyClick(m_view.get(), Qt::Key_Escape);
    EXPECT_FALSE(m_feature->playing());
    EXPECT_TRUE(m_view->selectionPresent()) << "the keys leave the selection alone";
    EXPECT_TRUE(m_messages.texts().empty());
}

TEST_F(RecordPlayGui, EscapeEndsARecordingAsTheMouseDoes) {
    startRecording();
    ASSERT_TRUE(m_sim->completeInputBuffer());
    m_view->setFocus();
    QTest::keyClick(m_view.get(), Qt::Key_Escape);
    EXPECT_FALSE(m_feature->recording());
    EXPECT_FALSE(m_sim->inputOpen());
    EXPECT_EQ(m_doc.channelCount(), 1);
}

// A channel at a rate the sound card cannot be driven at is not played;
// the message says what is wrong with the rate.
TEST_F(RecordPlayGui, ARateOutsideTheRangeIsNotPlayed) {
    fillTone(m_doc, 8000, 2.0);
    for (const double rate : {0.0, std::nan(""), 1e300}) {
        m_doc.channel(0).m_rateHz = rate;
        m_messages.clear();
        m_feature->playAll();
        EXPECT_FALSE(m_sim->outputOpen()) << rate;
        ASSERT_EQ(m_messages.texts().size(), 1u) << rate;
        EXPECT_EQ(m_messages.texts()[0].rfind("The sample rate of channel 1 (Audio) ", 0), 0u) << m_messages.texts()[0];
    }
}

TEST_F(RecordPlayGui, TheCommandsStandInTheRecordPlayMenuWithTheirRules) {
    std::map<QString, const ViewCommand*> byText;
    for (const ViewCommand& c : ViewCommandRegistry::instance().commands())
        if (c.menu == "&Record/Play") byText[c.text] = &c;
    ASSERT_EQ(byText.size(), 5u);
    for (const char* text : {"Record\tCtrl+R", "Play All\tCtrl+Y", "Play Selection\tCtrl+U", "Play Window", "Stop"})
        ASSERT_TRUE(byText.count(text)) << text;
    EXPECT_TRUE(byText["Record\tCtrl+R"]->enabled(*m_view));
    EXPECT_FALSE(byText["Play All\tCtrl+Y"]->enabled(*m_view));
    fillTone(m_doc, 8000, 2.0);
    EXPECT_TRUE(byText["Play Window"]->enabled(*m_view));
    EXPECT_FALSE(byText["Play Selection\tCtrl+U"]->enabled(*m_view));
    m_view->setSelectionPresent(true);
    EXPECT_TRUE(byText["Play Selection\tCtrl+U"]->enabled(*m_view));
    EXPECT_FALSE(byText["Stop"]->enabled(*m_view));  // nothing to stop
    m_doc.setRecordable(false);
    EXPECT_FALSE(byText["Record\tCtrl+R"]->enabled(*m_view));
}

TEST_F(RecordPlayGui, StopEndsPlaybackAndKeepsWhatWasRecorded) {
    const ViewCommand* stop = nullptr;
    for (const ViewCommand& c : ViewCommandRegistry::instance().commands())
        if (c.menu == "&Record/Play" && c.text == "Stop") stop = &c;
    ASSERT_NE(stop, nullptr);

    fillTone(m_doc, 8000, 2.0);
    m_view->channelsEdited();
    m_feature->playAll();
    ASSERT_TRUE(m_sim->outputOpen());
    ASSERT_TRUE(stop->enabled(*m_view));
    stop->run(*m_view);
    EXPECT_FALSE(m_sim->outputOpen());
    EXPECT_FALSE(m_feature->display().cursorShown());
    EXPECT_FALSE(stop->enabled(*m_view));

    // A record chosen but not yet started records nothing.
    m_feature->record();
    ASSERT_TRUE(stop->enabled(*m_view));
    stop->run(*m_view);
    QTest::qWait(50);  // timer 1 has fired by now
    EXPECT_FALSE(m_feature->recording());
    EXPECT_FALSE(m_sim->inputOpen());
    EXPECT_EQ(m_doc.channel(0).m_name, "Audio");

    // During a recording: the buffers captured so far become the channel.
    startRecording();
    completeCaptureBuffer(1);
    ASSERT_TRUE(stop->enabled(*m_view));
    stop->run(*m_view);
    EXPECT_FALSE(m_feature->recording());
    EXPECT_FALSE(m_sim->inputOpen());
    EXPECT_EQ(m_doc.channel(0).m_name, "Recorded file");
    EXPECT_EQ(m_doc.channel(0).m_sampleCount, static_cast<double>(CWaveIn::bufferLengthForRate(11000)));
}

}  // namespace
