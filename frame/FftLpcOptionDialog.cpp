#include "FftLpcOptionDialog.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QVBoxLayout>

#include "DisplayConfig.h"
#include "analysis/FftSpectrum.h"
#include "document/AppConfig.h"
#include "document/AudioRate.h"
#include "document/CKestruneDoc.h"
#include "document/MessageService.h"
#include "res/StringTable.h"
#include "view/spectrum/CFFTLPCView.h"

namespace {

QSpinBox* wholeField(int lo, int hi, QWidget* parent) {
    auto* f = new QSpinBox(parent);
    // Wide limits on the checked fields, so that OK can say what is wrong.
    f->setRange(lo, hi);
    return f;
}

QDoubleSpinBox* sizeField(QWidget* parent) {
    auto* f = new QDoubleSpinBox(parent);
    f->setRange(0.1, 100.0);
    f->setDecimals(2);
    f->setSingleStep(0.5);
    return f;
}

}  // namespace

FftLpcOptionDialog::FftLpcOptionDialog(const sonmetra::FftLpcSettings& settings, double rateHz, QWidget* parent)
    : QDialog(parent), m_rateHz(rateHz > 0.0 ? rateHz : 11025.0) {
    setWindowTitle(QStringLiteral("FFT/LPC Option"));
    auto* column = new QVBoxLayout(this);

    auto* analysis = new QGridLayout;
    int row = 0;
    auto addRow = [&](const QString& label, QWidget* field) {
        analysis->addWidget(new QLabel(label, this), row, 0);
        analysis->addWidget(field, row++, 1);
    };
    m_fftSize = new QComboBox(this);
    for (int i = 0; i < 8; ++i) m_fftSize->addItem(QString::fromStdString(sonmetra::FftSizeLabel(i, m_rateHz)));
    addRow(QStringLiteral("Bandwidth (Window Length ) = "), m_fftSize);
    m_applied = wholeField(1, 100000, this);
    addRow(QStringLiteral("Applied window length (ms)  = "), m_applied);
    m_range = wholeField(1, 1000000, this);
    addRow(QStringLiteral("Frequency range (Hz) = "), m_range);
    m_step = wholeField(1, 100000, this);
    addRow(QStringLiteral("Average step size (ms) = "), m_step);
    m_order = wholeField(4, 100, this);
    addRow(QStringLiteral("LPC number of coefficients = "), m_order);
    m_drawLpc = new QCheckBox(QStringLiteral("Draw LPC"), this);
    analysis->addWidget(m_drawLpc, row++, 0, 1, 2);
    column->addLayout(analysis);

    auto* format = new QGroupBox(QStringLiteral("Display format"), this);
    auto* formatGrid = new QGridLayout(format);
    m_absolute = new QRadioButton(QStringLiteral("Absolute  (dB)  = "), format);
    m_absoluteDb = wholeField(1, 300, format);
    m_relative = new QRadioButton(QStringLiteral("Relative "), format);
    formatGrid->addWidget(m_absolute, 0, 0);
    formatGrid->addWidget(m_absoluteDb, 0, 1);
    formatGrid->addWidget(m_relative, 1, 0);
    column->addWidget(format);

    auto* size = new QGroupBox(QStringLiteral("Print / bitmap size"), this);
    auto* sizeGrid = new QGridLayout(size);
    m_width = sizeField(size);
    m_height = sizeField(size);
    m_inches = new QRadioButton(QStringLiteral("inches"), size);
    m_cm = new QRadioButton(QStringLiteral("cm"), size);
    m_color = new QRadioButton(QStringLiteral("Color"), size);
    m_blackWhite = new QRadioButton(QStringLiteral("Black / White"), size);
    auto* unitGroup = new QButtonGroup(size);
    unitGroup->addButton(m_inches);
    unitGroup->addButton(m_cm);
    auto* colourGroup = new QButtonGroup(size);
    colourGroup->addButton(m_color);
    colourGroup->addButton(m_blackWhite);
    sizeGrid->addWidget(new QLabel(QStringLiteral("Width  = "), size), 0, 0);
    sizeGrid->addWidget(m_width, 0, 1);
    sizeGrid->addWidget(m_inches, 0, 2);
    sizeGrid->addWidget(m_color, 0, 3);
    sizeGrid->addWidget(new QLabel(QStringLiteral("Height ="), size), 1, 0);
    sizeGrid->addWidget(m_height, 1, 1);
    sizeGrid->addWidget(m_cm, 1, 2);
    sizeGrid->addWidget(m_blackWhite, 1, 3);
    column->addWidget(size);

    auto* grids = new QGridLayout;
    m_frequencyGrid = new QCheckBox(QStringLiteral("Add Frequency grid with spacing (Hz) = "), this);
    m_frequencyGridHz = wholeField(1, 100000, this);
    m_powerGrid = new QCheckBox(QStringLiteral("Add Power grid with spacing (dB)       = "), this);
    m_powerGridDb = wholeField(1, 1000, this);
    grids->addWidget(m_frequencyGrid, 0, 0);
    grids->addWidget(m_frequencyGridHz, 0, 1);
    grids->addWidget(m_powerGrid, 1, 0);
    grids->addWidget(m_powerGridDb, 1, 1);
    column->addLayout(grids);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    QPushButton* defaults = buttons->addButton(QStringLiteral("Default size"), QDialogButtonBox::ResetRole);
    connect(defaults, &QPushButton::clicked, this, &FftLpcOptionDialog::setDefaults);
    connect(buttons, &QDialogButtonBox::accepted, this, &FftLpcOptionDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    column->addWidget(buttons);

    for (QAbstractButton* b :
         {static_cast<QAbstractButton*>(m_absolute), static_cast<QAbstractButton*>(m_relative),
          static_cast<QAbstractButton*>(m_frequencyGrid), static_cast<QAbstractButton*>(m_powerGrid)})
        connect(b, &QAbstractButton::toggled, this, &FftLpcOptionDialog::followChecks);
    setSettings(settings);
}

void FftLpcOptionDialog::setSettings(const sonmetra::FftLpcSettings& s) {
    m_fftSize->setCurrentIndex(std::clamp(s.fftSizeIndex, 0, 7));
    m_applied->setValue(s.appliedWindowMs);
    m_range->setValue(s.frequencyRangeHz);
    m_step->setValue(s.averageStepMs);
    m_order->setValue(s.lpcOrder);
    m_drawLpc->setChecked(s.drawLpc != 0);
    (s.absoluteLevel != 0 ? m_absolute : m_relative)->setChecked(true);
    m_absoluteDb->setValue(s.absoluteLevelDb);
    m_width->setValue(s.print.width);
    m_height->setValue(s.print.height);
    (s.print.inches != 0 ? m_inches : m_cm)->setChecked(true);
    (s.print.color != 0 ? m_color : m_blackWhite)->setChecked(true);
    m_frequencyGrid->setChecked(s.frequencyGrid != 0);
    m_frequencyGridHz->setValue(s.frequencyGridHz);
    m_powerGrid->setChecked(s.powerGrid != 0);
    m_powerGridDb->setValue(s.powerGridDb);
    followChecks();
}

sonmetra::FftLpcSettings FftLpcOptionDialog::settings() const {
    sonmetra::FftLpcSettings s;
    s.fftSizeIndex = m_fftSize->currentIndex();
    s.appliedWindowMs = m_applied->value();
    s.frequencyRangeHz = m_range->value();
    s.averageStepMs = m_step->value();
    s.lpcOrder = m_order->value();
    s.drawLpc = m_drawLpc->isChecked() ? 1 : 0;
    s.absoluteLevel = m_absolute->isChecked() ? 1 : 0;
    s.absoluteLevelDb = m_absoluteDb->value();
    s.print.width = m_width->value();
    s.print.height = m_height->value();
    s.print.inches = m_inches->isChecked() ? 1 : 0;
    s.print.color = m_color->isChecked() ? 1 : 0;
    s.frequencyGrid = m_frequencyGrid->isChecked() ? 1 : 0;
    s.frequencyGridHz = m_frequencyGridHz->value();
    s.powerGrid = m_powerGrid->isChecked() ? 1 : 0;
    s.powerGridDb = m_powerGridDb->value();
    return s;
}

void FftLpcOptionDialog::setDefaults() { setSettings(sonmetra::AnalysisSettings::defaultsForRate(m_rateHz).fftLpc); }

int FftLpcOptionDialog::maxAppliedWindowMs() const {
    return static_cast<int>(sonmetra::FftSizeOfIndex(m_fftSize->currentIndex()) * 1000.0 / m_rateHz);
}

int FftLpcOptionDialog::maxFrequencyRangeHz() const { return static_cast<int>(m_rateHz / 2.0); }

void FftLpcOptionDialog::accept() {
    if (m_applied->value() > maxAppliedWindowMs()) {
        sonmetra::showMessage(sonmetra::IDS_FFT_APPLIED_WINDOW_RANGE);
        m_applied->setValue(std::max(1, maxAppliedWindowMs()));
    }
    if (m_range->value() > maxFrequencyRangeHz()) {
        sonmetra::showMessage(sonmetra::IDS_FFT_FREQUENCY_RANGE);
        m_range->setValue(maxFrequencyRangeHz());
    }
    QDialog::accept();
}

void FftLpcOptionDialog::followChecks() {
    m_absoluteDb->setEnabled(m_absolute->isChecked());
    m_frequencyGridHz->setEnabled(m_frequencyGrid->isChecked());
    m_powerGridDb->setEnabled(m_powerGrid->isChecked());
}

double fftLpcDialogRateHz(const sonmetra::CKestruneDoc* doc) {
    if (doc != nullptr && doc->channelCount() > 0) {
        const int audio = doc->audioChannelIndex();
        const double rate = doc->channel(audio >= 0 ? audio : 0).m_rateHz;
        if (rate > 0.0) return rate;
    }
    return sonmetra::audioRateInForce();
}

void runFftLpcOptions(sonmetra::CKestruneDoc* doc, QWidget* parent) {
    sonmetra::AppConfig& config = displayConfig();
    const sonmetra::FftLpcSettings current =
        doc != nullptr ? CFFTLPCView::settingsInForce(*doc) : config.m_analysis.fftLpc;
    FftLpcOptionDialog dialog(current, fftLpcDialogRateHz(doc), parent);
    if (dialog.exec() != QDialog::Accepted) return;
    config.m_analysis.fftLpc = dialog.settings();
    if (doc != nullptr) doc->m_analysis.fftLpc = dialog.settings();
    writeDisplayConfig();
    CFFTLPCView::recomputeAll();
}
