// The spectrogram window driven like a user would, offscreen: the commands
// that open it, its cursor and readouts, the waveform view's cursor, the
// log rows, cancelling, resizing, exporting the formants and the render
// path against the window.
#include <QCheckBox>
#include <QFile>
#include <QMouseEvent>
#include <QProgressDialog>
#include <QPushButton>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include "SpectrogramFixture.h"
#include "VowelSynth.h"
#include "frame/SpectrogramOptionDialog.h"
#include "log/CFormLog.h"
#include "view/CKestruneView.h"
#include "view/DocumentWindows.h"
#include "view/FileDialogs.h"
#include "view/RenderKinds.h"
#include "view/TimeBase.h"
#include "view/spectrogram/CSpectrogramFrame.h"
#include "view/spectrogram/CSpectrogramView.h"
#include "view/spectrogram/SpectrogramReadoutBar.h"

namespace {

using sgtest::audioDocument;
using sgtest::sweep;

class SpectrogramWindow : public ::testing::Test {
protected:
    static void SetUpTestSuite() { registerSpectrogramWindow(); }

    void SetUp() override {
        doc = audioDocument(sweep(11025.0, 2.0, 300.0, 3000.0), 11025.0);
        waveform = sonmetra::test::shownView(doc.get(), QSize(800, 300));
        ASSERT_TRUE(QTest::qWaitForWindowExposed(waveform.get()));
    }
    void TearDown() override {
        if (CSpectrogramFrame* f = CSpectrogramFrame::of(doc.get())) delete f;
        waveform.reset();
    }

    CSpectrogramFrame* runAnalysis(const QString& text) {
        const ViewCommand& c = sgtest::viewCommand(text);
        EXPECT_TRUE(!c.enabled || c.enabled(*waveform)) << text.toStdString();
        c.run(*waveform);
        return CSpectrogramFrame::of(doc.get());
    }
    bool windowEnabled(const QString& text, const CSpectrogramView& v) {
        const WindowCommand& c = sgtest::windowCommand(text);
        return c.enabled && c.enabled(v);
    }
    void runWindow(const QString& text, CSpectrogramView& v) { sgtest::windowCommand(text).run(v); }

    // Mouse steps at a picture position.
    static void mouse(CSpectrogramView& v, QEvent::Type type, QPoint at, Qt::MouseButtons buttons) {
        QMouseEvent e(type, at, v.mapToGlobal(at), type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, buttons,
                      Qt::NoModifier);
        QApplication::sendEvent(&v, &e);
    }
    static SpectrogramLayout layoutOf(const CSpectrogramView& v) {
        return spectrogramLayout(v.pictureRect().size(), v.data()->settings);
    }

