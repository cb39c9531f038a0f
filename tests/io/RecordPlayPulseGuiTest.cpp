// The view commands through the real sound path: one waveform view records
// (Record, then a press) while others play (Play All, Play Selection, Play
// Window), all through PortAudio into and out of a private PulseAudio null
// sink, and what was recorded is compared sample for sample.
#include <gtest/gtest.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QTest>
#include <utility>
#include <vector>

#include "document/AudioRate.h"
#include "document/CKestruneDoc.h"
#include "document/MessageService.h"
#include "tests/io/PulseFixture.h"
#include "tests/support/GuiTestSupport.h"
#include "tests/support/TestDocument.h"
#include "view/CKestruneView.h"
#include "view/CRecordPlay.h"

namespace {

using namespace sonmetra;

void spin(int ms) {
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < ms) QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
}

// A document of one audio channel of noise that has no zero sample, so that
// in a recording of the silent monitor each playback is one run of nonzero
// samples.
void fillNoise(CKestruneDoc& doc, double seconds) {
    std::uint32_t state = 777;
    ASSERT_NO_THROW(test::fillChannel(
        doc, 0, "Audio", 44100.0, static_cast<std::size_t>(seconds * 44100),
        [&state](std::size_t) {
            state = state * 1664525u + 1013904223u;
            const auto v = static_cast<std::int16_t>(static_cast<std::int32_t>(state >> 16) % 24000 - 12000);
            return v == 0 ? std::int16_t{1} : v;
        },
        true));
    doc.setChannelCount(1);
}

// The runs of nonzero samples of a recording, as (first, count).
std::vector<std::pair<std::size_t, std::size_t>> soundRuns(const SampleBlock& samples) {
    std::vector<std::pair<std::size_t, std::size_t>> runs;
    for (std::size_t i = 0; i < samples.size();) {
        if (samples[i] == 0) {
            ++i;
            continue;
        }
        const std::size_t first = i;
        while (i < samples.size() && samples[i] != 0) ++i;
        runs.emplace_back(first, i - first);
    }
    return runs;
}

// One view records the sink's monitor while another plays the whole
// signal, a selection and the displayed window of a long document (streamed)
// and all of a short one (one buffer): the recording holds each requested
// stretch sample for sample, with silence between them and nothing else.
TEST(RecordPlayThroughPulse, EachPlayCommandSoundsExactlyItsSamples) {
    RecordingMessageService messages;
    ScopedMessageService scope(&messages);
    registerRecordPlayCommands();
    setAudioRateInForce(44100.0);

    CKestruneDoc longDoc;
    fillNoise(longDoc, 2.0);
    CKestruneDoc shortDoc;
    fillNoise(shortDoc, 0.9);
    CKestruneDoc recordedDoc;
    CKestruneView recordingView(&recordedDoc);
    CKestruneView longView(&longDoc);
    CKestruneView shortView(&shortDoc);
    for (CKestruneView* v : {&recordingView, &longView, &shortView}) {
        v->resize(500, 250);
        v->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(v));
    }
    auto* recorder = recordingView.extension<CRecordPlay>();
    auto* longPlayer = longView.extension<CRecordPlay>();
    auto* shortPlayer = shortView.extension<CRecordPlay>();
    ASSERT_TRUE(recorder && longPlayer && shortPlayer);

    recorder->record();
    ASSERT_TRUE(test::waitFor([&] { return recorder->recording(); }, 5000));
    spin(1500);  // a new capture stream takes a moment to deliver

    struct Stretch {
        std::size_t first, count;
    };
    std::vector<Stretch> expected;
    const CChannel& ch = longDoc.channel(0);
    // Play All: streamed, 2 s.
    longPlayer->playAll();
    expected.push_back({0, ch.m_samples.size()});
    ASSERT_TRUE(test::waitFor([&] { return !longPlayer->playing(); }, 15000));
    spin(400);
    // Play Selection: 0.3 s from 0.5 s.
    longDoc.channel(0).m_selStartSample = 22050.0;
    longDoc.channel(0).m_selEndSample = 22050.0 + 13230.0;
    longView.setSelectionPresent(true);
    longPlayer->playSelection();
    expected.push_back({22050, 13230});
    ASSERT_TRUE(test::waitFor([&] { return !longPlayer->playing(); }, 15000));
    spin(400);
    // Play Window: the displayed 0.375 s from 1.2 s.
    longDoc.channel(0).m_viewStartSample = 52920.0;
    longDoc.channel(0).m_viewEndSample = 52920.0 + 16537.0;
    longPlayer->playWindow();
    expected.push_back({52920, 16537});
    ASSERT_TRUE(test::waitFor([&] { return !longPlayer->playing(); }, 15000));
    spin(400);
    // Play All of a short document: one buffer, which the device plays out.
    shortPlayer->playAll();
    spin(1500);

    QTest::mouseClick(&recordingView, Qt::LeftButton, {}, QPoint(250, 120));
    ASSERT_FALSE(recorder->recording());
    EXPECT_TRUE(messages.texts().empty()) << messages.lastText();
    test::shoot(recordingView.grab().toImage(), "sonmetra_pulse_recorded");

    const CChannel& rec = recordedDoc.channel(0);
    EXPECT_EQ(rec.m_name, "Recorded file");
    EXPECT_EQ(rec.m_rateHz, 44100.0);
    EXPECT_EQ(rec.m_sampleCount, static_cast<double>(rec.m_samples.size()));
    const auto runs = soundRuns(rec.m_samples);
    ASSERT_EQ(runs.size(), 4u) << "one run of sound per playback";
    for (std::size_t k = 0; k < 4; ++k) {
        const CChannel& source = k < 3 ? ch : shortDoc.channel(0);
        const Stretch want = k < 3 ? expected[k] : Stretch{0, source.m_samples.size()};
        ASSERT_EQ(runs[k].second, want.count) << "playback " << k;
        for (std::size_t i = 0; i < want.count; ++i)
            ASSERT_EQ(rec.m_samples[runs[k].first + i], source.m_samples[want.first + i]) << k << ", " << i;
    }
}

}  // namespace

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    // The daemon first: PortAudio reads the environment when it starts.
    test::PulseAudioDaemon daemon;
    if (!daemon.startOrExplain()) return test::kNoPulseAudioExitCode;
    qputenv("QT_QPA_PLATFORM",
            qgetenv("QT_QPA_PLATFORM").isEmpty() ? QByteArray("offscreen") : qgetenv("QT_QPA_PLATFORM"));
    QApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
