#include "SpectrogramOptionDialog.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QVBoxLayout>
#include <algorithm>

#include "DisplayConfig.h"
#include "analysis/FftSpectrum.h"
#include "document/AppConfig.h"
#include "document/CKestruneDoc.h"
#include "view/AppServices.h"
#include "view/CKestruneView.h"
#include "view/ViewCommands.h"
#include "view/WindowCommands.h"
#include "view/spectrogram/CSpectrogramFrame.h"
#include "view/spectrogram/CSpectrogramView.h"
#include "view/spectrogram/SpectrogramCommands.h"

namespace {

QSpinBox* intField(const QString& name, int low, int high, QWidget* parent) {
    auto* f = new QSpinBox(parent);
    f->setObjectName(name);
    f->setRange(low, high);
    return f;
}

QDoubleSpinBox* sizeField(const QString& name, QWidget* parent) {
    auto* f = new QDoubleSpinBox(parent);
    f->setObjectName(name);
    f->setRange(0.1, 1000.0);
    f->setDecimals(2);
    return f;
}

template <class W>
W* named(W* widget, const QString& name) {
    widget->setObjectName(name);
    return widget;
}

// A radio pair in its own group, so that choosing one clears the other.
void pair(QRadioButton* a, QRadioButton* b, QWidget* owner) {
    auto* group = new QButtonGroup(owner);
    group->addButton(a);
    group->addButton(b);
}

}  // namespace

