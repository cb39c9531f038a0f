// The FFT/LPC spectrum window driven offscreen: its opening commands, its
// readouts against the analysis library's own numbers, the log rows, Copy,
// and its picture (where a pure tone's peak lands, and that the window, the
// render kind and `sonmetra --render spectrum` show the same picture).
#include <QClipboard>
#include <QMouseEvent>

#include "SpectrumFixture.h"
#include "analysis/FftSpectrum.h"
#include "analysis/LpcSpectrum.h"
#include "analysis/SpectrumWindow.h"
#include "document/MessageService.h"
#include "log/CFormLog.h"
#include "view/CKestruneView.h"
#include "view/DocumentWindows.h"
#include "view/FileDialogs.h"
#include "view/PictureOutput.h"
#include "view/RenderKinds.h"
#include "view/TimeBase.h"
#include "view/spectrum/CFFTLPCFrame.h"
#include "view/spectrum/CFFTLPCView.h"
#include "view/spectrum/SpectrumPlotWidget.h"
#include "view/spectrum/SpectrumReadoutBar.h"

using namespace spectrumtest;
using Readout = SpectrumReadoutBar::Readout;

namespace {

// The library's computation of the window at [start, end], independent of the view.
sonmetra::SpectrumWindowState libraryState(const sonmetra::CChannel& ch, double start, double end,
                                           const sonmetra::FftLpcSettings& settings) {
    sonmetra::SpectrumWindowInput in;
    in.samples = ch.m_samples.data();
    in.sampleCount = ch.m_sampleCount;
    in.startSample = start;
    in.endSample = end;
    in.rateHz = ch.m_rateHz;
    sonmetra::SpectrumWindowState state;
    sonmetra::AnalysisWorkspace ws;
    if (sonmetra::ComputeSpectrumWindow(in, settings, {}, state, {}, ws) != sonmetra::AnalysisStatus::Ok)
        qFatal("library computation failed");
    return state;
}

CFFTLPCView* openAt(CKestruneView& view, double ms) {
    timebase::placeCursor(*view.document(), ms);
    view.setCursorPlaced(true);
    viewCommand("FFT/LPC\tCtrl+F").run(view);
    auto* frame = qobject_cast<CFFTLPCFrame*>(attachedWindow(view.document(), windowrole::kSpectrum));
    return frame ? frame->view() : nullptr;
}

}  // namespace

class SpectrumWindowTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { registerAll(); }

    void commandsFollowDataCursorAndSelection() {
        auto doc = makeDocument(sonmetra::synth::synthesizeVowel(vowelRecipe()), 11025.0);
        CKestruneView view(doc.get());
        const ViewCommand& cursor = viewCommand("FFT/LPC\tCtrl+F");
        const ViewCommand& selection = viewCommand("FFT/LPC Selection");
        QCOMPARE(cursor.menu, QString("&Analysis"));
        QCOMPARE(cursor.statusTip, QString("Perform FFT & LPC analysis\nFFT/LPC"));
        QCOMPARE(selection.statusTip, QString("Perform average FFT & LPC analysis for a selection\nFFT/LPC average"));
        QVERIFY(!cursor.enabled(view));
        QVERIFY(!selection.enabled(view));
        QVERIFY(viewCommand("FFT/LPC...").enabled(view));
        QVERIFY(viewCommand("Log...").enabled(view));

        timebase::placeCursor(*doc, 200.0);
        view.setCursorPlaced(true);
        QVERIFY(cursor.enabled(view));
        QVERIFY(!selection.enabled(view));
        timebase::selectRange(*doc, 100.0, 300.0);
        view.setSelectionPresent(true);
        QVERIFY(selection.enabled(view));

        doc->setHoldsData(false);
        for (const char* text : {"FFT/LPC\tCtrl+F", "FFT/LPC Selection", "FFT/LPC...", "Log..."})
            QVERIFY2(!viewCommand(text).enabled(view), qPrintable(text));
    }

    // One window per document and kind: the command again reuses it at the new cursor.
    void windowsAreReusedPerRoleAndComputeTheLibrarysSpectrum() {
        RateConfig config;
        sonmetra::RecordingMessageService messages;
        sonmetra::ScopedMessageService scoped(&messages);
        auto doc = makeDocument(sonmetra::synth::synthesizeVowel(vowelRecipe()), 11025.0);
        CKestruneView view(doc.get());
        CFFTLPCView* first = openAt(view, 200.0);
        QVERIFY(first != nullptr);
        QCOMPARE(first->window()->windowTitle(), QString("vowel.kvd::FFT/LPC"));
        const sonmetra::CChannel& audio = doc->channel(0);
        const double at = audio.m_cursorSample;
        QCOMPARE(first->result().startSample, at);
        QCOMPARE(first->result().frames, 1);

        CFFTLPCView* again = openAt(view, 600.0);
        QCOMPARE(again, first);
        QCOMPARE(again->result().startSample, audio.m_cursorSample);
        // Levels are the library's raw values less the window's gain.
        const auto state =
            libraryState(audio, audio.m_cursorSample, audio.m_cursorSample, config.config.m_analysis.fftLpc);
        QCOMPARE(again->result().bins(), 128);
        for (int k = 0; k < 128; ++k)
            QVERIFY(std::abs(again->result().levelDb[k] - (state.spectrum[k] - windowGainDb(256))) < 1e-9);

        timebase::selectRange(*doc, 100.0, 400.0);
        view.setSelectionPresent(true);
        viewCommand("FFT/LPC Selection").run(view);
        auto* average = qobject_cast<CFFTLPCFrame*>(attachedWindow(doc.get(), windowrole::kAverageSpectrum));
        QVERIFY(average != nullptr);
        QVERIFY(average->view() != first);
        QCOMPARE(average->windowTitle(), QString("vowel.kvd::Average FFT/LPC"));
        const auto mean =
            libraryState(audio, audio.m_selStartSample, audio.m_selEndSample, config.config.m_analysis.fftLpc);
        QCOMPARE(average->view()->result().frames, mean.frames);
        QVERIFY(mean.frames > 20);
        QVERIFY2(std::abs(average->view()->result().levelDb[20] - (mean.spectrum[20] - windowGainDb(256))) < 1e-9,
                 qPrintable(QString("%1 %2")
                                .arg(average->view()->result().levelDb[20])
                                .arg(mean.spectrum[20] - windowGainDb(256))));

        // Undo, Paste and the like replace the samples: both windows follow.
        for (std::size_t i = 0; i < audio.m_samples.size(); ++i) doc->channel(0).m_samples[i] /= 10;
        documentReplaced(doc.get());
        QVERIFY(std::abs(first->result().levelDb[20] - (state.spectrum[20] - 20.0 - windowGainDb(256))) < 0.2);
        QVERIFY(messages.texts().empty());
        delete average;
        delete first->window();
        QVERIFY(attachedWindow(doc.get(), windowrole::kSpectrum) == nullptr);
    }

    // A selection long enough for the progress dialog is computed whole.
    void aLongSelectionRunsThroughTheProgressDialog() {
        RateConfig config;
        config.config.m_analysis.fftLpc.averageStepMs = 1;
        auto recipe = vowelRecipe();
        recipe.seconds = 25.0;
        auto doc = makeDocument(sonmetra::synth::synthesizeVowel(recipe), 11025.0);
        CKestruneView view(doc.get());
        timebase::selectRange(*doc, 0.0, 24000.0);
        view.setSelectionPresent(true);
        viewCommand("FFT/LPC Selection").run(view);
        auto* frame = qobject_cast<CFFTLPCFrame*>(attachedWindow(doc.get(), windowrole::kAverageSpectrum));
        QVERIFY(frame != nullptr);
        const sonmetra::CChannel& audio = doc->channel(0);
        const auto state =
            libraryState(audio, audio.m_selStartSample, audio.m_selEndSample, config.config.m_analysis.fftLpc);
        QVERIFY(state.frames > 20000);
        QCOMPARE(frame->view()->result().frames, state.frames);
        QVERIFY(std::abs(frame->view()->result().levelDb[16] - (state.spectrum[16] - windowGainDb(256))) < 1e-9);
        delete frame;
    }

    void aDocumentWithoutAudioGetsAMessageAndNoWindow() {
        sonmetra::RecordingMessageService messages;
        sonmetra::ScopedMessageService scoped(&messages);
        auto doc = makeDocument(sonmetra::synth::synthesizeVowel(vowelRecipe()), 11025.0, false);
        CKestruneView view(doc.get());
        QVERIFY(openAt(view, 200.0) == nullptr);
        QCOMPARE(messages.lastText(),
                 std::string("This document has no audio channel.\nThe FFT/LPC spectrum is computed on the audio "
                             "channel only."));
        QCOMPARE(messages.beeps(), 1);
        QVERIFY(attachedWindow(doc.get(), windowrole::kSpectrum) == nullptr);
        // The waveform view goes on working.
        view.zoom(1);
        QVERIFY(doc->channel(0).viewLengthSamples() < doc->channel(0).m_sampleCount);
    }

    void readoutsAndFormantsOfAVowelAreTheLibrarys() {
        RateConfig config;
        auto doc = makeDocument(sonmetra::synth::synthesizeVowel(vowelRecipe()), 11025.0);
        CKestruneView view(doc.get());
        CFFTLPCView* spectrum = openAt(view, 400.0);
        QVERIFY(spectrum != nullptr);
        const SpectrumReadoutBar* bar = spectrum->readoutBar();
        QCOMPARE(bar->text(Readout::SampleRate), QString("Sample Rate (Hz) = 11025"));
        QCOMPARE(bar->text(Readout::LpcCoefficients), QString("LPC Coefficients  = 14"));
        QCOMPARE(bar->text(Readout::Bandwidth), QString("Bandwidth (Hz) =  43"));
        QCOMPARE(bar->text(Readout::WindowLength), QString("Window Length (pts) =  256"));
        QCOMPARE(bar->text(Readout::AppliedWindow), QString("Applied Window (ms) =  23"));
        QCOMPARE(bar->text(Readout::AverageStep), QString("Average Step Size (ms) =  10"));
        QCOMPARE(bar->text(Readout::Power), QString("Power (dB) =  "));

        const sonmetra::CChannel& audio = doc->channel(0);
        const auto state =
            libraryState(audio, audio.m_cursorSample, audio.m_cursorSample, config.config.m_analysis.fftLpc);
        QVERIFY(state.formantsFound);
        QString expected = "Formants\t=";
        for (double f : state.formantHz) expected += "\t" + QString::asprintf("%7.1f", f);
        expected += "\nBandwidths\t=";
        for (double b : state.bandwidthHz) expected += "\t" + QString::asprintf("%7.1f", b);
        QCOMPARE(bar->formantText(), expected);
        QVERIFY(std::abs(state.formantHz[0] - 730.0) < 80.0);
        QVERIFY(std::abs(state.formantHz[1] - 1090.0) < 100.0);

        // The envelope is the inverse filter's power turned over: at the bins
        // of LpcSpectrum's own 256-point grid it is the library's value, negated.
        const SpectrumResult& r = spectrum->result();
        const int n = static_cast<int>(11025 * 0.001 * 14);
        std::vector<double> block(600, 0.0);
        for (int i = 0; i < n + 5; ++i) block[i] = audio.m_samples[static_cast<std::size_t>(audio.m_cursorSample) + i];
        sonmetra::AnalysisWorkspace ws;
        sonmetra::LpcSpectrum(block.data(), 14, n, 0.0, 1, 0, 0, 0, 11025.0, 0, 0, ws);
        for (int k = 0; k < 128; ++k) QVERIFY(std::abs(r.inverseFilterDb(k * 11025.0 / 256) + block[k]) < 1e-9);
        // Placed on the dB scale with the spectrum's mean power over bins 1 .. 5000 Hz.
        double spectrumPower = 0.0, envelopePower = 0.0;
        for (int k = 1; k * r.binHz() <= 5000.0; ++k) {
            spectrumPower += std::pow(10.0, r.levelDb[k] / 10.0);
            envelopePower += std::pow(10.0, r.envelopeAt(k * r.binHz()) / 10.0);
        }
        QVERIFY(std::abs(10.0 * std::log10(spectrumPower / envelopePower)) < 1e-9);

        // Power and frequency follow the mouse over the plot.
        spectrum->window()->resize(900, 600);
        spectrum->window()->show();
        QVERIFY(QTest::qWaitForWindowExposed(spectrum->window()));
        SpectrumPlotWidget* plot = spectrum->plot();
        const SpectrumAxes axes = spectrum->axesAt(plot->size());
        const QPoint p(static_cast<int>(std::lround(axes.xOfHz(1000.0))),
                       static_cast<int>(std::lround(axes.yOfLevel(40.0))));
        QMouseEvent move(QEvent::MouseMove, QPointF(p), plot->mapToGlobal(QPointF(p)), Qt::NoButton, Qt::NoButton,
                         Qt::NoModifier);
        QApplication::sendEvent(plot, &move);
        QCOMPARE(bar->text(Readout::Frequency), QString("Frequency (Hz) =  %1").arg(std::lround(axes.hzAtX(p.x()))));
        QCOMPARE(bar->text(Readout::Power), QString("Power (dB) =  %1").arg(std::lround(axes.labelDbAtY(p.y()))));
        QVERIFY(std::abs(axes.hzAtX(p.x()) - 1000.0) < 10.0);
        QVERIFY(plot->noteVisible());
        QVERIFY(plot->noteText().startsWith(QString("%1 Hz\n").arg(std::lround(axes.hzAtX(p.x())))));
        shoot(spectrum->window(), "vowel-window");
        delete spectrum->window();
    }

    void logRowsCarryTheMarkerTheFormantsAndTheFrame() {
        RateConfig config;
        config.config.m_logFrameStepHz = 1000;
        sonmetra::RecordingMessageService messages;
        sonmetra::ScopedMessageService scoped(&messages);
        auto doc = makeDocument(sonmetra::synth::synthesizeVowel(vowelRecipe()), 11025.0);
        CKestruneView view(doc.get());
        CFFTLPCView* spectrum = openAt(view, 300.0);
        QVERIFY(spectrum != nullptr);
        spectrum->window()->resize(900, 600);
        spectrum->window()->show();
        QVERIFY(QTest::qWaitForWindowExposed(spectrum->window()));
        const SpectrumAxes axes = spectrum->axesAt(spectrum->plot()->size());
        QTest::mouseClick(spectrum->plot(), Qt::LeftButton, {},
                          QPoint(static_cast<int>(axes.xOfHz(1500.0)), static_cast<int>(axes.plot().center().y())));
        QVERIFY(spectrum->markerBin().has_value());
        const int bin = *spectrum->markerBin();
        QVERIFY(std::abs(bin * spectrum->result().binHz() - 1500.0) < 30.0);

        const WindowCommand& marker = windowCommand("Enter at Marker\tCtrl+T");
        QVERIFY(!marker.enabled(*spectrum));  // no log open
        CFormLog log;
        log.makeActive();
        QVERIFY(marker.enabled(*spectrum));
        marker.run(*spectrum);
        auto rows = log.rows();
        QCOMPARE(rows.size(), std::size_t(2));
        const SpectrumResult& r = spectrum->result();
        QCOMPARE(rows[1][1].text, std::string("FFT/LPC Marker Entry: freq., FFT_dB, LPC_dB"));
        QCOMPARE(rows[1][2].value, bin * r.binHz());
        QCOMPARE(rows[1][3].value, r.levelDb[bin]);
        QCOMPARE(rows[1][4].value, r.envelopeAt(bin * r.binHz()));

        config.config.m_analysis.fftLpc.drawLpc = 0;
        QVERIFY(spectrum->recompute());
        marker.run(*spectrum);
        rows = log.rows();
        QCOMPARE(rows[2][1].text, std::string("FFT/LPC Marker Entry: freq., FFT_dB"));
        QCOMPARE(rows[2][3].value, r.levelDb[bin]);
        QVERIFY(rows[2][4].kind == sonmetra::LogCell::Kind::Empty);
        config.config.m_analysis.fftLpc.drawLpc = 1;
        QVERIFY(spectrum->recompute());

        windowCommand("Enter Formants and Bandwidths").run(*spectrum);
        rows = log.rows();
        QCOMPARE(rows[3][1].text,
                 std::string("FFT/LPC Formants & BW Entry: F1, F2, F3, F4, F5, BW1, BW2, BW3, BW4, BW5"));
        for (int k = 0; k < 5; ++k) {
            QCOMPARE(rows[3][2 + k].value, r.formantHz[k]);
            QCOMPARE(rows[3][7 + k].value, r.bandwidthHz[k]);
        }

        // 0, 1000 ... 5000 Hz: six rows, the levels as drawn between bins.
        windowCommand("Enter All FFT/LPC Frame").run(*spectrum);
        rows = log.rows();
        QCOMPARE(rows.size(), std::size_t(4 + 6));
        for (int i = 0; i < 6; ++i) {
            const auto& row = rows[4 + i];
            QCOMPARE(row[1].text, std::string("FFT/LPC Frame Entry: freq., FFT_dB, LPC_dB"));
            QCOMPARE(row[2].value, 1000.0 * i);
            QCOMPARE(row[3].value, r.levelAt(1000.0 * i));
            QCOMPARE(row[4].value, r.envelopeAt(1000.0 * i));
        }
        QVERIFY(messages.texts().empty());
        delete spectrum->window();
    }

    void copyPutsOneLinePerBinOnTheClipboard() {
        RateConfig config;
        auto doc = makeDocument(sonmetra::synth::synthesizeVowel(vowelRecipe()), 11025.0);
        CKestruneView view(doc.get());
        CFFTLPCView* spectrum = openAt(view, 300.0);
        QVERIFY(spectrum != nullptr);
        windowCommand("Copy\tCtrl+C").run(*spectrum);
        const QStringList lines = QGuiApplication::clipboard()->text().split('\n', Qt::SkipEmptyParts);
        QCOMPARE(lines.size(), 129);
        QCOMPARE(lines[0], QString("Frequency (Hz)\tFFT (dB)\tLPC (dB)"));
        const QStringList cells = lines[11].split('\t');
        QCOMPARE(cells.size(), 3);
        const SpectrumResult& r = spectrum->result();
        QCOMPARE(cells[0].toDouble(), std::round(10 * r.binHz() * 100) / 100);
        QVERIFY(std::abs(cells[1].toDouble() - r.levelDb[10]) <= 0.005);
        QVERIFY(std::abs(cells[2].toDouble() - r.envelopeAt(10 * r.binHz())) <= 0.005);
        delete spectrum->window();
    }

    // A tone on bin 35 reads 20·log10 of its amplitude there, and the curve's
    // peak is drawn in the pixel column of that frequency.
    void aPureTonesPeakLandsInItsFrequencysColumn() {
        RateConfig config;
        const double hz = 35 * 11025.0 / 256;
        auto doc = makeDocument(tone(hz, 3162.28, 11025.0, 11025), 11025.0);
        CKestruneView view(doc.get());
        CFFTLPCView* spectrum = openAt(view, 300.0);
        QVERIFY(spectrum != nullptr);
        const SpectrumResult& r = spectrum->result();
        QVERIFY(std::abs(r.levelDb[35] - 70.0) < 0.05);

        const QSize size(800, 600);
        // The highest pixel of the spectrum's colour in the plot.
        auto peakOf = [&](const SpectrumAxes& axes) {
            const QImage image = spectrum->screenImage(size);
            auto isFft = [](QColor c) { return c.blue() > 150 && c.red() < 120 && c.green() < 140; };
            const QRect plot = axes.plot().toRect().adjusted(1, 1, -1, -1);
            for (int y = plot.top(); y < plot.bottom(); ++y)
                for (int x = plot.left(); x < plot.right(); ++x)
                    if (isFft(image.pixelColor(x, y))) return QPoint(x, y);
            return QPoint(-1, -1);
        };
        const SpectrumAxes axes = spectrum->axesAt(size);
        const QPoint peak = peakOf(axes);
        QVERIFY(peak.x() >= 0);
        QVERIFY2(std::abs(peak.x() - axes.xOfHz(hz)) <= 2.0,
                 qPrintable(QString("%1 vs %2").arg(peak.x()).arg(axes.xOfHz(hz))));
        QVERIFY(std::abs(peak.y() - axes.yOfLevel(70.0)) <= 2.0);

        // Relative (spectrum alone): the peak reads 0 dB, and stands low
        // enough under the top edge for a formant mark above it.
        config.config.m_analysis.fftLpc.absoluteLevel = 0;
        config.config.m_analysis.fftLpc.drawLpc = 0;
        QVERIFY(spectrum->recompute());
        const SpectrumAxes relative = spectrum->axesAt(size);
        const QPoint top = peakOf(relative);
        QVERIFY(std::abs(top.x() - peak.x()) <= 1);
        QVERIFY(std::abs(relative.labelDbAtY(top.y())) < 0.5);
        QVERIFY(top.y() - relative.plot().top() >= 20.0);
        delete spectrum->window();
    }

    // "Save As bmp..." writes the picture at the print size, in black and
    // white when the settings say so.
    void aBitmapHasThePrintSizeAndColour() {
        RateConfig config;
        config.config.m_analysis.fftLpc.print = {5.0, 2.5, 1, 0};
        config.config.m_analysis.fftLpc.absoluteLevel = 0;
        auto doc = makeDocument(sonmetra::synth::synthesizeVowel(vowelRecipe()), 11025.0);
        CKestruneView view(doc.get());
        CFFTLPCView* spectrum = openAt(view, 300.0);
        QVERIFY(spectrum != nullptr);
        QTemporaryDir folder;
        AnsweringFileDialogs dialogs;
        dialogs.path = folder.filePath("picture");
        IFileDialogs* before = setFileDialogs(&dialogs);
        windowCommand("Save As bmp...").run(*spectrum);
        setFileDialogs(before);
        QCOMPARE(dialogs.asked().defaultName, QString("vowel FFT-LPC.bmp"));
        const QImage bitmap(folder.filePath("picture.bmp"), "BMP");
        QVERIFY(!bitmap.isNull());
        shoot(bitmap, "bitmap-black-white");
        const double dpi = spectrum->logicalDpiX() > 0 ? spectrum->logicalDpiX() : 96.0;
        QCOMPARE(bitmap.size(), printSizePx(config.config.m_analysis.fftLpc.print, dpi));
        bool grey = true, dark = false;
        for (int y = 0; y < bitmap.height(); ++y)
            for (int x = 0; x < bitmap.width(); ++x) {
                const QColor c = bitmap.pixelColor(x, y);
                grey = grey && c.red() == c.green() && c.green() == c.blue();
                dark = dark || c.red() < 60;
            }
        QVERIFY(grey);
        QVERIFY(dark);
        delete spectrum->window();
    }

    // What the window shows is what the render kind draws, pixel for pixel.
    void theWindowAndTheRenderShowTheSamePicture() {
        RateConfig config;
        auto doc = makeDocument(sonmetra::synth::synthesizeVowel(vowelRecipe()), 11025.0);
        CKestruneView view(doc.get());
        CFFTLPCView* spectrum = openAt(view, 300.0);
        QVERIFY(spectrum != nullptr);
        spectrum->window()->resize(760, 520);
        spectrum->window()->show();
        QVERIFY(QTest::qWaitForWindowExposed(spectrum->window()));
        const QImage shown = spectrum->plot()->grab().toImage().convertToFormat(QImage::Format_RGB32);

        RenderRequest request;
        request.doc = doc.get();
        request.cursorMs = 300.0;
        auto rendered = renderFactory("spectrum")(request);
        QVERIFY(rendered != nullptr);
        const QImage drawn = rendered->clientImage(shown.size()).convertToFormat(QImage::Format_RGB32);
        QCOMPARE(drawn.size(), shown.size());
        QVERIFY(drawn == shown);
        delete spectrum->window();
    }

    // `sonmetra --render spectrum` on a saved document: the same picture as the window's.
    void theRenderCommandDrawsTheWindowsPicture() {
        QTemporaryDir home;
        auto doc = makeDocument(sonmetra::synth::synthesizeVowel(vowelRecipe()), 11025.0);
        const QString path = home.filePath("vowel.kvd");
        QVERIFY(doc->saveAs(path.toStdString(), 1));
        const QString png = home.filePath("spectrum.png");
        const ProgramRun run = runProgram(
            SONMETRA_BIN,
            {"--render", "spectrum", path, "-o", png, "--size", "700x480", "--from", "200", "--to", "500"}, home);
        QVERIFY(run.finished);
        QCOMPARE(run.exitCode, 0);
        const QImage image = QImage(png).convertToFormat(QImage::Format_RGB32);
        QCOMPARE(image.size(), QSize(700, 480));

        RateConfig config;
        CKestruneView view(doc.get());
        timebase::selectRange(*doc, 200.0, 500.0);
        view.setSelectionPresent(true);
        viewCommand("FFT/LPC Selection").run(view);
        auto* frame = qobject_cast<CFFTLPCFrame*>(attachedWindow(doc.get(), windowrole::kAverageSpectrum));
        QVERIFY(frame != nullptr);
        QVERIFY(frame->view()->screenImage(QSize(700, 480)).convertToFormat(QImage::Format_RGB32) == image);

        // Without a cursor or a selection there is nothing to analyse.
        const ProgramRun nothing = runProgram(SONMETRA_BIN, {"--render", "spectrum", path, "-o", png}, home);
        QVERIFY(nothing.finished);
        QCOMPARE(nothing.exitCode, 1);
        QVERIFY(nothing.errors.contains("--cursor MS"));
        delete frame;
    }
};

QTEST_MAIN(SpectrumWindowTest)
#include "SpectrumWindowTest.moc"
