#include "ViewPrinting.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPointer>
#include <QPrinter>
#include <QScreen>
#include <QTimer>
#include <algorithm>
#include <cmath>
#include <optional>

#include "DisplayConfig.h"
#include "document/AppConfig.h"
#include "document/CKestruneDoc.h"
#include "document/MessageService.h"
#include "res/StringTable.h"
#include "view/CKestruneView.h"
#include "view/PictureOutput.h"

namespace {

constexpr int kScreenDumpDelayMs = 250;  // long enough for the menu to be gone from the screen

}  // namespace

RenderOptions printOptions(const CKestruneView& view, const sonmetra::AppConfig& config) {
    RenderOptions options;
    options.color = config.m_print.color != 0;
    options.grid = config.m_timeGridOn != 0;
    options.gridStepMs = view.document()->m_timeGridStepMs;
    return options;
}

QImage viewBitmap(const CKestruneView& view, const sonmetra::AppConfig& config) {
    const double dpi = view.logicalDpiX() > 0 ? view.logicalDpiX() : 96.0;
    return view.renderImage(printSizePx(config.m_print, dpi), printOptions(view, config));
}

bool saveViewBitmap(const CKestruneView& view, const QString& path) {
    return writeBitmap(viewBitmap(view, displayConfig()), path);
}

void printView(const CKestruneView& view, QPrinter& printer) {
    const sonmetra::AppConfig& config = displayConfig();
    const double res = printer.resolution();
    // Laid out at screen size, drawn at the printer's resolution: the same
    // strips and fonts as on screen, with crisp traces.
    constexpr double kLayoutDpi = 96.0;
    const QSize layout = printSizePx(config.m_print, kLayoutDpi);
    QImage image = view.renderImage(layout, printOptions(view, config), res / kLayoutDpi);
    image.setDevicePixelRatio(1.0);
    QPainter painter(&printer);
    QSizeF target(layout.width() * res / kLayoutDpi, layout.height() * res / kLayoutDpi);
    const QRectF page = printer.pageLayout().paintRectPixels(printer.resolution());
    if (target.width() > page.width() || target.height() > page.height()) {
        target.scale(page.size(), Qt::KeepAspectRatio);
    }
    painter.drawImage(QRectF(QPointF(0, 0), target), image);
}

void saveViewAsBitmapCommand(CKestruneView& view) {
    const QString title = QString::fromStdString(view.document()->title());
    if (const auto path = askBitmapPath(&view, QStringLiteral("Save As bmp"), bitmapFileName(title)))
        saveViewBitmap(view, *path);
}

void saveScreenAsBitmapCommand(CKestruneView& view) {
    QPointer<CKestruneView> guard(&view);
    QTimer::singleShot(kScreenDumpDelayMs, &view, [guard] {
        if (guard.isNull()) return;
        QScreen* screen = guard->screen() != nullptr ? guard->screen() : QGuiApplication::primaryScreen();
        const QPixmap shot = screen != nullptr ? screen->grabWindow(0) : QPixmap();
        if (shot.isNull()) {
            sonmetra::beep();
            sonmetra::showMessage(sonmetra::IDS_SCREEN_CAPTURE_ERROR);
            return;
        }
        if (const auto path =
                askBitmapPath(guard, QStringLiteral("Save Screen As bmp"), QStringLiteral("ScreenDump"))) {
            writeBitmap(shot.toImage(), *path);
        }
    });
}

void printViewCommand(CKestruneView& view) {
    runPrintDialog(&view, [&view](QPrinter& printer) { printView(view, printer); });
}

void printPreviewCommand(CKestruneView& view) {
    runPrintPreview(&view, [&view](QPrinter& printer) { printView(view, printer); });
}