SpectrogramOptionDialog::SpectrogramOptionDialog(const sonmetra::SpectrogramSettings& settings, double rateHz,
                                                 QWidget* parent)
    : QDialog(parent), m_rateHz(rateHz), m_kept(settings) {
    setWindowTitle(QStringLiteral("Spectrogram Option"));
    auto* column = new QVBoxLayout(this);

    auto* analysis = new QGroupBox(QStringLiteral("Analysis"), this);
    auto* a = new QGridLayout(analysis);
    m_window = named(new QComboBox(analysis), "windowLength");
    for (int i = 0; i < 8; ++i) m_window->addItem(QString::fromStdString(sonmetra::FftSizeLabel(i, rateHz)));
    m_frequencyRange = intField("frequencyRange", 1, 1000000, analysis);
    m_dynamicRange = intField("dynamicRange", 1, 1000, analysis);
    m_preEmphasis = sizeField("preEmphasis", analysis);
    m_preEmphasis->setRange(0.0, 1.0);
    m_preEmphasis->setSingleStep(0.01);
    a->addWidget(new QLabel(QStringLiteral("Bandwidth (Window Length)  = "), analysis), 0, 0);
    a->addWidget(m_window, 0, 1);
    a->addWidget(new QLabel(QStringLiteral("Frequency range (Hz) = "), analysis), 1, 0);
    a->addWidget(m_frequencyRange, 1, 1);
    a->addWidget(new QLabel(QStringLiteral("Dynamic range (dB) = "), analysis), 2, 0);
    a->addWidget(m_dynamicRange, 2, 1);
    a->addWidget(new QLabel(QStringLiteral("Pre-Emphasis (0-1)(0 adds nothing)"), analysis), 3, 0);
    a->addWidget(m_preEmphasis, 3, 1);
    m_formants = named(new QCheckBox(QStringLiteral("Display formants"), analysis), "displayFormants");
    m_lpcOrder = intField("lpcOrder", 4, 100, analysis);
    a->addWidget(m_formants, 4, 0, 1, 2);
    a->addWidget(new QLabel(QStringLiteral("Formant tracking LPC coefficients        = "), analysis), 5, 0);
    a->addWidget(m_lpcOrder, 5, 1);
    column->addWidget(analysis);

    auto* drawing = new QGroupBox(QStringLiteral("Drawing"), this);
    auto* d = new QGridLayout(drawing);
    m_drawAudio = named(new QCheckBox(QStringLiteral("Draw Audio "), drawing), "drawAudio");
    m_drawLabels = named(new QCheckBox(QStringLiteral("Draw Labels"), drawing), "drawLabels");
    m_drawIntensity = named(new QCheckBox(QStringLiteral("Draw Intensity"), drawing), "drawIntensity");
    d->addWidget(m_drawAudio, 0, 0);
    d->addWidget(m_drawLabels, 0, 1);
    d->addWidget(m_drawIntensity, 0, 2);
    m_frequencyGrid =
        named(new QCheckBox(QStringLiteral("Add frequency grid with spacing (Hz)   = "), drawing), "frequencyGrid");
    m_frequencyGridHz = intField("frequencyGridHz", 1, 1000000, drawing);
    m_timeGrid =
        named(new QCheckBox(QStringLiteral("Add time grid with spacing (ms)            ="), drawing), "timeGrid");
    m_timeGridMs = intField("timeGridMs", 0, 100000000, drawing);
    m_timeGridMs->setSpecialValueText(QStringLiteral("0 (automatic)"));
    d->addWidget(m_frequencyGrid, 1, 0, 1, 2);
    d->addWidget(m_frequencyGridHz, 1, 2);
    d->addWidget(m_timeGrid, 2, 0, 1, 2);
    d->addWidget(m_timeGridMs, 2, 2);
    // A spacing is edited only while its grid is on.
    connect(m_frequencyGrid, &QCheckBox::toggled, m_frequencyGridHz, &QWidget::setEnabled);
    connect(m_timeGrid, &QCheckBox::toggled, m_timeGridMs, &QWidget::setEnabled);
    m_grey = named(new QRadioButton(QStringLiteral("Grey levels (black = loudest)"), drawing), "greyMap");
    m_colour = named(new QRadioButton(QStringLiteral("Colour levels"), drawing), "colourMap");
    pair(m_grey, m_colour, drawing);
    d->addWidget(m_grey, 3, 0, 1, 2);
    d->addWidget(m_colour, 3, 2);
    column->addWidget(drawing);

    auto* size = new QGroupBox(QStringLiteral("Print and bitmap size"), this);
    auto* s = new QGridLayout(size);
    m_width = sizeField("printWidth", size);
    m_height = sizeField("printHeight", size);
    m_inches = named(new QRadioButton(QStringLiteral("inches"), size), "inches");
    m_cm = named(new QRadioButton(QStringLiteral("cm"), size), "cm");
    pair(m_inches, m_cm, size);
    m_printColour = named(new QRadioButton(QStringLiteral("Color"), size), "printColor");
    m_printBlackWhite = named(new QRadioButton(QStringLiteral("Black White"), size), "printBlackWhite");
    pair(m_printColour, m_printBlackWhite, size);
    s->addWidget(new QLabel(QStringLiteral("Width   = "), size), 0, 0);
    s->addWidget(m_width, 0, 1);
    s->addWidget(m_inches, 0, 2);
    s->addWidget(m_printColour, 0, 3);
    s->addWidget(new QLabel(QStringLiteral("Height  ="), size), 1, 0);
    s->addWidget(m_height, 1, 1);
    s->addWidget(m_cm, 1, 2);
    s->addWidget(m_printBlackWhite, 1, 3);
    column->addWidget(size);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    QPushButton* defaults = buttons->addButton(QStringLiteral("Defaults"), QDialogButtonBox::ResetRole);
    connect(defaults, &QPushButton::clicked, this, &SpectrogramOptionDialog::restoreDefaults);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    column->addWidget(buttons);
    showSettings(settings);
}

void SpectrogramOptionDialog::showSettings(const sonmetra::SpectrogramSettings& v) {
    m_window->setCurrentIndex(std::clamp(v.fftSizeIndex, 0, 7));
    m_frequencyRange->setValue(v.frequencyRangeHz);
    m_dynamicRange->setValue(v.dynamicRangeDb);
    m_preEmphasis->setValue(v.preEmphasis);
    m_formants->setChecked(v.displayFormants != 0);
    m_lpcOrder->setValue(v.lpcOrder);
    m_drawAudio->setChecked(v.drawWaveform != 0);
    m_drawLabels->setChecked(v.drawLabels != 0);
    m_drawIntensity->setChecked(v.drawIntensity != 0);
    m_frequencyGrid->setChecked(v.frequencyGrid != 0);
    m_frequencyGridHz->setValue(v.frequencyGridHz);
    m_frequencyGridHz->setEnabled(v.frequencyGrid != 0);
    m_timeGrid->setChecked(v.timeGrid != 0);
    m_timeGridMs->setValue(v.timeGridMs);
    m_timeGridMs->setEnabled(v.timeGrid != 0);
    (v.colourMap != 0 ? m_colour : m_grey)->setChecked(true);
    m_width->setValue(v.print.width);
    m_height->setValue(v.print.height);
    (v.print.inches != 0 ? m_inches : m_cm)->setChecked(true);
    (v.print.color != 0 ? m_printColour : m_printBlackWhite)->setChecked(true);
}

