// The pitch window on a real waveform view: the command and its one-window
// rule, the worker's track against the library's sequential routine, the
// recomputation after edits, cancelling, the log rows of a voice of known
// F0, the cursor shared with the waveform view, and the failure message.
#include <QMdiSubWindow>
#include <QProgressDialog>
#include <QPushButton>
#include <cstring>
#include <thread>

#include "PitchFixture.h"
#include "analysis/PitchTrack.h"
#include "document/MessageService.h"
#include "log/CFormLog.h"
#include "view/DocumentWindows.h"
#include "view/pitch/PitchComputation.h"
#include "view/pitch/PitchEntries.h"
#include "view/pitch/PitchSettingsInForce.h"

using namespace pitchtest;

namespace {

const QString kMarker = "Enter Pitch at Marker\tCtrl+M";
const QString kSelection = "Enter Pitch Selection";
const QString kAll = "Enter Pitch All";

bool near(double value, double expected, double tolerance) { return std::abs(value - expected) <= tolerance; }

// The library's sequential routine on a thread of its own (an empty
// workspace, as in a fresh process).
sonmetra::PitchTrackResult sequentialTrack(const sonmetra::CKestruneDoc& doc, sonmetra::PitchSettings settings) {
    const sonmetra::CChannel& ch = doc.channel(0);
    sonmetra::PitchTrackResult result;
    sonmetra::AnalysisStatus status = sonmetra::AnalysisStatus::Failed;
    std::thread([&] {
        sonmetra::PitchTrackInput in;
        in.samples = ch.m_samples.data();
        in.sampleCount = ch.m_sampleCount;
        in.endSample = ch.m_sampleCount;
        in.rateHz = ch.m_rateHz;
        in.offset = ch.m_reference;
        status = sonmetra::ComputePitchTrack(in, settings, result);
    }).join();
    if (status != sonmetra::AnalysisStatus::Ok) result = {};
    return result;
}

bool sameBits(const std::vector<double>& a, const std::vector<double>& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0;
}

}  // namespace

class PitchWindowTest : public PitchTest {
    Q_OBJECT
private slots:
    void initTestCase() { registerFeatures(); }

    void init() {
        start({{600, 150}, {200, 0}, {600, 300}});  // 0.6 s at 150 Hz, 0.2 s of silence, 0.6 s at 300 Hz
        m_view = shownView(m_doc.get(), QSize(800, 300));
    }
    void cleanup() {
        if (CPitchFrame* f = CPitchFrame::of(m_doc.get())) delete f;
        m_view.reset();
        m_doc.reset();
        m_services.reset();
    }

    void commandOpensOneWindowPerDocumentAndRecomputes() {
        runView(kPitchCommandText, *m_view);
        CPitchFrame* frame = CPitchFrame::of(m_doc.get());
        QVERIFY(frame != nullptr);
        QCOMPARE(frame->windowTitle(), QString("voice.kvd::Pitch"));
        QCOMPARE(commandContext(frame), QString("pitch"));
        QVERIFY(waitForTrack(frame));
        const PitchResults* first = frame->view()->results();
        QVERIFY(first != nullptr);

        // A second command: the same window, a new computation.
        runView(kPitchCommandText, *m_view);
        QCOMPARE(CPitchFrame::of(m_doc.get()), frame);
        QVERIFY(frame->computing());
        QVERIFY(waitForTrack(frame));
        QVERIFY(frame->view()->results() != first);
        int frames = 0;
        for (QWidget* w : QApplication::allWidgets()) frames += qobject_cast<CPitchFrame*>(w) != nullptr ? 1 : 0;
        QCOMPARE(frames, 1);

        // Another document has its own; closing the window detaches it.
        auto other = voiceDocument({{300, 200}});
        CKestruneView otherView(other.get());
        runView(kPitchCommandText, otherView);
        CPitchFrame* second = CPitchFrame::of(other.get());
        QVERIFY(second != nullptr && second != frame);
        QVERIFY(waitForTrack(second));
        delete second;
        QVERIFY(CPitchFrame::of(other.get()) == nullptr);
        QVERIFY(m_messages.texts().empty());
    }

    void documentWithoutAudioChannelIsRefused() {
        m_doc->channel(0).m_audio = 0;
        runView(kPitchCommandText, *m_view);
        QVERIFY(CPitchFrame::of(m_doc.get()) == nullptr);
        QCOMPARE(m_messages.texts().size(), std::size_t(1));
        QCOMPARE(QString::fromStdString(m_messages.texts()[0]), QString(kPitchNoAudioChannel));
    }

