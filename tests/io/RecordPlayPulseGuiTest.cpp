// The view commands through the real sound path: one waveform view records
// (Record, then a press) while another plays a 440 Hz tone (Play All), both
// through PortAudio into and out of a private PulseAudio null sink.
#include <gtest/gtest.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QTest>
#include <cmath>
#include <numbers>

#include "document/AudioRate.h"
#include "document/CKestruneDoc.h"
#include "document/MessageService.h"
#include "io/CWaveIn.h"
#include "tests/io/PulseFixture.h"
#include "tests/io/ToneAnalysis.h"
#include "view/CKestruneView.h"
#include "view/CRecordPlay.h"

namespace {

using namespace sonmetra;

test::PulseAudioDaemon* g_daemon = nullptr;
std::string g_whyNot;

void spin(int ms) {
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < ms) QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
}

template <typename Pred>
bool spinUntil(Pred done, int timeoutMs) {
    QElapsedTimer clock;
    clock.start();
    while (!done()) {
        if (clock.elapsed() > timeoutMs) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
    return true;
}

TEST(RecordPlayThroughPulse, ARecordingViewHearsWhatAnotherViewPlays) {
    if (!g_whyNot.empty()) GTEST_SKIP() << "PulseAudio cannot start here: " << g_whyNot;
    RecordingMessageService messages;
    ScopedMessageService scope(&messages);
    registerRecordPlayCommands();
    setAudioRateInForce(44100.0);

    CKestruneDoc toneDoc;
    CChannel& tone = toneDoc.channel(0);
    tone.m_name = "Audio";
    tone.m_audio = 1;
    tone.m_inUse = 1;
    tone.m_rateHz = 44100.0;
    ASSERT_TRUE(tone.m_samples.resize(3 * 44100));
    for (std::size_t i = 0; i < tone.m_samples.size(); ++i)
        tone.m_samples[i] = static_cast<std::int16_t>(12000.0 * std::sin(2.0 * std::numbers::pi * 440.0 * i / 44100.0));
    tone.setSampleCountFromBlock();
    tone.resetDisplayToWhole();
    toneDoc.setChannelCount(1);
    toneDoc.setHoldsData(true);

    CKestruneDoc recordedDoc;
    CKestruneView recordingView(&recordedDoc);
    CKestruneView playingView(&toneDoc);
    for (CKestruneView* v : {&recordingView, &playingView}) {
        v->resize(500, 250);
        v->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(v));
    }
    auto* recorder = recordingView.extension<CRecordPlay>();
    auto* player = playingView.extension<CRecordPlay>();
    ASSERT_TRUE(recorder && player);

    recorder->record();
    ASSERT_TRUE(spinUntil([&] { return recorder->recording(); }, 5000));
    spin(300);
    player->playAll();
    ASSERT_TRUE(player->playing());
    // Streamed (3 s is over 1000 ms): the engine closes the device at the end.
    ASSERT_TRUE(spinUntil([&] { return !player->playing(); }, 15000));
    spin(500);
    recordingView.grab().save("/tmp/sonmetra_pulse_recording.png");
    QTest::mouseClick(&recordingView, Qt::LeftButton, {}, QPoint(250, 120));
    ASSERT_FALSE(recorder->recording());
    EXPECT_TRUE(messages.texts().empty()) << messages.lastText();

    const CChannel& ch = recordedDoc.channel(0);
    const int length = CWaveIn::bufferLengthForRate(44100);
    EXPECT_EQ(ch.m_name, "Recorded file");
    EXPECT_EQ(ch.m_rateHz, 44100.0);
    ASSERT_GE(ch.m_samples.size(), 7u * length);
    EXPECT_EQ(ch.m_samples.size() % length, 0u);
    EXPECT_EQ(ch.m_sampleCount, static_cast<double>(ch.m_samples.size()));
    std::size_t loudest = 0;
    double loudestRms = 0.0;
    for (std::size_t b = 0; b < ch.m_samples.size() / length; ++b) {
        const double level = test::rms(ch.m_samples.data() + b * length, length);
        if (level > loudestRms) std::tie(loudest, loudestRms) = std::make_pair(b, level);
    }
    ASSERT_GT(loudestRms, 1000.0);
    const auto peak = test::strongestPeak(ch.m_samples.data() + loudest * length, length, 44100.0);
    EXPECT_LE(std::fabs(peak.frequencyHz - 440.0), peak.binWidthHz) << peak.frequencyHz;
    recordingView.grab().save("/tmp/sonmetra_pulse_recorded.png");
}

}  // namespace

int main(int argc, char** argv) {
    // The daemon first: PortAudio reads the environment when it starts.
    test::PulseAudioDaemon daemon;
    if (!daemon.start(g_whyNot))
        g_whyNot = g_whyNot.empty() ? "unknown" : g_whyNot;
    else
        g_whyNot.clear();
    g_daemon = &daemon;
    qputenv("QT_QPA_PLATFORM",
            qgetenv("QT_QPA_PLATFORM").isEmpty() ? QByteArray("offscreen") : qgetenv("QT_QPA_PLATFORM"));
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
