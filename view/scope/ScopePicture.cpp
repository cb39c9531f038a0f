#include "ScopePicture.h"

#include <QColor>
#include <QFontMetrics>
#include <QPainter>
#include <QPen>
#include <QPolygon>
#include <QSize>

namespace {

constexpr int kFirstLeft = 20;
constexpr int kFirstTop = 20;
constexpr int kRightMargin = 5;
constexpr int kBandHeight = 100;
constexpr int kBandGap = 5;

// A one-pixel frame just inside the band, as a frame drawn with a brush lies.
void frameBand(QPainter& painter, const ScopeBand& b, const QColor& colour) {
    if (b.width() <= 0 || b.height() <= 0) return;
    painter.fillRect(b.left, b.top, b.width(), 1, colour);
    painter.fillRect(b.left, b.bottom - 1, b.width(), 1, colour);
    painter.fillRect(b.left, b.top, 1, b.height(), colour);
    painter.fillRect(b.right - 1, b.top, 1, b.height(), colour);
}

void drawTrace(QPainter& painter, const ScopeBand& b, const std::vector<std::int16_t>& samples) {
    const auto count = static_cast<std::int64_t>(samples.size());
    const std::int64_t width = b.width();
    const std::int64_t height = b.height();
    if (count == 0 || width <= 0) return;
    QPolygon line;
    line.reserve(static_cast<int>(count) + 1);
    line << QPoint(b.left, b.middle());
    for (std::int64_t i = 0; i < count; ++i) {
        // Both divisions truncate toward zero; sample x height / 65536 is the
        // sample scaled so that the 16-bit range fills the band's height.
        const auto x = static_cast<int>(b.left + i * width / count);
        const auto y = static_cast<int>(b.middle() - samples[static_cast<std::size_t>(i)] * height / 65536);
        line << QPoint(x, y);
    }
    painter.drawPolyline(line);
}

}  // namespace

std::vector<ScopeBand> scopeBands(const std::vector<int>& shownChannels, int clientWidth) {
    std::vector<ScopeBand> bands;
    int top = kFirstTop;
    for (const int channel : shownChannels) {
        bands.push_back({channel, kFirstLeft, top, clientWidth - kRightMargin, top + kBandHeight});
        top += kBandHeight + kBandGap;
    }
    return bands;
}

std::vector<ScopeBand> scopeStartBands(int clientWidth) {
    std::vector<ScopeBand> bands;
    for (int k = 0; k < 5; ++k)
        bands.push_back({k, 5, 5 + k * kBandHeight, clientWidth - kRightMargin, (k + 1) * kBandHeight});
    return bands;
}

int scopeScrollHeight(std::size_t bands) { return 100 + 105 * static_cast<int>(bands); }

QString scopeBandLabel(std::size_t index, int channel) {
    return index == 0 ? QStringLiteral("Audio") : QString::number(channel);
}

std::vector<ScopeBand> drawScope(QPainter& painter, QSize size, const ScopePicture& picture) {
    const QFontMetrics metrics(painter.font());
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setPen(Qt::black);
    // Text is placed by its top-left corner.
    painter.drawText(QPoint(5, metrics.ascent()), kScopeHeader);

    const std::vector<ScopeBand> bands = scopeBands(picture.shownChannels, size.width());
    const QPen centrePen(QColor(200, 200, 200), 1, Qt::DashLine);
    for (std::size_t k = 0; k < bands.size(); ++k) {
        const ScopeBand& b = bands[k];
        frameBand(painter, b, QColor(255, 0, 0));
        painter.setPen(centrePen);
        if (b.width() > 1) painter.drawLine(b.left, b.middle(), b.right - 1, b.middle());
        painter.setPen(Qt::black);
        painter.drawText(QPoint(b.left + 2, b.top + 5 + metrics.ascent()), scopeBandLabel(k, b.channel));
    }

    if (picture.dataReady && picture.samples != nullptr) {
        painter.setPen(QPen(Qt::black, 1, Qt::SolidLine));
        for (const ScopeBand& b : bands)
            if (b.channel >= 0 && b.channel < sonmetra::usb::kScopeMaxChannels)
                drawTrace(painter, b, (*picture.samples)[static_cast<std::size_t>(b.channel)]);
    }
    painter.restore();
    return bands;
}