    // The worker thread gives the track of the sequential routine bit for
    // bit, for both methods, also on the second run of a window (whatever
    // ran before on that thread).
    void workerTrackEqualsSequentialRoutine() {
        for (auto method : {sonmetra::PitchMethod::Cepstral, sonmetra::PitchMethod::AutoCorrelation}) {
            pitchSettingsInForce().method = method;
            for (int run = 0; run < 2; ++run) {
                runView(kPitchCommandText, *m_view);
                CPitchFrame* frame = CPitchFrame::of(m_doc.get());
                QVERIFY(waitForTrack(frame));
                const PitchResults* r = frame->view()->results();
                QVERIFY(r != nullptr);
                const sonmetra::PitchTrackResult expected = sequentialTrack(*m_doc, pitchSettingsInForce());
                QVERIFY(expected.frameCount > 100);
                QCOMPARE(r->frameCount(), expected.frameCount);
                QVERIFY(sameBits(r->track.track, expected.track));
                QVERIFY(sameBits(r->track.raw, expected.raw));
            }
        }
    }

    // Undo, Paste, Cut, Clear to Reference and Smooth all replace samples:
    // the track follows them.
    void trackFollowsTheEdits() {
        runView(kPitchCommandText, *m_view);
        CPitchFrame* frame = CPitchFrame::of(m_doc.get());
        QVERIFY(waitForTrack(frame));
        CPitchView* pv = frame->view();
        QVERIFY(near(f0At(*pv, 300), 150, 5));
        QVERIFY(near(f0At(*pv, 1100), 300, 8));
        QCOMPARE(f0At(*pv, 700), 0.0);

        // Cut the 150 Hz stretch: 300 Hz comes to the front.
        m_view->mouseDownAtMs(0.0);
        m_view->mouseMoveAtMs(700.0);
        m_view->mouseUpAtMs(700.0);
        QVERIFY(m_view->selectionPresent());
        runView("Cu&t\tCtrl+X", *m_view);
        QVERIFY(frame->computing());
        QVERIFY(waitForTrack(frame));
        QVERIFY(near(f0At(*pv, 300), 300, 8));
        QVERIFY(pv->results()->durationMs < 800);

        // Undo restores it.
        runView("&Undo\tCtrl+Z", *m_view);
        QVERIFY(waitForTrack(frame));
        QVERIFY(near(f0At(*pv, 300), 150, 5));

        // Paste the cut 150 Hz stretch over the 300 Hz one.
        m_view->mouseDownAtMs(800.0);
        m_view->mouseMoveAtMs(1400.0);
        m_view->mouseUpAtMs(1400.0);
        runView("&Paste\tCtrl+V", *m_view);
        QVERIFY(waitForTrack(frame));
        QVERIFY(near(f0At(*pv, 1100), 150, 5));

        // Clearing the voiced stretch to the reference silences its track.
        m_view->mouseDownAtMs(100.0);
        m_view->mouseMoveAtMs(500.0);
        m_view->mouseUpAtMs(500.0);
        runView("Clear to Reference", *m_view);
        QVERIFY(waitForTrack(frame));
        QCOMPARE(f0At(*pv, 300), 0.0);
        QVERIFY(m_messages.texts().empty());

        // Smooth replaces the samples of the channels it smooths: a new track.
        const PitchResults* beforeSmooth = pv->results();
        m_messages.queueAnswer(sonmetra::MsgAnswer::No);  // no saving first
        runView("Smooth\tCtrl+K", *m_view);
        QVERIFY(frame->computing());
        QVERIFY(waitForTrack(frame));
        QVERIFY(pv->results() != nullptr && pv->results() != beforeSmooth);
        QCOMPARE(m_messages.texts().size(), std::size_t(1));  // the question only
    }