    sgtest::Settings settings;
    std::unique_ptr<sonmetra::CKestruneDoc> doc;
    std::unique_ptr<CKestruneView> waveform;
};

TEST_F(SpectrogramWindow, CommandsOpenOneWindowOverTheirRanges) {
    sonmetra::CChannel& audio = doc->channel(0);
    EXPECT_FALSE(sgtest::viewCommand("Spectrogram Selection\tCtrl+H").enabled(*waveform));

    CSpectrogramFrame* frame = runAnalysis("Spectrogram All\tCtrl+G");
    ASSERT_NE(frame, nullptr);
    EXPECT_EQ(frame->windowTitle(), QString("speech.kvd::Spectrogram"));
    EXPECT_EQ(frame->view()->data()->range.startSample, 0.0);
    EXPECT_EQ(frame->view()->data()->range.endSample, audio.m_sampleCount);

    timebase::selectRange(*doc, 500.0, 900.0);
    waveform->setSelectionPresent(true);
    EXPECT_EQ(runAnalysis("Spectrogram Selection\tCtrl+H"), frame);
    EXPECT_EQ(frame->view()->data()->range.startSample, audio.m_selStartSample);
    EXPECT_EQ(frame->view()->data()->range.endSample, audio.m_selEndSample);
    EXPECT_NEAR(frame->view()->data()->range.startMs(), 500.0, 0.1);
    // The window shows the waveform view's selection as its own.
    ASSERT_TRUE(frame->view()->selectionMs().has_value());
    EXPECT_DOUBLE_EQ(frame->view()->selectionMs()->first, audio.m_selStartMs);
    EXPECT_DOUBLE_EQ(frame->view()->selectionMs()->second, audio.m_selEndMs);

    waveform->zoom(3);  // the selection becomes the displayed range
    waveform->zoom(2);  // and twice as long about its centre
    EXPECT_EQ(runAnalysis("Spectrogram Window"), frame);
    EXPECT_EQ(frame->view()->data()->range.startSample, audio.m_viewStartSample);
    EXPECT_EQ(frame->view()->data()->range.endSample, audio.m_viewEndSample);
    EXPECT_NEAR(frame->view()->data()->range.lengthMs(), 800.0, 0.2);
    EXPECT_TRUE(settings.messages.texts().empty());
}

TEST_F(SpectrogramWindow, DocumentWithoutAudioChannelIsRefusedWithAMessage) {
    doc->channel(0).m_audio = 0;
    EXPECT_EQ(runAnalysis("Spectrogram All\tCtrl+G"), nullptr);
    EXPECT_EQ(settings.messages.lastText(), std::string(kNoAudioChannelText));
    RenderRequest request;
    request.doc = doc.get();
    EXPECT_EQ(renderFactory("spectrogram")(request), nullptr);
}

TEST_F(SpectrogramWindow, MouseSetsCursorsSelectionReadoutsAndTheWaveformsCursor) {
    CSpectrogramView& v = *runAnalysis("Spectrogram All\tCtrl+G")->view();
    const SpectrogramLayout l = layoutOf(v);
    const double rangeHz = v.data()->settings.frequencyRangeHz;
    const QPoint at(static_cast<int>(l.msToX(1000.0, 0.0, 2000.0)), static_cast<int>(l.hzToY(2000.0, rangeHz)));

    mouse(v, QEvent::MouseMove, at, Qt::NoButton);
    const QString time = v.readoutBar()->timeText(), frequency = v.readoutBar()->frequencyText();
    ASSERT_TRUE(time.startsWith("Time (ms) =  ")) << time.toStdString();
    EXPECT_NEAR(time.mid(13).toDouble(), 1000.0, 2000.0 / l.image.width() + 0.01);
    ASSERT_TRUE(frequency.startsWith("Frequency (Hz) =  "));
    EXPECT_NEAR(frequency.mid(18).toDouble(), 2000.0, rangeHz / l.image.height() + 1.0);
    EXPECT_FALSE(v.cursorMs().has_value());

    mouse(v, QEvent::MouseButtonPress, at, Qt::LeftButton);
    mouse(v, QEvent::MouseButtonRelease, at, Qt::NoButton);
    ASSERT_TRUE(v.cursorMs().has_value());
    ASSERT_TRUE(v.cursorHz().has_value());
    EXPECT_NEAR(*v.cursorMs(), 1000.0, 2000.0 / l.image.width());
    EXPECT_NEAR(*v.cursorHz(), 2000.0, rangeHz / l.image.height() + 1.0);
    // The waveform view's cursor went along.
    EXPECT_TRUE(waveform->cursorPlaced());
    EXPECT_NEAR(doc->channel(0).m_cursorMs, *v.cursorMs(), 2000.0 / waveform->traceArea().width() + 0.1);

    // A drag of six pixels or more selects.
    const QPoint end = at + QPoint(60, 0);
    mouse(v, QEvent::MouseButtonPress, at, Qt::LeftButton);
    mouse(v, QEvent::MouseMove, end, Qt::LeftButton);
    mouse(v, QEvent::MouseButtonRelease, end, Qt::NoButton);
    ASSERT_TRUE(v.selectionMs().has_value());
    const double lengthMs = v.selectionMs()->second - v.selectionMs()->first;
    EXPECT_NEAR(lengthMs, 60.0 * 2000.0 / l.image.width(), 0.1);
    EXPECT_EQ(v.readoutBar()->durationText(), "Duration (ms) =  " + QString::number(lengthMs, 'f', 2));
    const QStringList captions{"Sample Rate (Hz) = 11025",   "LPC Coefficients  = 14",  "Bandwidth (Hz) =  86",
                               "Window Length (pts) =  128", "Dynamic range (dB) = 35", "PreEmphasis = 0.98"};
    for (const QString& caption : captions)
        EXPECT_TRUE(v.readoutBar()->texts().contains(caption)) << caption.toStdString();
}

TEST_F(SpectrogramWindow, FollowsTheWaveformViewsCursorAndSelection) {
    CSpectrogramView& v = *runAnalysis("Spectrogram All\tCtrl+G")->view();
    waveform->mouseDownAtMs(700.0);
    waveform->mouseUpAtMs(700.0);
    ASSERT_TRUE(v.cursorMs().has_value());
    EXPECT_NEAR(*v.cursorMs(), doc->channel(0).m_cursorMs, 1e-9);
    EXPECT_NEAR(*v.cursorMs(), 700.0, 5.0);

    waveform->mouseDownAtMs(400.0);
    waveform->mouseMoveAtMs(1200.0);
    waveform->mouseUpAtMs(1200.0);
    ASSERT_TRUE(v.selectionMs().has_value());
    EXPECT_DOUBLE_EQ(v.selectionMs()->first, doc->channel(0).m_selStartMs);
    EXPECT_DOUBLE_EQ(v.selectionMs()->second, doc->channel(0).m_selEndMs);
}

TEST_F(SpectrogramWindow, LogCommandsSendTheirRows) {
    settings.spectrogram().displayFormants = 1;
    CSpectrogramView& v = *runAnalysis("Spectrogram All\tCtrl+G")->view();
    v.placeCursor(1000.0, 1500.0);
    EXPECT_FALSE(windowEnabled("Enter at Marker\tCtrl+T", v));  // no log open

    CFormLog log;
    log.makeActive();
    ASSERT_TRUE(windowEnabled("Enter at Marker\tCtrl+T", v));
    EXPECT_FALSE(windowEnabled("Enter Duration\tCtrl+D", v));
    runWindow("Enter at Marker\tCtrl+T", v);
    runWindow("Enter Formants at Marker\tCtrl+J", v);
    v.select(500.0, 520.0);
    runWindow("Enter Duration\tCtrl+D", v);
    runWindow("Enter Formants Selection", v);

    const auto rows = log.rows();
    auto text = [&](std::size_t r) { return rows[r][1].text; };
    auto number = [&](std::size_t r, std::size_t c) { return rows[r][c].value; };
    ASSERT_GE(rows.size(), 5u);  // headings, then the entries
    EXPECT_EQ(text(1), "Spec. Marker Entry: time, frequency");
    EXPECT_DOUBLE_EQ(number(1, 2), 1000.0);
    EXPECT_DOUBLE_EQ(number(1, 3), 1500.0);
    EXPECT_EQ(text(2), "Spec. Formants Marker Entry: time, F1, F2, F3, F4, F5");
    const SpectrogramData& data = *v.data();
    const int column = data.columnAt(1000.0);
    EXPECT_DOUBLE_EQ(number(2, 2), data.columnTimeMs(column));
    for (std::size_t k = 0; k < 5; ++k) EXPECT_DOUBLE_EQ(number(2, 3 + k), data.formantsAt(column)[k]);
    EXPECT_EQ(text(3), "Spec. Duration Entry: start, end, duration");
    EXPECT_DOUBLE_EQ(number(3, 2), 500.0);
    EXPECT_DOUBLE_EQ(number(3, 3), 520.0);
    EXPECT_DOUBLE_EQ(number(3, 4), 20.0);
    // One formant row per column that starts inside the selection.
    int inside = 0;
    for (int i = 0; i < data.columns(); ++i) inside += data.columnTimeMs(i) >= 500.0 && data.columnTimeMs(i) <= 520.0;
    ASSERT_GT(inside, 1);
    ASSERT_EQ(rows.size(), 4u + inside);
    for (std::size_t r = 4; r < rows.size(); ++r) {
        EXPECT_EQ(text(r), "Spec. Formants Duration Entry: time, F1, F2, F3, F4, F5");
        EXPECT_GE(number(r, 2), 500.0);
        EXPECT_LE(number(r, 2), 520.0);
    }
    log.markClosed();
}

TEST_F(SpectrogramWindow, CancelLeavesNoNewWindowAndKeepsAnOldPicture) {
    CSpectrogramView::setProgressDelayMs(0);
    bool dialogSeen = false;
    // Clicks the Cancel button of the progress dialog of the document's
    // window halfway through its computation.
    CSpectrogramView::setProgressObserver([&](int done, int total) {
        CSpectrogramFrame* frame = CSpectrogramFrame::of(doc.get());
        if (frame == nullptr || done < total / 2) return;
        auto* dialog = frame->view()->findChild<QProgressDialog*>();
        if (dialog == nullptr || !dialog->isVisible()) return;
        dialogSeen = true;
        for (auto* button : dialog->findChildren<QPushButton*>())
            if (button->text() == "Cancel") QTest::mouseClick(button, Qt::LeftButton);
    });
    // A new window: the command is abandoned and the window goes.
    EXPECT_EQ(runAnalysis("Spectrogram All\tCtrl+G"), nullptr);
    EXPECT_TRUE(dialogSeen);
    EXPECT_EQ(attachedWindow(doc.get(), windowrole::kSpectrogram), nullptr);

    // An open window: a cancelled recomputation keeps its picture.
    CSpectrogramView::setProgressDelayMs(100000);
    CSpectrogramFrame* frame = runAnalysis("Spectrogram All\tCtrl+G");
    ASSERT_NE(frame, nullptr);
    const SpectrogramData* before = frame->view()->data();
    const int columns = before->columns();
    CSpectrogramView::setProgressDelayMs(0);
    dialogSeen = false;
    settings.spectrogram().dynamicRangeDb = 50;
    EXPECT_FALSE(frame->view()->recompute());
    EXPECT_TRUE(dialogSeen);
    EXPECT_EQ(frame->view()->data(), before);
    EXPECT_EQ(frame->view()->data()->columns(), columns);
    EXPECT_EQ(frame->view()->data()->settings.dynamicRangeDb, 35);
    CSpectrogramView::setProgressObserver({});
    CSpectrogramView::setProgressDelayMs(500);
    EXPECT_TRUE(settings.messages.texts().empty());
}

TEST_F(SpectrogramWindow, ResizeRecomputesForTheNewAreaOnceSettled) {
    CSpectrogramFrame* frame = runAnalysis("Spectrogram All\tCtrl+G");
    frame->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(frame));
    CSpectrogramView& v = *frame->view();
    v.recompute();
    const int before = v.data()->columns();
    frame->resize(frame->width() - 200, frame->height());
    frame->resize(frame->width() - 100, frame->height());
    QTest::qWait(50);
    EXPECT_EQ(v.data()->columns(), before);  // not yet: the size may still change
    QTest::qWait(600);
    EXPECT_EQ(v.data()->columns(), layoutOf(v).image.width());
    EXPECT_EQ(v.data()->points(), layoutOf(v).image.height());
}

