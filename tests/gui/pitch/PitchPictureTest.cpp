// What the pitch window draws and writes: tracks of known F0 at their
// heights (in the window, the in-process render and `sonmetra --render
// pitch`), the window and the render giving the same picture, black and
// white, the "Pitch option" dialog and its persistence, the exported track
// against sonmetra-cli, and the bitmap's proposed name.
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFile>
#include <QGroupBox>
#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <optional>

#include "PitchFixture.h"
#include "document/MessageService.h"
#include "view/DocumentWindows.h"
#include "view/FileDialogs.h"
#include "view/RenderKinds.h"
#include "view/panes/FrameCurve.h"
#include "view/pitch/PitchComputation.h"
#include "view/pitch/PitchSettingsInForce.h"

using namespace pitchtest;

namespace {

bool isTrackPixel(QColor c, bool color) {
    // Antialiased edges count when they are mostly the track's colour.
    if (color) return c.blue() > 150 && c.blue() - c.red() > 100;
    return c.red() < 128 && c.green() < 128 && c.blue() < 128;
}

// Middle of the longest vertical run of track pixels in the pitch pane at
// the time `ms`, or -1. Grid lines (dotted black in black and white) cross a
// column in single pixels; the track is drawn two pixels thick.
double trackY(const QImage& image, const PitchLayout& l, double ms, bool color = true) {
    const int x = static_cast<int>(l.axis.msToX(ms));
    int bestStart = -1, bestLength = 0;
    for (int y = l.pitch.top() + 2, run = 0; y < l.pitch.bottom() - 1; ++y) {
        run = isTrackPixel(image.pixelColor(x, y), color) ? run + 1 : 0;
        if (run > bestLength) {
            bestLength = run;
            bestStart = y - run + 1;
        }
    }
    return bestLength >= 2 ? bestStart + (bestLength - 1) / 2.0 : -1.0;
}

double expectedY(const PitchLayout& l, const sonmetra::PitchSettings& s, double hz) {
    ValueScale scale;
    scale.low = s.displayLowHz;
    scale.high = s.displayHighHz;
    return scale.toY(l.pitch, hz);
}

QImage renderInProcess(sonmetra::CKestruneDoc& doc, QSize size, std::optional<double> cursorMs = std::nullopt) {
    RenderRequest request;
    request.doc = &doc;
    request.size = size;
    request.cursorMs = cursorMs;
    auto window = renderFactory("pitch")(request);
    return window ? window->clientImage(size) : QImage();
}

}  // namespace

class PitchPictureTest : public PitchTest {
    Q_OBJECT
private slots:
    void initTestCase() { registerFeatures(); }
    void init() { start({{1000, 150}, {1000, 300}}); }
    void cleanup() {
        m_doc.reset();
        m_services.reset();
    }

    // A 150 Hz and a 300 Hz voice put the track at their own heights of
    // the frequency scale, in colour and in black and white.
    void tracksStandAtTheirFrequencies() {
        const QSize size(800, 600);
        for (int color : {1, 0}) {
            pitchSettingsInForce().print.color = color;
            const QImage image = renderInProcess(*m_doc, size);
            QVERIFY(!image.isNull());
            shoot(image, QString("pitch_render_%1").arg(color));
            const PitchLayout l = pitchLayout(size, pitchSettingsInForce(), 0.0, 2000.0);
            const double low = trackY(image, l, 450.0, color != 0), high = trackY(image, l, 1550.0, color != 0);
            QVERIFY(low > 0 && high > 0);
            QVERIFY2(std::abs(low - expectedY(l, pitchSettingsInForce(), 150.0)) < 3.0,
                     qPrintable(QString::number(low)));
            QVERIFY2(std::abs(high - expectedY(l, pitchSettingsInForce(), 300.0)) < 3.0,
                     qPrintable(QString::number(high)));
            if (color == 0) {
                for (int y = 0; y < image.height(); y += 3)
                    for (int x = 0; x < image.width(); x += 3) {
                        const QColor c = image.pixelColor(x, y);
                        QVERIFY(std::abs(c.red() - c.blue()) < 8 && std::abs(c.red() - c.green()) < 8);
                    }
            }
        }
        QVERIFY(m_messages.texts().empty());
    }

    // The window's client area and the render at the same size are the same picture.
    void windowAndRenderDrawTheSamePicture() {
        CKestruneView waveform(m_doc.get());
        runView(kPitchCommandText, waveform);
        CPitchFrame* frame = CPitchFrame::of(m_doc.get());
        frame->resize(760, 520);
        QVERIFY(waitForTrack(frame));
        QVERIFY(QTest::qWaitForWindowExposed(frame));
        CPitchView* pv = frame->view();
        const QRect area = pv->pictureRect();
        const QImage shown = pv->grab(area).toImage().convertToFormat(QImage::Format_RGB32);
        shoot(frame, "pitch_window");
        const QImage rendered = renderInProcess(*m_doc, area.size()).convertToFormat(QImage::Format_RGB32);
        QCOMPARE(shown.size(), rendered.size());
        QVERIFY(shown == rendered);

        // The window keeps the layer under the cursor while the cursor
        // moves; it must not show a stale picture when the cursor moves or
        // the labels change.
        waveform.mouseDownAtMs(1234.0);
        waveform.mouseUpAtMs(1234.0);
        sonmetra::CLabel label;
        label.timeMs = 1500.0;
        label.text = "late";
        m_doc->channel(0).m_labels.push_back(label);
        labelsChanged(m_doc.get());
        const QImage moved = pv->grab(area).toImage().convertToFormat(QImage::Format_RGB32);
        QVERIFY(moved != shown);
        const QImage expected =
            renderInProcess(*m_doc, area.size(), waveform.cursorMs()).convertToFormat(QImage::Format_RGB32);
        QVERIFY(moved == expected);
        delete frame;
    }