    // Cancel keeps the track shown before, or none; nothing of the cancelled
    // computation (a lowered window length included) comes into force.
    void cancelLeavesTheStateBefore() {
        auto longDoc = voiceDocument({{120000, 150}});
        CKestruneView view(longDoc.get());
        auto& settings = pitchSettingsInForce();

        runView(kPitchCommandText, view);
        CPitchFrame* frame = CPitchFrame::of(longDoc.get());
        QVERIFY(frame->computing());
        QVERIFY(frame->progressDialog() != nullptr);
        QPushButton* cancel = frame->progressDialog()->findChild<QPushButton*>();
        QVERIFY(cancel != nullptr);
        cancel->click();
        QVERIFY(waitForTrack(frame));
        QVERIFY(frame->view()->results() == nullptr);
        QCOMPARE(frame->view()->message(), QString("Cancelled: no pitch track"));
        QVERIFY(frame->progressDialog() == nullptr);

        frame->view()->resize(600, 400);
        settings.stepMs = 200;  // a quick track to keep
        frame->computePitchTrack();
        QVERIFY(waitForTrack(frame));
        const PitchResults* kept = frame->view()->results();
        QVERIFY(kept != nullptr);
        const QImage before = frame->view()->grab().toImage();

        settings.stepMs = 10;
        settings.windowMs = 1000;  // would be lowered to 371 ms
        frame->computePitchTrack();
        frame->cancelComputation();
        QVERIFY(waitForTrack(frame));
        QCOMPARE(frame->view()->results(), kept);
        QCOMPARE(settings.windowMs, 1000);
        QVERIFY(frame->view()->message().isEmpty());
        QCOMPARE(frame->view()->grab().toImage(), before);
        QVERIFY(m_messages.texts().empty());
        delete frame;
    }

    void loweredWindowLengthStaysInForce() {
        pitchSettingsInForce().windowMs = 1000;  // 11025 points at 11025 Hz
        runView(kPitchCommandText, *m_view);
        CPitchFrame* frame = CPitchFrame::of(m_doc.get());
        QVERIFY(waitForTrack(frame));
        QCOMPARE(pitchSettingsInForce().windowMs, 371);  // cut(1000 / 11025 × 4096)
        QCOMPARE(frame->view()->results()->track.windowSamples, 4090);
        QCOMPARE(frame->view()->results()->track.fftSize, 4096);
    }

    void logRowsOfAKnownVoice() {
        runView(kPitchCommandText, *m_view);
        CPitchFrame* frame = CPitchFrame::of(m_doc.get());
        QVERIFY(waitForTrack(frame));
        CPitchView& pv = *frame->view();
        m_view->mouseDownAtMs(304.0);
        m_view->mouseUpAtMs(304.0);
        QVERIFY(pv.cursorMs().has_value());
        // No log open: the entries are disabled.
        QVERIFY(!pitchEnabled(kMarker, pv) && !pitchEnabled(kAll, pv));

        CFormLog log;
        log.makeActive();
        QVERIFY(pitchEnabled(kMarker, pv) && !pitchEnabled(kSelection, pv));
        runPitch(kMarker, pv);
        QCOMPARE(log.entryCount(), 1);
        auto rows = log.rows();
        QCOMPARE(QString::fromStdString(rows[1][1].text), QString(kPitchMarkerEntry));
        const double t = rows[1][2].value, f0 = rows[1][3].value, db = rows[1][4].value;
        const double stepMs = 110.25 * 1000.0 / kRateHz;  // 10 ms step of whole samples' worth
        QVERIFY(t <= *pv.cursorMs() && *pv.cursorMs() < t + stepMs);
        QVERIFY2(near(f0, 150.0, 3.0), qPrintable(QString::number(f0)));
        const double expectedDb = 10.0 * std::log10(voicedPower(150.0, 6000.0));
        QVERIFY2(near(db, expectedDb, 0.5), qPrintable(QString("%1 vs %2").arg(db).arg(expectedDb)));

        // A selection: one row per frame that starts in it.
        m_view->mouseDownAtMs(900.0);
        m_view->mouseMoveAtMs(1100.0);
        m_view->mouseUpAtMs(1100.0);
        QVERIFY(pitchEnabled(kSelection, pv) && !pitchEnabled(kMarker, pv));
        runPitch(kSelection, pv);
        rows = log.rows();
        const auto sel = pv.selectionMs();
        const int first = pv.results()->frameAt(sel->first);
        int expectedRows = 0;
        for (int i = first; i < pv.results()->frameCount() && pv.results()->frameMs(i) < sel->second; ++i)
            ++expectedRows;
        QVERIFY(expectedRows >= 19);
        QCOMPARE(log.entryCount(), 1 + expectedRows);
        for (int r = 2; r < 2 + expectedRows; ++r) {
            QCOMPARE(QString::fromStdString(rows[r][1].text), QString(kPitchSelectionEntry));
            QVERIFY(near(rows[r][2].value, pv.results()->frameMs(first + r - 2), 1e-9));
            QVERIFY(near(rows[r][3].value, 300.0, 8.0));
        }

        runPitch(kAll, pv);
        QCOMPARE(log.entryCount(), 1 + expectedRows + pv.results()->frameCount());
        rows = log.rows();
        // The silent stretch: no pitch and no level.
        const int silent = pv.results()->frameAt(700.0);
        const auto& row = rows[static_cast<std::size_t>(2 + expectedRows + silent)];
        QCOMPARE(QString::fromStdString(row[1].text), QString(kPitchAllEntry));
        QCOMPARE(row[3].value, 0.0);
        QCOMPARE(row[4].value, 0.0);
        log.markClosed();
    }

