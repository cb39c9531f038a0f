#include "PictureOutput.h"

#include <QFileInfo>
#include <QPainter>
#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <algorithm>
#include <cmath>

#include "document/MessageService.h"
#include "res/StringTable.h"
#include "view/FileDialogs.h"

namespace {
constexpr double kLayoutDpi = 96.0;
}

QString bitmapFileName(const QString& title) {
    const QString base = QFileInfo(title).completeBaseName();
    return (base.isEmpty() ? QStringLiteral("Untitled") : base) + QStringLiteral(".bmp");
}

std::optional<QString> askBitmapPath(QWidget* parent, const QString& dialogTitle, const QString& proposedName) {
    FileDialogRequest request;
    request.save = true;
    request.title = dialogTitle;
    request.defaultName =
        proposedName.endsWith(".bmp", Qt::CaseInsensitive) ? proposedName : bitmapFileName(proposedName);
    request.defaultSuffix = QStringLiteral("bmp");
    request.filters = {QStringLiteral("Bitmap files (*.bmp)")};
    const auto answer = fileDialogs().ask(parent, request);
    if (!answer || answer->path.isEmpty()) return std::nullopt;
    QString path = answer->path;
    if (QFileInfo(path).suffix().compare(QStringLiteral("bmp"), Qt::CaseInsensitive) != 0) path += ".bmp";
    return path;
}

bool writeBitmap(const QImage& image, const QString& path) {
    QImage plain = image.convertToFormat(QImage::Format_RGB32);
    plain.setDevicePixelRatio(1.0);
    if (plain.save(path, "BMP")) return true;
    sonmetra::beep();
    sonmetra::showMessage(sonmetra::formatString(sonmetra::IDS_BITMAP_WRITE_ERROR, path.toStdString()));
    return false;
}

QSize printSizePx(const sonmetra::PrintSize& size, double dotsPerInch) {
    const double perUnit = size.inches != 0 ? dotsPerInch : dotsPerInch / 2.54;
    const int w = static_cast<int>(std::lround(std::clamp(size.width, 0.1, 1000.0) * perUnit));
    const int h = static_cast<int>(std::lround(std::clamp(size.height, 0.1, 1000.0) * perUnit));
    return QSize(std::max(w, 60), std::max(h, 40));
}

QSize printLayoutSize(const sonmetra::PrintSize& size) { return printSizePx(size, kLayoutDpi); }

QImage pictureImage(QSize size, const PictureDrawer& draw, double devicePixelRatio) {
    const QSize px(std::max(1, static_cast<int>(std::lround(size.width() * devicePixelRatio))),
                   std::max(1, static_cast<int>(std::lround(size.height() * devicePixelRatio))));
    QImage image(px, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(devicePixelRatio);
    image.fill(Qt::white);
    QPainter painter(&image);
    draw(painter, size);
    return image;
}

void printPicture(QPrinter& printer, const sonmetra::PrintSize& size, const PictureDrawer& draw) {
    const QSize layout = printLayoutSize(size);
    const double scale = printer.resolution() / kLayoutDpi;
    QSizeF onPage(layout.width() * scale, layout.height() * scale);
    const QRectF page = printer.pageLayout().paintRectPixels(printer.resolution());
    if (onPage.width() > page.width() || onPage.height() > page.height())
        onPage.scale(page.size(), Qt::KeepAspectRatio);
    QPainter painter(&printer);
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.scale(onPage.width() / layout.width(), onPage.height() / layout.height());
    painter.setClipRect(QRect(QPoint(0, 0), layout));
    draw(painter, layout);
}

void runPrintDialog(QWidget* parent, const std::function<void(QPrinter&)>& print) {
    QPrinter printer(QPrinter::HighResolution);
    QPrintDialog dialog(&printer, parent);
    if (dialog.exec() != QDialog::Accepted) return;
    print(printer);
}

void runPrintPreview(QWidget* parent, const std::function<void(QPrinter&)>& print) {
    QPrinter printer(QPrinter::HighResolution);
    QPrintPreviewDialog preview(&printer, parent);
    QObject::connect(&preview, &QPrintPreviewDialog::paintRequested, parent, [&print](QPrinter* p) { print(*p); });
    preview.exec();
}