TEST_F(SpectrogramWindow, WindowAndRenderShowTheSamePicture) {
    settings.spectrogram().displayFormants = 1;
    settings.spectrogram().frequencyGrid = 1;
    settings.spectrogram().timeGrid = 1;
    CSpectrogramFrame* frame = runAnalysis("Spectrogram All\tCtrl+G");
    frame->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(frame));
    CSpectrogramView& v = *frame->view();
    v.recompute();
    const QRect picture = v.pictureRect();
    const QImage shot = v.grab(picture).toImage().convertToFormat(QImage::Format_RGB32);

    RenderRequest request;
    request.doc = doc.get();
    request.size = picture.size();
    auto rendered = renderFactory("spectrogram")(request);
    ASSERT_NE(rendered, nullptr);
    const QImage image = rendered->clientImage(picture.size()).convertToFormat(QImage::Format_RGB32);
    ASSERT_EQ(shot.size(), image.size());
    EXPECT_TRUE(shot == image);
}

TEST_F(SpectrogramWindow, ExportFormantsWritesOneLinePerColumn) {
    sonmetra::synth::VowelRecipe vowel;
    auto vowelDoc = audioDocument(sonmetra::synth::synthesizeVowel(vowel), vowel.rateHz);
    CSpectrogramView bare(vowelDoc.get());
    EXPECT_FALSE(windowEnabled("Export Formants...", bare));
    settings.spectrogram().displayFormants = 1;
    CSpectrogramFrame* frame =
        CSpectrogramFrame::open(*vowelDoc, SpectrogramRange::whole(vowelDoc->channel(0)), nullptr);
    ASSERT_NE(frame, nullptr);
    CSpectrogramView& v = *frame->view();
    ASSERT_TRUE(windowEnabled("Export Formants...", v));

    QTemporaryDir dir;
    sonmetra::test::AnsweringFileDialogs dialogs;
    dialogs.path = dir.filePath("formants.txt");
    IFileDialogs* previous = setFileDialogs(&dialogs);
    runWindow("Export Formants...", v);
    setFileDialogs(previous);
    EXPECT_EQ(dialogs.titles(), QStringList{"Export Formants"});

    QFile file(dialogs.path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QStringList lines = QString::fromLatin1(file.readAll()).split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), v.data()->columns() + 1);
    EXPECT_EQ(lines[0], "time_ms\tF1\tF2\tF3\tF4\tF5");
    const int middle = v.data()->columns() / 2;
    const QStringList fields = lines[middle + 1].split('\t');
    ASSERT_EQ(fields.size(), 6);
    EXPECT_DOUBLE_EQ(fields[0].toDouble(), v.data()->columnTimeMs(middle));
    for (int k = 0; k < 5; ++k) EXPECT_EQ(fields[k + 1].toInt(), v.data()->formantsAt(middle)[k]);
    EXPECT_NEAR(fields[1].toDouble(), 730.0, 100.0);
    delete frame;
}