    // Cursor and selection are the document's: the waveform view's steps
    // reach the pitch view, and a click in the pitch view moves the
    // waveform view's cursor.
    void cursorIsSharedWithTheWaveformView() {
        runView(kPitchCommandText, *m_view);
        CPitchFrame* frame = CPitchFrame::of(m_doc.get());
        QVERIFY(waitForTrack(frame));
        CPitchView& pv = *frame->view();
        pv.resize(700, 450);
        m_view->mouseDownAtMs(500.0);
        m_view->mouseUpAtMs(500.0);
        QVERIFY(near(*pv.cursorMs(), m_view->cursorMs(), 1e-9));

        const PitchLayout l = pv.layout();
        const int x = static_cast<int>(l.axis.msToX(1000.0));
        QTest::mouseClick(&pv, Qt::LeftButton, {}, QPoint(x, l.pitch.center().y()));
        QVERIFY(m_view->cursorPlaced());
        // The waveform view places it at its own pixel nearest the time.
        const double msPerPx = m_doc->channel(0).m_durationMs / m_view->traceArea().width();
        QVERIFY(near(m_view->cursorMs(), 1000.0, 2 * msPerPx + 2 * l.axis.lengthMs() / l.axis.right));
        QCOMPARE(*pv.cursorMs(), m_view->cursorMs());

        // Zooming the pitch view leaves the waveform view's range alone.
        const double viewEnd = m_doc->channel(0).m_viewEndMs;
        pv.zoom(1);
        QVERIFY(near(pv.endMs() - pv.startMs(), m_doc->channel(0).m_durationMs / 2, 1e-6));
        QCOMPARE(m_doc->channel(0).m_viewEndMs, viewEnd);
        QVERIFY(pv.scrollable());
        pv.zoom(5);
        QVERIFY(!pv.scrollable());
    }

    // Failures of the routine show "Error in Pitch routine" and leave no
    // track. The routine chooses its transform size itself (1024, 2048 or
    // 4096 points), so settings reach it as values it refuses: a window or a
    // step of 0 ms, read from a configuration file.
    void settingsTheRoutineRefusesShowItsError() {
        runView(kPitchCommandText, *m_view);
        CPitchFrame* frame = CPitchFrame::of(m_doc.get());
        QVERIFY(waitForTrack(frame));
        QVERIFY(frame->view()->results() != nullptr);

        for (int field = 0; field < 2; ++field) {
            sonmetra::AppConfig written;
            (field == 0 ? written.m_analysis.pitch.windowMs : written.m_analysis.pitch.stepMs) = 0;
            const std::string path = m_services->folder.filePath("refused.cfg").toStdString();
            QVERIFY(written.writeFile(path));
            QVERIFY(m_services->config.readFile(path));
            m_messages.clear();
            runView(kPitchCommandText, *m_view);
            QVERIFY(waitForTrack(frame));
            QCOMPARE(m_messages.texts().size(), std::size_t(1));
            QCOMPARE(QString::fromStdString(m_messages.texts()[0]), QString("Error in Pitch routine"));
            QVERIFY(frame->view()->results() == nullptr);
            QVERIFY(!pitchEnabled("Export Track...", *frame->view()));
            m_services->config.m_analysis.pitch = sonmetra::PitchSettings{};
        }
    }

private:
    std::unique_ptr<CKestruneView> m_view;
};

QTEST_MAIN(PitchWindowTest)
#include "PitchWindowTest.moc"