    void optionDialogDefaultsAndEnableRules() {
        sonmetra::PitchSettings custom;
        custom.method = sonmetra::PitchMethod::AutoCorrelation;
        custom.windowMs = 50;
        custom.stepMs = 5;
        custom.lowHz = 70;
        custom.highHz = 400;
        custom.frequencyGrid = 0;
        custom.timeGridMs = 0;
        custom.drawIntensity = 0;
        custom.print = {12.0, 8.0, 0, 0};
        PitchOptionDialog dialog(custom);
        QCOMPARE(dialog.windowTitle(), QString("Pitch option"));
        QStringList texts;
        for (auto* w : dialog.findChildren<QLabel*>()) texts << w->text();
        for (auto* w : dialog.findChildren<QAbstractButton*>()) texts << w->text();
        for (auto* w : dialog.findChildren<QGroupBox*>()) texts << w->title();
        for (const char* expected : {"Calculation Method",
                                     "Cepstral",
                                     "AutoCorrolation",
                                     "Window length (ms)  = ",
                                     "Step size (ms)           = ",
                                     "Frequency deviation (Hz) = ",
                                     "Tracking threshold (%)     = ",
                                     "Calculation range (Hz)  = ",
                                     "to",
                                     "Display range (Hz)        = ",
                                     "Add Frequency grid with spacing (Hz) = ",
                                     "Add Time grid with spacing (ms)          = ",
                                     "Add audio",
                                     "Add Intensity",
                                     "Add Labels",
                                     "Print / BMP size",
                                     "width  = ",
                                     "heigth = ",
                                     "Inches",
                                     "cm",
                                     "Color",
                                     "Black White",
                                     "Defaults "})
            QVERIFY2(texts.contains(expected), expected);

        QCOMPARE(dialog.settings().windowMs, 50);
        QVERIFY(!dialog.frequencyGridField()->isEnabled());
        QVERIFY(dialog.timeGridField()->isEnabled());
        dialog.timeGridBox()->setChecked(false);
        QVERIFY(!dialog.timeGridField()->isEnabled());
        dialog.frequencyGridBox()->setChecked(true);
        QVERIFY(dialog.frequencyGridField()->isEnabled());

        QPushButton* defaults = nullptr;
        for (auto* b : dialog.findChildren<QPushButton*>())
            if (b->text() == "Defaults ") defaults = b;
        QVERIFY(defaults);
        defaults->click();
        sonmetra::PitchSettings expected;  // the defaults, with the method left alone
        expected.method = sonmetra::PitchMethod::AutoCorrelation;
        const sonmetra::PitchSettings shown = dialog.settings();
        QCOMPARE(std::memcmp(&shown, &expected, sizeof shown), 0);
        QVERIFY(dialog.autocorrelationButton()->isChecked());
        QVERIFY(dialog.frequencyGridField()->isEnabled() && dialog.timeGridField()->isEnabled());

        // A range that ends below its start keeps the dialog open.
        dialog.show();
        dialog.lowField()->setValue(300);
        dialog.highField()->setValue(200);
        dialog.accept();
        QVERIFY(dialog.isVisible());
        QCOMPARE(dialog.result(), int(QDialog::Rejected));
        QCOMPARE(QString::fromStdString(m_messages.lastText()),
                 QString("The calculation range must end above its start."));
    }

