#include "SpectrogramLayout.h"

#include <algorithm>
#include <cmath>

SpectrogramLayout spectrogramLayout(QSize size, const sonmetra::SpectrogramSettings& settings) {
    SpectrogramLayout l;
    const int left = SpectrogramLayout::kLeftMargin;
    const int width = std::max(0, size.width() - left - SpectrogramLayout::kRightMargin);
    const int available = std::max(0, size.height() - SpectrogramLayout::kTopMargin - SpectrogramLayout::kBottomMargin);
    // The panes take fixed shares of the height; the image takes the rest.
    const int wave = settings.drawWaveform != 0 ? std::max(24, static_cast<int>(available * 0.18)) : 0;
    const int intensity = settings.drawIntensity != 0 ? std::max(20, static_cast<int>(available * 0.14)) : 0;
    const int labels = settings.drawLabels != 0 ? SpectrogramLayout::kLabelPaneHeight : 0;
    const int gaps = SpectrogramLayout::kPaneGap * ((wave > 0) + (intensity > 0) + (labels > 0));
    const int image = std::max(0, available - wave - intensity - labels - gaps);

    int y = SpectrogramLayout::kTopMargin;
    auto take = [&](int height, QRect& rect) {
        if (height <= 0) return;
        rect = QRect(left, y, width, height);
        y += height + SpectrogramLayout::kPaneGap;
    };
    take(wave, l.wavePane);
    l.image = QRect(left, y, width, image);
    y += image + SpectrogramLayout::kPaneGap;
    take(intensity, l.intensityPane);
    take(labels, l.labelPane);
    return l;
}

QRect SpectrogramLayout::timeArea() const {
    QRect area = image;
    for (const QRect& pane : {wavePane, intensityPane, labelPane})
        if (!pane.isEmpty()) area = area.united(pane);
    return area;
}

double SpectrogramLayout::msToX(double ms, double startMs, double endMs) const {
    const double length = endMs - startMs;
    if (!(length > 0.0)) return image.left();
    return image.left() + (ms - startMs) / length * image.width();
}

double SpectrogramLayout::xToMs(double x, double startMs, double endMs) const {
    if (image.width() <= 0) return startMs;
    return startMs + (x - image.left()) / image.width() * (endMs - startMs);
}

double SpectrogramLayout::hzToY(double hz, double rangeHz) const {
    if (!(rangeHz > 0.0)) return image.top() + image.height();
    return image.top() + image.height() - hz / rangeHz * image.height();
}

double SpectrogramLayout::yToHz(double y, double rangeHz) const {
    if (image.height() <= 0) return 0.0;
    return (image.top() + image.height() - y) / image.height() * rangeHz;
}
