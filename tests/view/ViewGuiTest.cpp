// The waveform view driven like a user would, offscreen, checked in what it draws.
#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFile>
#include <QFileInfo>
#include <QPrinter>
#include <QRadioButton>
#include <QScrollBar>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QWheelEvent>

#include "SyntheticDoc.h"
#include "document/AppConfig.h"
#include "document/MessageService.h"
#include "frame/CStatusWindow.h"
#include "frame/CursorDurationBar.h"
#include "frame/DisplayOptionDialog.h"
#include "frame/ViewPrinting.h"
#include "tests/support/GuiTestSupport.h"
#include "view/AppServices.h"
#include "view/CKestruneView.h"
#include "view/FileDialogs.h"
#include "view/PictureOutput.h"
#include "view/WaveformCommands.h"

namespace {

bool isBlackRgb(QRgb c) { return qRed(c) < 60 && qGreen(c) < 60 && qBlue(c) < 60; }

// Screenshots are in device pixels; tests speak logical pixels. A logical
// pixel is black when any of its device pixels is, white when all are.
double ratio(const QImage& img) { return img.devicePixelRatio(); }
QRgb colorAt(const QImage& img, int x, int y) { return img.pixel(int(x * ratio(img)), int(y * ratio(img))); }
bool isBlack(const QImage& img, int x, int y) {
    const int d = int(ratio(img));
    for (int dy = 0; dy < d; ++dy)
        for (int dx = 0; dx < d; ++dx)
            if (isBlackRgb(img.pixel(x * d + dx, y * d + dy))) return true;
    return false;
}
bool isWhite(const QImage& img, int x, int y) {
    const int d = int(ratio(img));
    for (int dy = 0; dy < d; ++dy)
        for (int dx = 0; dx < d; ++dx)
            if (img.pixel(x * d + dx, y * d + dy) != qRgb(255, 255, 255)) return false;
    return true;
}

struct Fixture {
    std::unique_ptr<sonmetra::CKestruneDoc> doc;
    std::unique_ptr<CKestruneView> view;

    explicit Fixture(std::unique_ptr<sonmetra::CKestruneDoc> d, QSize size = QSize(800, 600)) : doc(std::move(d)) {
        view = sonmetra::test::shownView(doc.get(), size);
        EXPECT_TRUE(QTest::qWaitForWindowExposed(view.get()));
    }
    // What the view paints on the screen, in logical pixels.
    QImage shot() const {
        const QPixmap pixmap = view->grab();
        QImage img = pixmap.toImage().convertToFormat(QImage::Format_RGB32);
        img.setDevicePixelRatio(pixmap.devicePixelRatio());
        return img;
    }
    QRect strip(int i) const {
        const auto& s = doc->channel(i).m_strip;
        return QRect(QPoint(s.left, s.top + view->verticalOffset()), QPoint(s.right - 1, s.bottom - 1));
    }
    // Trace pixels inside a strip, between two x positions, away from frame and name.
    int blackInside(const QImage& img, int i, int x0, int x1) const {
        const QRect r = strip(i).adjusted(2, 16, -2, -2);
        int n = 0;
        for (int x = std::max(x0, r.left()); x <= std::min(x1, r.right()); ++x)
            for (int y = r.top(); y <= r.bottom(); ++y) n += isBlack(img, x, y) ? 1 : 0;
        return n;
    }
    int midY(int i) const { return strip(i).center().y(); }
};

std::unique_ptr<sonmetra::CKestruneDoc> demo() { return synthetic::speechLike(2.0, 8000.0, 500.0); }

}  // namespace