    // OK takes the values, writes the configuration record (read back by a
    // new record as after a restart) and recomputes the open window.
    void optionsPersistAndRecompute() {
        CKestruneView waveform(m_doc.get());
        runView(kPitchCommandText, waveform);
        CPitchFrame* frame = CPitchFrame::of(m_doc.get());
        QVERIFY(waitForTrack(frame));
        QCOMPARE(frame->view()->results()->settings.stepMs, 10);

        whenModal<PitchOptionDialog>([](PitchOptionDialog* d) {
            d->autocorrelationButton()->setChecked(true);
            d->stepField()->setValue(5);
            d->deviationField()->setValue(60);
            d->thresholdField()->setValue(3);
            d->displayHighField()->setValue(400);
            d->timeGridField()->setValue(0);
            d->labelsBox()->setChecked(false);
            d->cmButton()->setChecked(true);
            d->blackWhiteButton()->setChecked(true);
            d->widthField()->setValue(15.5);
            d->accept();
        });
        runPitchOptions(nullptr);
        QVERIFY(frame->computing());
        QVERIFY(waitForTrack(frame));
        QCOMPARE(frame->view()->results()->settings.stepMs, 5);
        QCOMPARE(frame->view()->results()->settings.method, sonmetra::PitchMethod::AutoCorrelation);

        sonmetra::AppConfig restarted;
        QVERIFY(restarted.readFile(m_services->config.filePath()));
        const sonmetra::PitchSettings& s = restarted.m_analysis.pitch;
        QCOMPARE(s.method, sonmetra::PitchMethod::AutoCorrelation);
        QCOMPARE(s.stepMs, 5);
        QCOMPARE(s.deviationHz, 60);
        QCOMPARE(s.thresholdPct, 3);
        QCOMPARE(s.displayHighHz, 400);
        QCOMPARE(s.timeGridMs, 0);
        QCOMPARE(s.drawLabels, 0);
        QCOMPARE(s.print.inches, 0);
        QCOMPARE(s.print.color, 0);
        QCOMPARE(s.print.width, 15.5);
        QCOMPARE(s.windowMs, 35);
        QVERIFY(m_messages.texts().empty());
        delete frame;
    }

    // "Export Track..." writes what `sonmetra-cli pitch` prints for the
    // same document, byte for byte; "Save As bmp..." proposes its name and
    // writes the picture at the print size.
    void exportMatchesTheCommandLineAndBitmapIsNamed() {
        const QString kvd = m_services->folder.filePath("voice.kvd");
        QVERIFY(m_doc->saveAs(kvd.toStdString(), 1));
        CKestruneView waveform(m_doc.get());
        runView(kPitchCommandText, waveform);
        CPitchFrame* frame = CPitchFrame::of(m_doc.get());
        QVERIFY(waitForTrack(frame));

        AnsweringFileDialogs answers;
        IFileDialogs* before = setFileDialogs(&answers);
        answers.path = m_services->folder.filePath("voice-pitch.tsv");
        runPitch("Export Track...", *frame->view());
        QCOMPARE(answers.asked().defaultName, QString("voice-pitch.tsv"));
        QFile exported(answers.path);
        QVERIFY(exported.open(QIODevice::ReadOnly));
        QProcess cli;
        cli.start(SONMETRA_CLI, {"pitch", kvd});
        QVERIFY(cli.waitForFinished(60000));
        QCOMPARE(cli.exitCode(), 0);
        QCOMPARE(exported.readAll(), cli.readAllStandardOutput());

        answers.path = m_services->folder.filePath("picture");
        runPitch("Save As bmp...", *frame->view());
        QCOMPARE(answers.asked().defaultName, QString("Bitmap-PitchTrack ofvoice.bmp"));
        const QImage bitmap(answers.path + ".bmp", "BMP");
        const double dpi = frame->view()->logicalDpiX();
        QCOMPARE(bitmap.size(), QSize(qRound(6.0 * dpi), qRound(4.0 * dpi)));
        setFileDialogs(before);
        delete frame;
    }

    // The program itself: a PNG with the tracks at their heights, a PDF,
    // and the routine's failure as exit status 1 with its message and no file.
    void renderCommandOfTheProgram() {
        QTemporaryDir home;
        const QString kvd = home.filePath("voice.kvd");
        QVERIFY(m_doc->saveAs(kvd.toStdString(), 1));
        auto run = [&home](const QStringList& args, QString* errors = nullptr) {
            const ProgramRun r = runProgram(SONMETRA_BIN, QStringList{"--render", "pitch"} + args, home);
            if (errors) *errors = r.errors;
            return r.exitCode;
        };
        const QString png = home.filePath("pitch.png");
        QCOMPARE(run({kvd, "-o", png, "--size", "640x480"}), 0);
        const QImage image(png);
        QCOMPARE(image.size(), QSize(640, 480));
        const sonmetra::PitchSettings defaults;
        const PitchLayout l = pitchLayout(QSize(640, 480), defaults, 0.0, 2000.0);
        QVERIFY(std::abs(trackY(image, l, 450.0) - expectedY(l, defaults, 150.0)) < 3.0);
        QVERIFY(std::abs(trackY(image, l, 1550.0) - expectedY(l, defaults, 300.0)) < 3.0);
        const QString pdf = home.filePath("pitch.pdf");
        QCOMPARE(run({kvd, "-o", pdf, "--from", "200", "--to", "900"}), 0);
        QFile page(pdf);
        QVERIFY(page.open(QIODevice::ReadOnly) && page.read(4) == "%PDF");

        sonmetra::AppConfig refused;
        refused.m_analysis.pitch.stepMs = 0;
        const QString cfg = home.filePath("refused.cfg");
        QVERIFY(refused.writeFile(cfg.toStdString()));
        QString errors;
        const QString out = home.filePath("refused.png");
        QCOMPARE(run({kvd, "-o", out, "--config", cfg}, &errors), 1);
        QVERIFY2(errors.contains("Error in Pitch routine"), qPrintable(errors));
        QVERIFY(!QFile::exists(out));
    }
};

QTEST_MAIN(PitchPictureTest)
#include "PitchPictureTest.moc"