TEST_F(SpectrogramWindow, ReplacedSamplesLimitTheRangeAndRecompute) {
    CSpectrogramFrame* frame = runAnalysis("Spectrogram All\tCtrl+G");
    ASSERT_NE(frame, nullptr);
    sonmetra::CChannel& audio = doc->channel(0);
    (void)audio.m_samples.resize(11025);  // one second is left
    audio.setSampleCountFromBlock();
    audio.resetDisplayToWhole();
    documentReplaced(doc.get());
    EXPECT_EQ(frame->view()->data()->range.endSample, 11025.0);
    EXPECT_EQ(frame->view()->data()->range.totalSamples, 11025.0);
}

TEST_F(SpectrogramWindow, OptionDialogOkRecomputesTheOpenWindow) {
    CSpectrogramFrame* frame = runAnalysis("Spectrogram All\tCtrl+G");
    ASSERT_NE(frame, nullptr);
    QTimer::singleShot(0, [] {
        auto* dialog = qobject_cast<SpectrogramOptionDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        dialog->findChild<QSpinBox*>("dynamicRange")->setValue(60);
        dialog->findChild<QCheckBox*>("displayFormants")->setChecked(true);
        dialog->accept();
    });
    sgtest::windowCommand("Spectrogram...").run(*frame->view());
    EXPECT_EQ(frame->view()->data()->settings.dynamicRangeDb, 60);
    EXPECT_TRUE(frame->view()->data()->formantsTracked);
    EXPECT_EQ(settings.config.m_analysis.spectrogram.dynamicRangeDb, 60);
}

}  // namespace
