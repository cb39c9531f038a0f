#include "PitchOptionDialog.h"

#include <QButtonGroup>
#include <QCheckBox>
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
#include "document/CKestruneDoc.h"
#include "document/MessageService.h"
#include "view/CKestruneView.h"
#include "view/ViewCommands.h"
#include "view/WindowCommands.h"
#include "view/pitch/CPitchFrame.h"
#include "view/pitch/CPitchView.h"
#include "view/pitch/PitchCommands.h"
#include "view/pitch/PitchSettingsInForce.h"

using sonmetra::PitchMethod;
using sonmetra::PitchSettings;

namespace {

QSpinBox* spin(QWidget* parent, int low, int high) {
    auto* s = new QSpinBox(parent);
    s->setRange(low, high);
    return s;
}

QDoubleSpinBox* sizeSpin(QWidget* parent) {
    auto* s = new QDoubleSpinBox(parent);
    s->setRange(0.5, 100.0);
    s->setDecimals(2);
    s->setSingleStep(0.5);
    return s;
}

}  // namespace

PitchOptionDialog::PitchOptionDialog(const PitchSettings& settings, QWidget* parent) : QDialog(parent) {
    setWindowTitle(QStringLiteral("Pitch option"));
    auto* top = new QVBoxLayout(this);

    auto* method = new QGroupBox(QStringLiteral("Calculation Method"), this);
    auto* methodRow = new QHBoxLayout(method);
    m_cepstral = new QRadioButton(QStringLiteral("Cepstral"), method);
    m_autocorrelation = new QRadioButton(QStringLiteral("AutoCorrolation"), method);
    methodRow->addWidget(m_cepstral);
    methodRow->addWidget(m_autocorrelation);
    top->addWidget(method);

    // The window may be long: a window of 4096 points or more is lowered by the computation.
    auto* grid = new QGridLayout;
    int row = 0;
    auto field = [&](const QString& label, QWidget* w) {
        grid->addWidget(new QLabel(label, this), row, 0);
        grid->addWidget(w, row, 1);
        ++row;
    };
    auto range = [&](const QString& label, QWidget* low, QWidget* high) {
        grid->addWidget(new QLabel(label, this), row, 0);
        grid->addWidget(low, row, 1);
        grid->addWidget(new QLabel(QStringLiteral("to"), this), row, 2);
        grid->addWidget(high, row, 3);
        ++row;
    };
    m_window = spin(this, 1, 10000);
    m_step = spin(this, 1, 10000);
    m_deviation = spin(this, 1, 100000);
    m_threshold = spin(this, 0, 100);
    m_low = spin(this, 1, 100000);
    m_high = spin(this, 1, 100000);
    m_displayLow = spin(this, 0, 100000);
    m_displayHigh = spin(this, 1, 100000);
    field(QStringLiteral("Window length (ms)  = "), m_window);
    field(QStringLiteral("Step size (ms)           = "), m_step);
    field(QStringLiteral("Frequency deviation (Hz) = "), m_deviation);
    field(QStringLiteral("Tracking threshold (%)     = "), m_threshold);
    range(QStringLiteral("Calculation range (Hz)  = "), m_low, m_high);
    range(QStringLiteral("Display range (Hz)        = "), m_displayLow, m_displayHigh);

    m_frequencyGrid = new QCheckBox(QStringLiteral("Add Frequency grid with spacing (Hz) = "), this);
    m_frequencyGridHz = spin(this, 1, 100000);
    m_timeGrid = new QCheckBox(QStringLiteral("Add Time grid with spacing (ms)          = "), this);
    m_timeGridMs = spin(this, 0, 10000000);
    m_timeGridMs->setToolTip(QStringLiteral("0: the spacing follows the zoom"));
    grid->addWidget(m_frequencyGrid, row, 0);
    grid->addWidget(m_frequencyGridHz, row++, 1);
    grid->addWidget(m_timeGrid, row, 0);
    grid->addWidget(m_timeGridMs, row++, 1);
    connect(m_frequencyGrid, &QCheckBox::toggled, m_frequencyGridHz, &QWidget::setEnabled);
    connect(m_timeGrid, &QCheckBox::toggled, m_timeGridMs, &QWidget::setEnabled);
    top->addLayout(grid);

    auto* panes = new QHBoxLayout;
    m_audio = new QCheckBox(QStringLiteral("Add audio"), this);
    m_intensity = new QCheckBox(QStringLiteral("Add Intensity"), this);
    m_labels = new QCheckBox(QStringLiteral("Add Labels"), this);
    panes->addWidget(m_audio);
    panes->addWidget(m_intensity);
    panes->addWidget(m_labels);
    top->addLayout(panes);

    auto* print = new QGroupBox(QStringLiteral("Print / BMP size"), this);
    auto* printGrid = new QGridLayout(print);
    m_width = sizeSpin(print);
    m_height = sizeSpin(print);
    m_inches = new QRadioButton(QStringLiteral("Inches"), print);
    m_cm = new QRadioButton(QStringLiteral("cm"), print);
    m_color = new QRadioButton(QStringLiteral("Color"), print);
    m_blackWhite = new QRadioButton(QStringLiteral("Black White"), print);
    // Two radio pairs in one box: each pair is a group of its own.
    auto* unitGroup = new QButtonGroup(print);
    unitGroup->addButton(m_inches);
    unitGroup->addButton(m_cm);
    auto* colorGroup = new QButtonGroup(print);
    colorGroup->addButton(m_color);
    colorGroup->addButton(m_blackWhite);
    printGrid->addWidget(new QLabel(QStringLiteral("width  = "), print), 0, 0);
    printGrid->addWidget(m_width, 0, 1);
    printGrid->addWidget(m_inches, 0, 2);
    printGrid->addWidget(m_color, 0, 3);
    printGrid->addWidget(new QLabel(QStringLiteral("heigth = "), print), 1, 0);
    printGrid->addWidget(m_height, 1, 1);
    printGrid->addWidget(m_cm, 1, 2);
    printGrid->addWidget(m_blackWhite, 1, 3);
    top->addWidget(print);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    QPushButton* defaults = buttons->addButton(QStringLiteral("Defaults "), QDialogButtonBox::ResetRole);
    connect(defaults, &QPushButton::clicked, this, &PitchOptionDialog::restoreDefaults);
    connect(buttons, &QDialogButtonBox::accepted, this, &PitchOptionDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    top->addWidget(buttons);

    setSettings(settings);
}

void PitchOptionDialog::setSettings(const PitchSettings& s) {
    m_cepstral->setChecked(s.method != PitchMethod::AutoCorrelation);
    m_autocorrelation->setChecked(s.method == PitchMethod::AutoCorrelation);
    m_window->setValue(s.windowMs);
    m_step->setValue(s.stepMs);
    m_deviation->setValue(s.deviationHz);
    m_threshold->setValue(s.thresholdPct);
    m_low->setValue(s.lowHz);
    m_high->setValue(s.highHz);
    m_displayLow->setValue(s.displayLowHz);
    m_displayHigh->setValue(s.displayHighHz);
    m_frequencyGrid->setChecked(s.frequencyGrid != 0);
    m_frequencyGridHz->setValue(s.frequencyGridHz);
    m_frequencyGridHz->setEnabled(s.frequencyGrid != 0);
    m_timeGrid->setChecked(s.timeGrid != 0);
    m_timeGridMs->setValue(s.timeGridMs);
    m_timeGridMs->setEnabled(s.timeGrid != 0);
    m_audio->setChecked(s.drawWaveform != 0);
    m_intensity->setChecked(s.drawIntensity != 0);
    m_labels->setChecked(s.drawLabels != 0);
    m_width->setValue(s.print.width);
    m_height->setValue(s.print.height);
    m_inches->setChecked(s.print.inches != 0);
    m_cm->setChecked(s.print.inches == 0);
    m_color->setChecked(s.print.color != 0);
    m_blackWhite->setChecked(s.print.color == 0);
}

PitchSettings PitchOptionDialog::settings() const {
    PitchSettings s;
    s.method = m_autocorrelation->isChecked() ? PitchMethod::AutoCorrelation : PitchMethod::Cepstral;
    s.windowMs = m_window->value();
    s.stepMs = m_step->value();
    s.deviationHz = m_deviation->value();
    s.thresholdPct = m_threshold->value();
    s.lowHz = m_low->value();
    s.highHz = m_high->value();
    s.displayLowHz = m_displayLow->value();
    s.displayHighHz = m_displayHigh->value();
    s.frequencyGrid = m_frequencyGrid->isChecked() ? 1 : 0;
    s.frequencyGridHz = m_frequencyGridHz->value();
    s.timeGrid = m_timeGrid->isChecked() ? 1 : 0;
    s.timeGridMs = m_timeGridMs->value();
    s.drawWaveform = m_audio->isChecked() ? 1 : 0;
    s.drawIntensity = m_intensity->isChecked() ? 1 : 0;
    s.drawLabels = m_labels->isChecked() ? 1 : 0;
    s.print.width = m_width->value();
    s.print.height = m_height->value();
    s.print.inches = m_inches->isChecked() ? 1 : 0;
    s.print.color = m_color->isChecked() ? 1 : 0;
    return s;
}

void PitchOptionDialog::restoreDefaults() {
    PitchSettings defaults;
    defaults.method = settings().method;
    setSettings(defaults);
}

QString PitchOptionDialog::problem() const {
    if (m_high->value() <= m_low->value()) return QStringLiteral("The calculation range must end above its start.");
    if (m_displayHigh->value() <= m_displayLow->value())
        return QStringLiteral("The display range must end above its start.");
    return QString();
}

void PitchOptionDialog::accept() {
    const QString why = problem();
    if (!why.isEmpty()) {
        sonmetra::showMessage(why.toStdString());
        return;  // the dialog stays open with the values typed
    }
    QDialog::accept();
}

void runPitchOptions(QWidget* parent) {
    PitchOptionDialog dialog(pitchSettingsInForce(), parent);
    if (dialog.exec() != QDialog::Accepted) return;
    pitchSettingsInForce() = dialog.settings();
    writeDisplayConfig();
    CPitchFrame::recomputeAll();
}

void registerPitchOptionCommands() {
    static bool registered = false;
    if (registered) return;
    registered = true;
    const QString tip = QStringLiteral("Settings of the pitch track and its window");
    ViewCommand c;
    c.menu = QStringLiteral("&Options");
    c.text = QStringLiteral("Pitch...");
    c.statusTip = tip;
    c.order = 230;
    c.run = [](CKestruneView& v) { runPitchOptions(&v); };
    c.enabled = [](const CKestruneView& v) { return v.document() != nullptr && v.document()->holdsData(); };
    ViewCommandRegistry::instance().add(std::move(c));
    WindowCommandRegistry::instance().add(windowCommand<CPitchView>(kPitchContext, QStringLiteral("&Options"),
                                                                    QStringLiteral("Pitch..."), tip, 10,
                                                                    [](CPitchView& v) { runPitchOptions(&v); }));
}