TEST(ViewGuiTest, EveryChannelIsAFramedStripWithATraceInside) {
    Fixture f(demo());
    const QImage img = f.shot();
    const QRect area = f.view->traceArea();
    for (int i = 0; i < 3; ++i) {
        const QRect r = f.strip(i);
        ASSERT_FALSE(r.isEmpty());
        ASSERT_GT(r.height(), 100) << "three strips share 600 px";
        EXPECT_TRUE(isBlack(img, r.center().x(), r.top())) << "top edge of strip " << i;
        EXPECT_TRUE(isBlack(img, r.center().x(), r.bottom())) << "bottom edge of strip " << i;
        EXPECT_TRUE(isBlack(img, r.left(), r.center().y())) << "left edge of strip " << i;
        EXPECT_TRUE(isBlack(img, r.right(), r.center().y())) << "right edge of strip " << i;
        EXPECT_EQ(r.left(), area.left());
        // The trace runs across the whole strip: every 40-px stretch holds some of it.
        for (int x = area.left() + 2; x + 40 < area.right(); x += 40) {
            EXPECT_GT(f.blackInside(img, i, x, x + 40), 0) << "strip " << i << " at x " << x;
        }
        // Strips do not overlap, and the gap between them is blank.
        if (i > 0) {
            EXPECT_GT(r.top(), f.strip(i - 1).bottom());
            EXPECT_TRUE(isWhite(img, r.center().x(), r.top() - 2));
        }
    }
}

TEST(ViewGuiTest, ClickPlacesTheCursorAndAShortDragStaysAClick) {
    Fixture f(demo());
    const int y = f.midY(1);
    QTest::mouseClick(f.view.get(), Qt::LeftButton, {}, QPoint(300, y));
    EXPECT_TRUE(f.view->cursorPlaced());
    EXPECT_FALSE(f.view->selectionPresent());
    EXPECT_NEAR(f.view->cursorMs(), f.view->xToMs(300), 1e-6);
    EXPECT_EQ(f.view->clickedChannel(), 1);
    EXPECT_NEAR(f.doc->channel(2).m_cursorMs, f.view->cursorMs(), 1e-9);
    // The cursor line crosses the gap between strips.
    const QImage img = f.shot();
    const QRgb c = colorAt(img, f.view->msToX(f.view->cursorMs()), f.strip(1).bottom() + 2);
    EXPECT_GT(qRed(c), 150);
    EXPECT_LT(qGreen(c), 80);

    // 5 px: still a click.
    QTest::mousePress(f.view.get(), Qt::LeftButton, {}, QPoint(400, y));
    QTest::mouseMove(f.view.get(), QPoint(405, y));
    QTest::mouseRelease(f.view.get(), Qt::LeftButton, {}, QPoint(405, y));
    EXPECT_TRUE(f.view->cursorPlaced());
    EXPECT_FALSE(f.view->selectionPresent());
    EXPECT_FALSE(f.doc->selectionFlag());
    // 6 px: a selection.
    QTest::mousePress(f.view.get(), Qt::LeftButton, {}, QPoint(400, y));
    QTest::mouseMove(f.view.get(), QPoint(406, y));
    QTest::mouseRelease(f.view.get(), Qt::LeftButton, {}, QPoint(406, y));
    EXPECT_FALSE(f.view->cursorPlaced());
    EXPECT_TRUE(f.view->selectionPresent());
    EXPECT_TRUE(f.doc->selectionFlag());
    EXPECT_NEAR(f.doc->channel(0).m_selStartMs, f.view->xToMs(400), 1e-6);
    EXPECT_NEAR(f.doc->channel(0).m_selEndMs, f.view->xToMs(406), 1e-6);
}