sonmetra::SpectrogramSettings SpectrogramOptionDialog::settings() const {
    sonmetra::SpectrogramSettings v = m_kept;
    v.fftSizeIndex = m_window->currentIndex();
    v.frequencyRangeHz = m_frequencyRange->value();
    v.dynamicRangeDb = m_dynamicRange->value();
    v.preEmphasis = m_preEmphasis->value();
    v.displayFormants = m_formants->isChecked() ? 1 : 0;
    v.lpcOrder = m_lpcOrder->value();
    v.drawWaveform = m_drawAudio->isChecked() ? 1 : 0;
    v.drawLabels = m_drawLabels->isChecked() ? 1 : 0;
    v.drawIntensity = m_drawIntensity->isChecked() ? 1 : 0;
    v.frequencyGrid = m_frequencyGrid->isChecked() ? 1 : 0;
    v.frequencyGridHz = m_frequencyGridHz->value();
    v.timeGrid = m_timeGrid->isChecked() ? 1 : 0;
    v.timeGridMs = m_timeGridMs->value();
    v.colourMap = m_colour->isChecked() ? 1 : 0;
    v.print.width = m_width->value();
    v.print.height = m_height->value();
    v.print.inches = m_inches->isChecked() ? 1 : 0;
    v.print.color = m_printColour->isChecked() ? 1 : 0;
    return v;
}

void SpectrogramOptionDialog::restoreDefaults() {
    sonmetra::SpectrogramSettings v = sonmetra::AnalysisSettings::defaultsForRate(m_rateHz).spectrogram;
    v.displayFormants = m_formants->isChecked() ? 1 : 0;
    showSettings(v);
}

double spectrogramDialogRateHz(const sonmetra::CKestruneDoc* doc) {
    const int audio = doc != nullptr ? doc->audioChannelIndex() : -1;
    if (audio >= 0 && doc->channel(audio).m_rateHz > 0.0) return doc->channel(audio).m_rateHz;
    return displayConfig().audioRateHz();
}

void runSpectrogramOptions(sonmetra::CKestruneDoc* doc, QWidget* parent) {
    sonmetra::AppConfig& config = displayConfig();
    const sonmetra::SpectrogramSettings current = AppServices::instance().config != nullptr || doc == nullptr
                                                      ? config.m_analysis.spectrogram
                                                      : doc->m_analysis.spectrogram;
    SpectrogramOptionDialog dialog(current, spectrogramDialogRateHz(doc), parent);
    if (dialog.exec() != QDialog::Accepted) return;
    const sonmetra::SpectrogramSettings chosen = dialog.settings();
    config.m_analysis.spectrogram = chosen;
    if (doc != nullptr) doc->m_analysis.spectrogram = chosen;
    writeDisplayConfig();
    // Every open spectrogram window shows the settings in force.
    QList<CSpectrogramFrame*> frames;
    if (CSpectrogramFrame* own = CSpectrogramFrame::of(doc)) frames << own;
    if (QMdiArea* area = AppServices::instance().mdiArea)
        for (QMdiSubWindow* w : area->subWindowList())
            if (auto* f = qobject_cast<CSpectrogramFrame*>(w); f != nullptr && !frames.contains(f)) frames << f;
    for (CSpectrogramFrame* f : frames) f->view()->recompute();
}

void registerSpectrogramWindow() {
    static bool registered = false;
    if (registered) return;
    registered = true;
    registerSpectrogramCommands();
    ViewCommand c;
    c.menu = QStringLiteral("&Options");
    c.text = QStringLiteral("Spectrogram...");
    c.statusTip = QStringLiteral("Settings of the spectrogram window");
    c.order = 210;
    c.run = [](CKestruneView& v) { runSpectrogramOptions(v.document(), &v); };
    c.enabled = [](const CKestruneView& v) { return v.document() != nullptr && v.document()->holdsData(); };
    ViewCommandRegistry::instance().add(std::move(c));
    WindowCommandRegistry::instance().add(windowCommand<CSpectrogramView>(
        kSpectrogramContext, QStringLiteral("&Options"), QStringLiteral("Spectrogram..."),
        QStringLiteral("Settings of the spectrogram window"), 210,
        [](CSpectrogramView& v) { runSpectrogramOptions(v.document(), &v); }));
}
