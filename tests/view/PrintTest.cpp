// The printed waveform view as it comes out of a printer: the page is
// written as a PDF, rasterised with pdftoppm at 150 and 600 dpi, and
// looked at strip by strip: solid traces, the time grid as the display
// option says, and the selection highlight where the screen shows it.
#include <gtest/gtest.h>

#include <QFile>
#include <QImage>
#include <QPrinter>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include "SyntheticDoc.h"
#include "document/AppConfig.h"
#include "frame/DisplayConfig.h"
#include "frame/ViewPrinting.h"
#include "tests/support/GuiTestSupport.h"
#include "view/CKestruneView.h"
#include "view/PictureOutput.h"
#include "view/TimeBase.h"
#include "view/WaveformRenderer.h"

namespace {

bool isDark(QRgb c) { return qGray(c) < 110; }
bool isMarked(QRgb c) { return qGray(c) < 240; }
bool isHighlight(QRgb c) { return qBlue(c) > qRed(c) + 40; }

struct PrintedPage {
    QTemporaryDir dir;
    std::unique_ptr<sonmetra::CKestruneDoc> doc = synthetic::speechLike(2.0, 8000.0, 500.0);
    std::unique_ptr<CKestruneView> view;
    QSize layout;               // the picture in 1/96-inch pixels
    std::vector<QRect> strips;  // in those pixels

    PrintedPage() {
        view = sonmetra::test::shownView(doc.get(), QSize(800, 600));
        EXPECT_TRUE(QTest::qWaitForWindowExposed(view.get()));
        sonmetra::AppConfig& config = displayConfig();
        config.m_print = sonmetra::PrintSize{6.0, 4.0, 1, 1};
        layout = printLayoutSize(config.m_print);
        strips = layoutStrips(*doc, layout.width(), layout.height());
    }

    // The page at `dpi`, the picture's corner at the page's corner.
    QImage print(int dpi) {
        const QString pdf = dir.filePath("view.pdf");
        QPrinter printer(QPrinter::HighResolution);
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(pdf);
        printer.setFullPage(true);
        printView(*view, printer);
        QProcess raster;
        // The picture's part of the page only: a whole page at 600 dpi is a large image.
        const QString w = QString::number(std::ceil((layout.width() + 8) * dpi / 96.0));
        const QString h = QString::number(std::ceil((layout.height() + 8) * dpi / 96.0));
        raster.start("pdftoppm", {"-r", QString::number(dpi), "-x", "0", "-y", "0", "-W", w, "-H", h, "-png",
                                  "-singlefile", pdf, dir.filePath("page")});
        EXPECT_TRUE(raster.waitForFinished(60000));
        EXPECT_EQ(raster.exitCode(), 0) << raster.readAllStandardError().toStdString();
        QImage page(dir.filePath("page.png"));
        EXPECT_FALSE(page.isNull()) << "pdftoppm wrote no page";
        return page.convertToFormat(QImage::Format_RGB32);
    }
    QByteArray pdfBytes() {
        QFile f(dir.filePath("view.pdf"));
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }
    // A strip's inside on the page at `dpi`, clear of its frame and name.
    QRect inside(int i, int dpi) const {
        const double s = dpi / 96.0;
        const QRect& r = strips[static_cast<std::size_t>(i)];
        return QRect(QPoint(int(std::ceil((r.left() + 2) * s)), int(std::ceil((r.top() + 18) * s))),
                     QPoint(int((r.left() + r.width() - 3) * s), int((r.top() + r.height() - 3) * s)));
    }
    double pageX(double ms, int dpi) const {
        TraceGeometry g;
        g.clientWidth = layout.width();
        g.clientHeight = layout.height();
        return ::msToX(*doc, g, ms) * dpi / 96.0;
    }
};

}  // namespace

