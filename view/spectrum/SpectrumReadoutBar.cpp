#include "SpectrumReadoutBar.h"

#include <QGridLayout>
#include <QLabel>
#include <QPainter>
#include <QTextOption>
#include <cmath>

namespace {

const char* const kPrefixes[] = {
    "Sample Rate (Hz) = ",     "LPC Coefficients  = ",       "Bandwidth (Hz) =  ", "Window Length (pts) =  ",
    "Applied Window (ms) =  ", "Average Step Size (ms) =  ", "Power (dB) =  ",     "Frequency (Hz) =  "};

QString whole(const char* prefix, long value) { return QString(prefix) + QString::asprintf("%ld", value); }

}  // namespace

SpectrumReadoutBar::SpectrumReadoutBar(QWidget* parent) : QWidget(parent) {
    // The formant text's columns: wide enough for its longest heading. It
    // stands in two lines below the readouts, so that the bar stays narrow.
    const QFontMetrics fm(font());
    m_tabPx = fm.horizontalAdvance(QStringLiteral("Bandwidths")) + 14;
    m_formantHeightPx = 2 * fm.lineSpacing();
    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(6, 3, 6, m_formantHeightPx + 8);
    grid->setHorizontalSpacing(18);
    grid->setVerticalSpacing(2);
    // Three columns of readouts: the settings, then the mouse's power and frequency.
    const int cells[8][2] = {{0, 0}, {1, 0}, {0, 1}, {1, 1}, {0, 2}, {1, 2}, {2, 0}, {2, 1}};
    for (std::size_t i = 0; i < m_labels.size(); ++i) {
        m_labels[i] = new QLabel(kPrefixes[i], this);
        m_labels[i]->setTextInteractionFlags(Qt::TextSelectableByMouse);
        grid->addWidget(m_labels[i], cells[i][0], cells[i][1]);
    }
    grid->setColumnStretch(3, 1);
    setFormants({}, {});
}

void SpectrumReadoutBar::setAnalysis(double rateHz, int lpcOrder, int fftPoints, int appliedWindowMs,
                                     int averageStepMs) {
    const long rate = static_cast<long>(rateHz);
    const long values[] = {rate,      lpcOrder,        fftPoints > 0 ? rate / fftPoints : 0,
                           fftPoints, appliedWindowMs, averageStepMs};
    for (std::size_t i = 0; i < std::size(values); ++i) m_labels[i]->setText(whole(kPrefixes[i], values[i]));
}

void SpectrumReadoutBar::setMouse(double powerDb, double frequencyHz) {
    m_labels[6]->setText(whole(kPrefixes[6], static_cast<long>(std::lround(powerDb))));
    m_labels[7]->setText(whole(kPrefixes[7], static_cast<long>(std::lround(frequencyHz))));
}

void SpectrumReadoutBar::clearMouse() {
    m_labels[6]->setText(kPrefixes[6]);
    m_labels[7]->setText(kPrefixes[7]);
}

void SpectrumReadoutBar::setFormants(const std::array<double, 5>& formantHz, const std::array<double, 5>& bandwidthHz) {
    m_formants = formatFormants(formantHz, bandwidthHz);
    update();
}

QString SpectrumReadoutBar::text(Readout readout) const { return m_labels[static_cast<std::size_t>(readout)]->text(); }

QString SpectrumReadoutBar::formatFormants(const std::array<double, 5>& formantHz,
                                           const std::array<double, 5>& bandwidthHz) {
    QString text = QStringLiteral("Formants\t=");
    for (const double f : formantHz) text += QStringLiteral("\t") + QString::asprintf("%7.1f", f);
    text += QStringLiteral("\nBandwidths\t=");
    for (const double b : bandwidthHz) text += QStringLiteral("\t") + QString::asprintf("%7.1f", b);
    return text;
}

void SpectrumReadoutBar::paintEvent(QPaintEvent*) {
    // The formant text keeps its tabs as columns, which a label cannot.
    QPainter painter(this);
    QTextOption option;
    option.setTabStopDistance(m_tabPx);
    option.setWrapMode(QTextOption::NoWrap);
    const QRectF area(6, height() - m_formantHeightPx - 5, width() - 12, m_formantHeightPx + 2);
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawText(area, m_formants, option);
}
