#include "SpectrogramReadoutBar.h"

#include <QGridLayout>
#include <QLabel>

namespace {

const QString kRate = QStringLiteral("Sample Rate (Hz) = ");
const QString kLpc = QStringLiteral("LPC Coefficients  = ");
const QString kBandwidth = QStringLiteral("Bandwidth (Hz) =  ");
const QString kWindow = QStringLiteral("Window Length (pts) =  ");
const QString kTime = QStringLiteral("Time (ms) =  ");
const QString kFrequency = QStringLiteral("Frequency (Hz) =  ");
const QString kDuration = QStringLiteral("Duration (ms) =  ");
const QString kDynamic = QStringLiteral("Dynamic range (dB) = ");
const QString kPreEmphasis = QStringLiteral("PreEmphasis = ");

QString optionalText(std::optional<double> v, int decimals) {
    return v ? QString::number(*v, 'f', decimals) : QString();
}

}  // namespace

SpectrogramReadoutBar::SpectrogramReadoutBar(QWidget* parent) : QWidget(parent) {
    // The view paints only its picture, so the bar clears its own ground;
    // otherwise a shorter text would leave the longer one's tail behind.
    setAutoFillBackground(true);
    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(6, 2, 6, 2);
    grid->setHorizontalSpacing(14);
    grid->setVerticalSpacing(1);
    m_rate = addItem(0, 0);
    m_bandwidth = addItem(0, 1);
    m_window = addItem(0, 2);
    m_lpc = addItem(0, 3);
    m_dynamic = addItem(0, 4);
    m_preEmphasis = addItem(0, 5);
    m_time = addItem(1, 0);
    m_frequency = addItem(1, 1);
    m_duration = addItem(1, 2);
    grid->setColumnStretch(6, 1);
    setAnalysis({});
    setTime(std::nullopt);
    setFrequency(std::nullopt);
    setDuration(std::nullopt);
}

QLabel* SpectrogramReadoutBar::addItem(int row, int column) {
    auto* label = new QLabel(this);
    label->setTextFormat(Qt::PlainText);
    static_cast<QGridLayout*>(layout())->addWidget(label, row, column);
    return label;
}

void SpectrogramReadoutBar::setAnalysis(const Analysis& a) {
    const bool known = a.rateHz > 0.0 && a.windowPoints > 0;
    m_rate->setText(kRate + (known ? QString::number(a.rateHz, 'g', 10) : QString()));
    m_lpc->setText(kLpc + (known ? QString::number(a.lpcOrder) : QString()));
    // The bin width of the transform, as the option dialog's list shows it.
    m_bandwidth->setText(kBandwidth +
                         (known ? QString::number(static_cast<int>(a.rateHz / a.windowPoints)) : QString()));
    m_window->setText(kWindow + (known ? QString::number(a.windowPoints) : QString()));
    m_dynamic->setText(kDynamic + (known ? QString::number(a.dynamicRangeDb) : QString()));
    m_preEmphasis->setText(kPreEmphasis + (known ? QString::number(a.preEmphasis, 'f', 2) : QString()));
}

void SpectrogramReadoutBar::setTime(std::optional<double> ms) { m_time->setText(kTime + optionalText(ms, 2)); }

void SpectrogramReadoutBar::setFrequency(std::optional<double> hz) {
    m_frequency->setText(kFrequency + optionalText(hz, 0));
}

void SpectrogramReadoutBar::setDuration(std::optional<double> ms) {
    m_duration->setText(kDuration + optionalText(ms, 2));
}

QString SpectrogramReadoutBar::timeText() const { return m_time->text(); }
QString SpectrogramReadoutBar::frequencyText() const { return m_frequency->text(); }
QString SpectrogramReadoutBar::durationText() const { return m_duration->text(); }

QStringList SpectrogramReadoutBar::texts() const {
    QStringList list;
    for (const QLabel* l :
         {m_rate, m_lpc, m_bandwidth, m_window, m_time, m_frequency, m_duration, m_dynamic, m_preEmphasis})
        list << l->text();
    return list;
}