TEST(PrintTest, TracesArePrintedSolidInEveryStrip) {
    PrintedPage page;
    displayConfig().m_timeGridOn = 0;
    for (int dpi : {150, 600}) {
        const QImage img = page.print(dpi);
        for (int i = 0; i < 3; ++i) {
            const QRect r = page.inside(i, dpi);
            int columnsWithTrace = 0;
            for (int x = r.left(); x <= r.right(); ++x) {
                bool dark = false;
                for (int y = r.top(); y <= r.bottom() && !dark; ++y) dark = isDark(img.pixel(x, y));
                columnsWithTrace += dark ? 1 : 0;
            }
            EXPECT_GT(columnsWithTrace, r.width() * 97 / 100) << "strip " << i << " at " << dpi << " dpi";
        }
        // The flat top of ch2's square wave (its first half second) is a
        // line of about 0.25 mm, whatever the printer's resolution.
        const int x = static_cast<int>(page.pageX(250.0, dpi));
        const QRect r = page.inside(2, dpi);
        int thickness = 0;
        for (int y = r.top(); y <= r.bottom(); ++y) thickness += isDark(img.pixel(x, y)) ? 1 : 0;
        const double expected = 0.25 / 25.4 * dpi;
        EXPECT_GE(thickness, std::max(1.0, expected - 1.5)) << dpi << " dpi";
        EXPECT_LE(thickness, expected + 2.5) << dpi << " dpi";
    }
    // Lines, not a picture of them.
    EXPECT_FALSE(page.pdfBytes().contains("/Subtype /Image"));
}

TEST(PrintTest, TheTimeGridIsPrintedWhenTheDisplayOptionAsks) {
    PrintedPage page;
    const int dpi = 150;
    TraceGeometry g;
    g.clientWidth = page.layout.width();
    const double step = timebase::gridStepMs(page.doc->m_timeGridStepMs, 2000.0, g.traceWidth());
    ASSERT_GT(step, 0.0);
    // The share of a strip's rows marked at each grid line, in the worst line.
    auto weakestLine = [&](const QImage& img) {
        const QRect r = page.inside(1, dpi);
        double weakest = 1.0;
        for (double t = step; t < 2000.0 - 1e-6; t += step) {
            const int x = static_cast<int>(std::floor(page.pageX(t, dpi)));
            int marked = 0;
            for (int y = r.top(); y <= r.bottom(); ++y)
                marked += (isMarked(img.pixel(x, y)) || isMarked(img.pixel(x + 1, y))) ? 1 : 0;
            weakest = std::min(weakest, double(marked) / r.height());
        }
        return weakest;
    };
    displayConfig().m_timeGridOn = 1;
    EXPECT_GT(weakestLine(page.print(dpi)), 0.95);
    displayConfig().m_timeGridOn = 0;
    EXPECT_LT(weakestLine(page.print(dpi)), 0.5);
}

TEST(PrintTest, TheSelectionIsHighlightedWhereTheScreenShowsIt) {
    PrintedPage page;
    displayConfig().m_timeGridOn = 0;
    timebase::selectRange(*page.doc, 500.0, 1000.0);
    page.view->setSelectionPresent(true);
    const int dpi = 96;  // one page pixel per layout pixel
    const QImage img = page.print(dpi);
    int left = img.width(), right = -1, top = img.height(), bottom = -1;
    for (int y = 0; y < img.height(); ++y)
        for (int x = 0; x < img.width(); ++x)
            if (isHighlight(img.pixel(x, y))) {
                left = std::min(left, x);
                right = std::max(right, x);
                top = std::min(top, y);
                bottom = std::max(bottom, y);
            }
    ASSERT_GE(right, 0) << "no highlight on the page";
    EXPECT_NEAR(left, page.pageX(500.0, dpi), 1.5);
    EXPECT_NEAR(right, page.pageX(1000.0, dpi), 1.5);
    EXPECT_LE(top, 1);
    // Down to the bottom strip's frame, not past it.
    EXPECT_NEAR(bottom, stripsBottom(page.strips) - 1, 1.0);

    // The screen's highlight ends at the same strip edge.
    const QImage screen = page.view->renderNow();
    const int x = page.view->msToX(750.0);
    int screenBottom = -1;
    for (int y = 0; y < screen.height(); ++y)
        if (isHighlight(screen.pixel(x, y))) screenBottom = y;
    EXPECT_NEAR(screenBottom, page.doc->channel(2).m_strip.bottom - 1, 1.0);
}
