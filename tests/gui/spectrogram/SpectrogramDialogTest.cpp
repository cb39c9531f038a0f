// The "Spectrogram Option" dialog: its texts, its defaults at two audio
// rates, the enabling of the grid spacings, and the settings surviving a
// restart through the configuration file.
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTemporaryDir>

#include "SpectrogramFixture.h"
#include "frame/SpectrogramOptionDialog.h"

namespace {

QStringList textsOf(const QDialog& dialog) {
    QStringList texts;
    for (auto* l : dialog.findChildren<QLabel*>()) texts << l->text();
    for (auto* b : dialog.findChildren<QAbstractButton*>()) texts << b->text();
    return texts;
}

sonmetra::SpectrogramSettings unusual() {
    sonmetra::SpectrogramSettings s;
    s.fftSizeIndex = 6;
    s.frequencyRangeHz = 3000;
    s.dynamicRangeDb = 70;
    s.preEmphasis = 0.5;
    s.displayFormants = 1;
    s.lpcOrder = 30;
    s.drawWaveform = s.drawLabels = s.drawIntensity = 1;
    s.frequencyGrid = 0;
    s.frequencyGridHz = 250;
    s.timeGrid = 0;
    s.timeGridMs = 0;
    s.colourMap = 1;
    s.print = {12.5, 9.0, 0, 0};
    return s;
}

void expectSame(const sonmetra::SpectrogramSettings& a, const sonmetra::SpectrogramSettings& b) {
    EXPECT_EQ(a.fftSizeIndex, b.fftSizeIndex);
    EXPECT_EQ(a.frequencyRangeHz, b.frequencyRangeHz);
    EXPECT_EQ(a.dynamicRangeDb, b.dynamicRangeDb);
    EXPECT_DOUBLE_EQ(a.preEmphasis, b.preEmphasis);
    EXPECT_EQ(a.displayFormants, b.displayFormants);
    EXPECT_EQ(a.lpcOrder, b.lpcOrder);
    EXPECT_EQ(a.drawWaveform, b.drawWaveform);
    EXPECT_EQ(a.drawLabels, b.drawLabels);
    EXPECT_EQ(a.drawIntensity, b.drawIntensity);
    EXPECT_EQ(a.frequencyGrid, b.frequencyGrid);
    EXPECT_EQ(a.frequencyGridHz, b.frequencyGridHz);
    EXPECT_EQ(a.timeGrid, b.timeGrid);
    EXPECT_EQ(a.timeGridMs, b.timeGridMs);
    EXPECT_EQ(a.colourMap, b.colourMap);
    EXPECT_DOUBLE_EQ(a.print.width, b.print.width);
    EXPECT_DOUBLE_EQ(a.print.height, b.print.height);
    EXPECT_EQ(a.print.inches, b.print.inches);
    EXPECT_EQ(a.print.color, b.print.color);
}

TEST(SpectrogramOptionDialog, ShowsEveryLabelAndKeepsWhatItIsGiven) {
    const SpectrogramOptionDialog dialog(unusual(), 11025.0);
    EXPECT_EQ(dialog.windowTitle(), QString("Spectrogram Option"));
    const QStringList texts = textsOf(dialog);
    for (const char* label :
         {"Bandwidth (Window Length)  = ", "Frequency range (Hz) = ", "Dynamic range (dB) = ",
          "Pre-Emphasis (0-1)(0 adds nothing)", "Display formants", "Formant tracking LPC coefficients        = ",
          "Draw Audio ", "Draw Labels", "Draw Intensity", "Add frequency grid with spacing (Hz)   = ",
          "Add time grid with spacing (ms)            =", "Width   = ", "Height  =", "inches", "cm", "Defaults"})
        EXPECT_TRUE(texts.contains(label)) << label;
    expectSame(dialog.settings(), unusual());
}

TEST(SpectrogramOptionDialog, DefaultsFollowTheRateButLeaveFormantsAlone) {
    for (const double rate : {11025.0, 44100.0}) {
        SpectrogramOptionDialog dialog(unusual(), rate);
        for (auto* b : dialog.findChildren<QPushButton*>())
            if (b->text() == "Defaults") b->click();
        const sonmetra::SpectrogramSettings s = dialog.settings();
        EXPECT_EQ(s.fftSizeIndex, 2);
        EXPECT_EQ(s.frequencyRangeHz, rate == 11025.0 ? 5000 : 22000);
        EXPECT_EQ(s.lpcOrder, rate == 11025.0 ? 14 : 48);
        EXPECT_EQ(s.dynamicRangeDb, 35);
        EXPECT_DOUBLE_EQ(s.preEmphasis, 0.98);
        EXPECT_EQ(s.displayFormants, 1);  // not changed by Defaults
        EXPECT_EQ(s.drawWaveform + s.drawLabels + s.drawIntensity, 0);
        EXPECT_EQ(s.frequencyGrid, 1);
        EXPECT_EQ(s.frequencyGridHz, 1000);
        EXPECT_EQ(s.timeGrid, 1);
        EXPECT_EQ(s.timeGridMs, 500);
        EXPECT_DOUBLE_EQ(s.print.width, 6.0);
        EXPECT_DOUBLE_EQ(s.print.height, 4.0);
        EXPECT_EQ(s.print.inches, 1);
        // The window-length list shows the bin width at the rate.
        auto* window = dialog.findChild<QComboBox*>("windowLength");
        EXPECT_EQ(window->currentText(), rate == 11025.0 ? "  86  Hz   ( 128 pts)" : "  344  Hz   ( 128 pts)");
    }
}

TEST(SpectrogramOptionDialog, GridSpacingsAreEditedOnlyWithTheirGrid) {
    SpectrogramOptionDialog dialog(sonmetra::SpectrogramSettings{}, 11025.0);
    auto* frequencyGrid = dialog.findChild<QCheckBox*>("frequencyGrid");
    auto* frequencyGridHz = dialog.findChild<QSpinBox*>("frequencyGridHz");
    auto* timeGrid = dialog.findChild<QCheckBox*>("timeGrid");
    auto* timeGridMs = dialog.findChild<QSpinBox*>("timeGridMs");
    EXPECT_TRUE(frequencyGridHz->isEnabled());
    frequencyGrid->setChecked(false);
    EXPECT_FALSE(frequencyGridHz->isEnabled());
    EXPECT_TRUE(timeGridMs->isEnabled());
    timeGrid->setChecked(false);
    EXPECT_FALSE(timeGridMs->isEnabled());
    timeGrid->setChecked(true);
    EXPECT_TRUE(timeGridMs->isEnabled());
    // Values the analysis cannot take are out of the fields' reach.
    auto* lpc = dialog.findChild<QSpinBox*>("lpcOrder");
    lpc->setValue(1000);
    EXPECT_EQ(lpc->value(), 100);
    dialog.findChild<QDoubleSpinBox*>("preEmphasis")->setValue(3.0);
    EXPECT_DOUBLE_EQ(dialog.settings().preEmphasis, 1.0);
}

TEST(SpectrogramOptionDialog, SettingsSurviveARestart) {
    QTemporaryDir dir;
    const std::string path = dir.filePath("SonmetraConf.cfg").toStdString();
    sonmetra::AppConfig config;
    SpectrogramOptionDialog dialog(unusual(), 11025.0);
    config.m_analysis.spectrogram = dialog.settings();
    ASSERT_TRUE(config.writeFile(path));
    sonmetra::AppConfig restarted;
    ASSERT_TRUE(restarted.readFile(path));
    expectSame(restarted.m_analysis.spectrogram, unusual());
}

}  // namespace