TEST(ViewGuiTest, SelectionIsHighlightedWithTheTracesShowingThrough) {
    Fixture f(demo());
    const int y = f.midY(0);
    QTest::mousePress(f.view.get(), Qt::LeftButton, {}, QPoint(450, y));
    QTest::mouseMove(f.view.get(), QPoint(300, y));
    QTest::mouseRelease(f.view.get(), Qt::LeftButton, {}, QPoint(200, y));
    ASSERT_TRUE(f.view->selectionPresent());
    const QImage img = f.shot();
    const int gapY = f.strip(0).bottom() + 2;
    const QRgb inside = colorAt(img, 320, gapY);
    EXPECT_EQ(qRed(inside), 160);
    EXPECT_EQ(qGreen(inside), 200);
    EXPECT_EQ(qBlue(inside), 255);
    EXPECT_TRUE(isWhite(img, 150, gapY));
    EXPECT_TRUE(isWhite(img, 500, gapY));
    // Traces are still black under the highlight.
    for (int i = 0; i < 3; ++i) EXPECT_GT(f.blackInside(img, i, 210, 440), 0);
}

TEST(ViewGuiTest, ADerivedCurveIsDrawnInBlueOnlyWhileShownAndValid) {
    Fixture f(demo());
    auto& ch = f.doc->channel(1);
    ch.m_intensity.resize(static_cast<std::size_t>(ch.m_sampleCount));
    for (std::size_t i = 0; i < ch.m_intensity.size(); ++i) ch.m_intensity[i] = 40.0 + 20.0 * double(i) / 1000.0;
    ch.m_intensityMin = 40.0;
    ch.m_intensityMax = 60.0;
    const auto bluePixels = [&f] {
        const QImage img = f.shot();
        const QRect r = f.strip(1);
        int n = 0;
        for (int y = r.top() + 1; y < r.bottom(); ++y)
            for (int x = r.left() + 1; x < r.right(); ++x) n += colorAt(img, x, y) == qRgb(0, 0, 255) ? 1 : 0;
        return n;
    };
    ch.m_intensityValid = 1;
    ch.m_intensityShown = 0;
    f.view->requestRedraw();
    EXPECT_EQ(bluePixels(), 0);
    ch.m_intensityShown = 1;
    f.view->requestRedraw();
    // A rising contour from the bottom to the top of the strip.
    EXPECT_GT(bluePixels(), f.view->traceArea().width() / 2);
}

TEST(ViewGuiTest, ZoomFromCursorNearTheEndShowsTheRestAndThenEmptyStrip) {
    Fixture f(demo());
    f.doc->m_zoomRangeMs = 100.0;
    timebase::placeCursor(*f.doc, 1990.0);
    f.view->setCursorPlaced(true);
    f.view->zoom(4);
    const QImage img = f.shot();
    const QRect area = f.view->traceArea();
    const int tenth = area.left() + area.width() / 10;
    EXPECT_GT(f.blackInside(img, 0, area.left() + 2, tenth - 3), 0);
    EXPECT_EQ(f.blackInside(img, 0, tenth + 3, area.right() - 3), 0);
    EXPECT_NEAR(f.view->displayEndMs() - f.view->displayStartMs(), 100.0, 0.2);
}

TEST(ViewGuiTest, ZoomAndScrollMoveTheTraceAndTheBar) {
    Fixture f(demo());
    EXPECT_FALSE(f.view->scrollable());
    f.view->zoom(1);
    EXPECT_TRUE(f.view->scrollable());
    EXPECT_NEAR(f.view->displayStartMs(), 500.0, 1e-6);
    EXPECT_EQ(f.view->horizontalBar()->pageStep(), 15000);
    const QImage before = f.shot();
    // A forward wheel turn is one line right; the wheel never zooms.
    QWheelEvent wheel(QPointF(300, 200), f.view->mapToGlobal(QPointF(300, 200)), QPoint(), QPoint(0, 120), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(f.view.get(), &wheel);
    EXPECT_NEAR(f.view->displayStartMs(), 600.0, 1e-6);
    EXPECT_NEAR(f.view->displayEndMs(), 1600.0, 1e-6);
    EXPECT_EQ(f.view->horizontalBar()->value(), 9000);
    EXPECT_NE(f.shot(), before);
    // UnZoom goes back to the range before In; scrolling is no zoom step.
    f.view->zoom(0);
    EXPECT_NEAR(f.view->displayStartMs(), 0.0, 1e-6);
    EXPECT_NEAR(f.view->displayEndMs(), 2000.0, 1e-6);
    EXPECT_FALSE(f.view->horizontalBar()->isEnabled());
}

TEST(ViewGuiTest, ZoomingInWithoutLimitStillDrawsTheLineBetweenTwoSamples) {
    Fixture f(demo());
    // 40 halvings of 16000 samples: 1.5e-8 samples, still apart in doubles.
    for (int i = 0; i < 40; ++i) f.view->zoom(1);
    EXPECT_LT(f.doc->channel(0).viewLengthSamples(), 1e-7);
    EXPECT_GT(f.doc->channel(0).viewLengthSamples(), 0.0);
    // Between two samples the trace crosses the whole strip.
    const QImage img = f.shot();
    const QRect area = f.view->traceArea();
    EXPECT_GT(f.blackInside(img, 0, area.left() + 2, area.left() + 30), 0);
    EXPECT_GT(f.blackInside(img, 0, area.right() - 30, area.right() - 2), 0);
}

TEST(ViewGuiTest, DraggingPastTheRightMarginScrollsTheRange) {
    Fixture f(demo());
    f.view->zoom(1);
    const double start = f.view->displayStartMs();
    const int y = f.midY(0);
    QTest::mousePress(f.view.get(), Qt::LeftButton, {}, QPoint(500, y));
    QTest::mouseMove(f.view.get(), QPoint(f.view->traceArea().right() + 5, y));
    QTest::mouseRelease(f.view.get(), Qt::LeftButton, {}, QPoint(f.view->traceArea().right() + 5, y));
    EXPECT_NEAR(f.view->displayStartMs(), start + 100.0, 1e-6);
    EXPECT_TRUE(f.view->selectionPresent());
}

TEST(ViewGuiTest, KeysStepTheCursorAndScrollTheRange) {
    Fixture f(demo());  // 2000 ms
    auto key = [&f](Qt::Key k) { QTest::keyClick(f.view.get(), k); };
    int steps = 0;
    QObject::connect(f.view.get(), &CKestruneView::cursorStep, [&steps](int, double) { ++steps; });

    // Without a cursor Right places it at the start of the range, then
    // steps one pixel column; Left steps back, never before the start.
    key(Qt::Key_Right);
    EXPECT_TRUE(f.view->cursorPlaced());
    EXPECT_DOUBLE_EQ(f.view->cursorMs(), 0.0);
    const double column = 2000.0 / f.view->traceArea().width();
    key(Qt::Key_Right);
    key(Qt::Key_Right);
    EXPECT_NEAR(f.view->cursorMs(), 2 * column, f.doc->channel(0).msPerSample());
    EXPECT_EQ(steps, 6) << "a press and a release per key, as a click";
    for (int i = 0; i < 5; ++i) key(Qt::Key_Left);
    EXPECT_DOUBLE_EQ(f.view->cursorMs(), 0.0);

    // A selection collapses to the end the arrow points at.
    f.view->mouseDownAtMs(500.0);
    f.view->mouseMoveAtMs(900.0);
    f.view->mouseUpAtMs(900.0);
    ASSERT_TRUE(f.view->selectionPresent());
    key(Qt::Key_Right);
    EXPECT_FALSE(f.view->selectionPresent());
    EXPECT_NEAR(f.view->cursorMs(), 900.0, column);

    // Zoomed in four times (125 ms shown): the pages and both ends.
    for (int i = 0; i < 4; ++i) f.view->zoom(1);
    const double shown = f.view->displayEndMs() - f.view->displayStartMs();
    ASSERT_NEAR(shown, 125.0, 1e-6);
    key(Qt::Key_Home);
    EXPECT_NEAR(f.view->displayStartMs(), 0.0, 1e-6);
    key(Qt::Key_PageDown);
    EXPECT_NEAR(f.view->displayStartMs(), shown, 0.1);
    key(Qt::Key_PageUp);
    EXPECT_NEAR(f.view->displayStartMs(), 0.0, 0.1);
    key(Qt::Key_End);
    EXPECT_NEAR(f.view->displayEndMs(), 2000.0, 0.1);

    // A cursor stepped out of the range brings the range along.
    key(Qt::Key_Home);
    timebase::placeCursor(*f.doc, shown - 0.01);
    f.view->setCursorPlaced(true);
    key(Qt::Key_Right);
    EXPECT_GT(f.view->displayStartMs(), 0.0);
    EXPECT_LE(f.view->displayStartMs(), f.view->cursorMs());
    EXPECT_GE(f.view->displayEndMs(), f.view->cursorMs());
}

TEST(ViewGuiTest, LongRangesAreLabelledInSecondsOrMinutes) {
    EXPECT_EQ(timebase::gridLabel(2500.0, 500.0, 5000.0), "2500");
    EXPECT_EQ(timebase::gridLabel(12500.0, 500.0, 60000.0), "12.5 s");
    EXPECT_EQ(timebase::gridLabel(30000.0, 10000.0, 60000.0), "30 s");
    EXPECT_EQ(timebase::gridLabel(550000.0, 30000.0, 900000.0), "9:10");
    // A line summed up to just under a minute reads as the minute, never "0:60.0".
    EXPECT_EQ(timebase::gridLabel(59999.9999, 100.0, 900000.0), "1:00.0");
    EXPECT_EQ(timebase::gridLabel(3725000.0, 60000.0, 7200000.0), "1:02:05");
    EXPECT_EQ(timebase::gridLabel(0.0, 60000.0, 7200000.0), "0:00");
    // Steps that fall on whole minutes once the lines lie seconds apart.
    EXPECT_DOUBLE_EQ(timebase::gridStepMs(0.0, 3.6e6, 1900.0), 300000.0);
    EXPECT_DOUBLE_EQ(timebase::gridStepMs(0.0, 600000.0, 1000.0), 60000.0);
    EXPECT_DOUBLE_EQ(timebase::gridStepMs(0.0, 150000.0, 1000.0), 15000.0);

    // A view of ten minutes: its first grid line is at one minute, with its text above it.
    Fixture f(synthetic::speechLike(600.0, 8000.0, 100.0), QSize(1000, 400));
    const QImage img = f.shot();
    const double step = timebase::gridStepMs(0.0, 600000.0, f.view->traceArea().width());
    EXPECT_EQ(timebase::gridLabel(step, step, 600000.0), "1:00");
    int dark = 0;
    const int x = f.view->msToX(step);
    for (int y = 0; y < TraceGeometry::kRulerHeight - 5; ++y)
        for (int dx = -14; dx <= 14; ++dx) dark += qGray(colorAt(img, x + dx, y)) < 128 ? 1 : 0;
    EXPECT_GT(dark, 10) << "no label at the first grid line";
}

TEST(ViewGuiTest, TwentyChannelsInASmallWindowScrollVertically) {
    auto doc = std::make_unique<sonmetra::CKestruneDoc>();
    for (int i = 0; i < 20; ++i)
        synthetic::fillChannel(*doc, i, "ch" + std::to_string(i + 1), 1000.0, 2000,
                               [i](std::size_t k) { return synthetic::sine(k, 1000.0, 2.0 + i, 9000.0); });
    Fixture f(std::move(doc), QSize(500, 320));
    ASSERT_TRUE(f.view->verticalBar()->isVisible());
    const int page = f.view->clientRect().height();
    f.view->vScroll(timebase::ScrollRequest::LineForward);
    EXPECT_EQ(f.view->verticalOffset(), -(page / 10));
    // The strips drawn follow the offset: strip 1's top edge moved up with the column.
    const QImage img = f.shot();
    const QRect r = f.strip(1);
    EXPECT_TRUE(isBlack(img, r.center().x(), r.top()));
    f.view->vScroll(timebase::ScrollRequest::LineBack);
    EXPECT_EQ(f.view->verticalOffset(), 0);
    f.view->vScroll(timebase::ScrollRequest::LineBack);  // would leave the column
    EXPECT_EQ(f.view->verticalOffset(), 0);
}

TEST(ViewGuiTest, ReadoutsFollowTheMouse) {
    Fixture f(demo());
    CStatusWindow status;
    CursorDurationBar bar;
    status.setCursorBar(&bar);
    AppServices::instance().readouts = &status;
    f.view->mouseDownAtMs(250.0);
    f.view->mouseUpAtMs(250.0);
    ASSERT_EQ(status.table()->rowCount(), 3);
    EXPECT_EQ(status.cellText(1, kColumnName), "ch1");
    const double value = f.doc->channel(1).m_samples[static_cast<std::size_t>(f.doc->channel(1).m_cursorSample)];
    EXPECT_TRUE(status.cellText(1, kColumnCursorValue).startsWith(QString::number(value, 'f', 2) + ","));
    EXPECT_EQ(bar.cursorText(), "Cursor(ms): " + QString::number(f.view->cursorMs(), 'f', 2));
    EXPECT_EQ(bar.durationText(), "Duration (ms): 2000.00");
    f.view->mouseDownAtMs(500.0);
    f.view->mouseMoveAtMs(800.0);
    f.view->mouseUpAtMs(800.0);
    const double perPixel = 2000.0 / f.view->traceArea().width();
    ASSERT_TRUE(bar.durationText().startsWith("Duration (ms): "));
    EXPECT_NEAR(bar.durationText().mid(15).toDouble(), 300.0, 2.0 * perPixel);
    EXPECT_TRUE(
        status.cellText(0, kColumnSelection).startsWith(QString::number(f.doc->channel(0).m_selStartMs, 'f', 2)));
    AppServices::instance().readouts = nullptr;
}

TEST(ViewGuiTest, ClickedChannelRewritesItsMenuText) {
    Fixture f(demo());
    EXPECT_EQ(clickedChannelMenuText(*f.view), "No channel is clicked");
    QTest::mouseClick(f.view.get(), Qt::LeftButton, {}, QPoint(300, f.midY(2)));
    EXPECT_EQ(clickedChannelMenuText(*f.view), "Set Reference only for: ch2");
    f.view->setReferenceForClicked();
    EXPECT_DOUBLE_EQ(f.doc->channel(2).m_reference, timebase::valueAtCursor(*f.doc, 2));
    EXPECT_DOUBLE_EQ(f.doc->channel(1).m_reference, 0.0);
}

TEST(ViewGuiTest, BitmapHasThePrintSizeAndTheTraces) {
    Fixture f(demo());
    sonmetra::AppConfig config;
    config.m_print.width = 6.0;
    config.m_print.height = 10.16;
    config.m_print.inches = 0;  // cm
    config.m_timeGridOn = 0;
    const QImage img = viewBitmap(*f.view, config).convertToFormat(QImage::Format_RGB32);
    const double dpi = f.view->logicalDpiX();
    EXPECT_EQ(img.width(), std::lround(6.0 / 2.54 * dpi));
    EXPECT_EQ(img.height(), std::lround(4.0 * dpi));
    int black = 0, grey = 0;
    for (int y = 0; y < img.height(); ++y)
        for (int x = 0; x < img.width(); ++x) {
            black += isBlackRgb(img.pixel(x, y)) ? 1 : 0;
            grey += img.pixel(x, y) == qRgb(200, 200, 200) ? 1 : 0;
        }
    EXPECT_GT(black, img.height());
    EXPECT_EQ(grey, 0) << "no grid unless it is asked for";

    QTemporaryDir dir;
    const QString path = dir.filePath("view.bmp");
    ASSERT_TRUE(saveViewBitmap(*f.view, path));
    EXPECT_FALSE(QImage(path).isNull());

    // A folder that does not exist: the message names the file, nothing is written.
    sonmetra::RecordingMessageService messages;
    sonmetra::ScopedMessageService scoped(&messages);
    const QString bad = dir.filePath("missing/view.bmp");
    EXPECT_FALSE(saveViewBitmap(*f.view, bad));
    EXPECT_EQ(messages.lastText(), "The bitmap could not be written to '" + bad.toStdString() + "'.");
    EXPECT_EQ(messages.beeps(), 1);
}

TEST(ViewGuiTest, PrintingDrawsThePageAtThePrintSize) {
    Fixture f(demo());
    QTemporaryDir dir;
    QPrinter printer(QPrinter::HighResolution);
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(dir.filePath("view.pdf"));
    printView(*f.view, printer);
    QFile pdf(dir.filePath("view.pdf"));
    ASSERT_TRUE(pdf.open(QIODevice::ReadOnly));
    const QByteArray bytes = pdf.readAll();
    EXPECT_TRUE(bytes.startsWith("%PDF"));
    // The page carries the view as lines, not as a picture of them.
    EXPECT_FALSE(bytes.contains("/Subtype /Image"));
}

TEST(ViewGuiTest, ScreenDumpIsTakenAfterTheMenuClosesAndAsksForAName) {
    Fixture f(demo());
    QTemporaryDir dir;
    sonmetra::test::AnsweringFileDialogs dialogs;
    dialogs.path = dir.filePath("dump.bmp");
    IFileDialogs* previous = setFileDialogs(&dialogs);
    saveScreenAsBitmapCommand(*f.view);
    // Nothing happens until the one-shot timer has fired.
    EXPECT_TRUE(dialogs.asked().title.isEmpty());
    QTest::qWait(600);
    setFileDialogs(previous);
    EXPECT_EQ(dialogs.asked().defaultName, "ScreenDump.bmp");
    EXPECT_EQ(dialogs.asked().filters, QStringList{"Bitmap files (*.bmp)"});
    const QImage dump(dialogs.path);
    ASSERT_FALSE(dump.isNull());
    EXPECT_GE(dump.width(), f.view->width());
}

// "Save As bmp..." once proposed the document's own name, and answering the
// replace question overwrote the .kvd with a picture.
TEST(ViewGuiTest, SaveAsBmpNeverProposesOrWritesTheDocumentsName) {
    Fixture f(demo());
    QTemporaryDir dir;
    sonmetra::test::AnsweringFileDialogs dialogs;
    dialogs.path = dir.filePath("demo.kvd");
    IFileDialogs* previous = setFileDialogs(&dialogs);
    saveViewAsBitmapCommand(*f.view);
    setFileDialogs(previous);
    EXPECT_EQ(dialogs.asked().defaultName, bitmapFileName(QString::fromStdString(f.view->document()->title())));
    EXPECT_TRUE(dialogs.asked().defaultName.endsWith(".bmp"));
    EXPECT_EQ(dialogs.asked().defaultSuffix, "bmp");
    // A name typed with another extension gets ".bmp": the document is never touched.
    EXPECT_FALSE(QFileInfo::exists(dir.filePath("demo.kvd")));
    EXPECT_FALSE(QImage(dir.filePath("demo.kvd.bmp")).isNull());
    EXPECT_EQ(bitmapFileName("demo.kvd"), "demo.bmp");
    EXPECT_EQ(bitmapFileName("take.1.wav"), "take.1.bmp");
    EXPECT_EQ(bitmapFileName(""), "Untitled.bmp");
}

TEST(ViewGuiTest, DisplayOptionsGoIntoChannelsDocumentAndRecord) {
    auto doc = demo();
    sonmetra::AppConfig config;
    config.m_timeGridOn = 0;
    DisplayOptionDialog dialog(*doc, config);
    ASSERT_EQ(dialog.channelGrid()->rowCount(), 3);
    auto* bits = static_cast<QComboBox*>(dialog.channelGrid()->cellWidget(1, DisplayOptionDialog::kBits));
    bits->setCurrentIndex(bits->findData(12));
    auto* zero = static_cast<QComboBox*>(dialog.channelGrid()->cellWidget(1, DisplayOptionDialog::kZeroLine));
    zero->setCurrentIndex(zero->findData(-1));
    dialog.cmButton()->click();
    EXPECT_FALSE(dialog.inchesButton()->isChecked());
    dialog.blackWhiteButton()->click();
    EXPECT_FALSE(dialog.colorButton()->isChecked());
    EXPECT_FALSE(dialog.gridField()->isEnabled());
    dialog.gridBox()->setChecked(true);
    EXPECT_TRUE(dialog.gridField()->isEnabled());
    dialog.gridField()->setValue(50.0);
    dialog.widthField()->setValue(12.5);
    dialog.apply(*doc, config);
    EXPECT_EQ(doc->channel(1).m_bitsPerSample, 12);
    EXPECT_EQ(doc->channel(1).m_referenceCode, -1);
    EXPECT_EQ(doc->channel(0).m_bitsPerSample, 16);
    EXPECT_DOUBLE_EQ(doc->m_timeGridStepMs, 50.0);
    EXPECT_EQ(config.m_print.inches, 0);
    EXPECT_EQ(config.m_print.color, 0);
    EXPECT_DOUBLE_EQ(config.m_print.width, 12.5);
    EXPECT_EQ(config.m_timeGridOn, 1);
}

namespace {
struct CountingExtension : IViewExtension {
    static inline int painted = 0;
    static inline bool consume = false;
    void paintChannel(QPainter&, int, const QRect&) override { ++painted; }
    bool mousePress(QMouseEvent*) override { return consume; }
};
}  // namespace

TEST(ViewGuiTest, ExtensionsPaintEveryStripAndMayTakeThePress) {
    static bool registered = false;
    if (!registered) {
        registerViewExtension([](CKestruneView&) { return std::make_unique<CountingExtension>(); });
        registered = true;
    }
    Fixture f(demo());
    ASSERT_NE(f.view->extension<CountingExtension>(), nullptr);
    CountingExtension::painted = 0;
    f.view->requestRedraw();
    f.shot();
    EXPECT_EQ(CountingExtension::painted, 3);
    CountingExtension::consume = true;
    QTest::mouseClick(f.view.get(), Qt::LeftButton, {}, QPoint(300, f.midY(0)));
    EXPECT_FALSE(f.view->cursorPlaced());
    CountingExtension::consume = false;
    QTest::mouseClick(f.view.get(), Qt::LeftButton, {}, QPoint(300, f.midY(0)));
    EXPECT_TRUE(f.view->cursorPlaced());
}

// Run a second time with QT_SCALE_FACTOR=2: layers in device pixels.
TEST(ViewGuiTest, HighDpiLayersAreInDevicePixels) {
    Fixture f(demo());
    const double dpr = f.view->devicePixelRatioF();
    if (dpr < 1.5) GTEST_SKIP() << "runs under QT_SCALE_FACTOR=2";
    const QImage& composite = f.view->renderNow();
    EXPECT_EQ(composite.width(), std::lround(f.view->clientRect().width() * dpr));
    // The trace is drawn per device column: neighbouring device columns differ somewhere.
    const QRect r = f.strip(0);
    int differing = 0;
    for (int x = int(r.left() * dpr) + 40; x < int(r.right() * dpr) - 40; x += 2) {
        for (int y = int(r.top() * dpr) + 30; y < int(r.bottom() * dpr) - 4; ++y) {
            if (composite.pixel(x, y) != composite.pixel(x + 1, y)) {
                ++differing;
                break;
            }
        }
    }
    EXPECT_GT(differing, 50);
}
