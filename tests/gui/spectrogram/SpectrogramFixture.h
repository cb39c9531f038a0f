// Shared pieces of the spectrogram window tests: documents of known signals,
// the settings in force, and reading frequencies back out of a picture.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QImage>
#include <cmath>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "document/AppConfig.h"
#include "document/CKestruneDoc.h"
#include "document/MessageService.h"
#include "tests/support/GuiTestSupport.h"
#include "tests/support/TestDocument.h"
#include "view/AppServices.h"
#include "view/ViewCommands.h"
#include "view/WindowCommands.h"
#include "view/spectrogram/SpectrogramLayout.h"

namespace sgtest {

// A document whose channel 0 is the audio channel holding `samples`.
inline std::unique_ptr<sonmetra::CKestruneDoc> audioDocument(const std::vector<std::int16_t>& samples, double rateHz,
                                                             bool audio = true) {
    auto doc = std::make_unique<sonmetra::CKestruneDoc>();
    sonmetra::test::fillChannel(*doc, 0, "Audio", rateHz, samples, audio);
    doc->setTitle("speech.kvd");
    return doc;
}

// A tone whose frequency runs linearly from hz0 to hz1 (a pure tone when equal).
inline std::vector<std::int16_t> sweep(double rateHz, double seconds, double hz0, double hz1,
                                       double amplitude = 12000.0) {
    const auto n = static_cast<std::size_t>(rateHz * seconds);
    std::vector<std::int16_t> s(n);
    for (std::size_t i = 0; i < n; ++i) {
        const double t = static_cast<double>(i) / rateHz;
        const double phase = 2.0 * M_PI * (hz0 * t + (hz1 - hz0) * t * t / (2.0 * seconds));
        s[i] = static_cast<std::int16_t>(std::lround(amplitude * std::sin(phase)));
    }
    return s;
}

// The settings in force for every test: the record of a test of its own,
// with the defaults at 11025 Hz and no grids over the levels.
struct Settings {
    sonmetra::AppConfig config;
    sonmetra::RecordingMessageService messages;
    sonmetra::ScopedMessageService scoped{&messages};

    Settings() {
        config.m_analysis = sonmetra::AnalysisSettings::defaultsForRate(11025.0);
        spectrogram().frequencyGrid = 0;
        spectrogram().timeGrid = 0;
        AppServices::instance().config = &config;
    }
    ~Settings() { AppServices::instance().config = nullptr; }
    sonmetra::SpectrogramSettings& spectrogram() { return config.m_analysis.spectrogram; }
};

// In each column of the image area, the frequency of the darkest pixel
// (the sum of its three components), at columns x0, x0 + step, ...
inline std::vector<double> darkestHz(const QImage& picture, const sonmetra::SpectrogramSettings& settings,
                                     int step = 20) {
    const SpectrogramLayout l = spectrogramLayout(picture.size(), settings);
    std::vector<double> hz;
    for (int x = l.image.left() + 2; x < l.image.right() - 1; x += step) {
        int best = l.image.top(), darkest = 1000;
        for (int y = l.image.top(); y <= l.image.bottom(); ++y) {
            const QRgb c = picture.pixel(x, y);
            const int sum = qRed(c) + qGreen(c) + qBlue(c);
            if (sum < darkest) {
                darkest = sum;
                best = y;
            }
        }
        hz.push_back(l.yToHz(best + 0.5, settings.frequencyRangeHz));
    }
    return hz;
}

// The commands by their menu text; a missing one fails the test, which then
// goes on with a command that does nothing.
inline const ViewCommand& viewCommand(const QString& text) {
    if (const ViewCommand* c = sonmetra::test::findViewCommand(text)) return *c;
    ADD_FAILURE() << "no waveform command " << text.toStdString();
    static ViewCommand none;
    return none;
}

inline const WindowCommand& windowCommand(const QString& text) {
    if (const WindowCommand* c = sonmetra::test::findWindowCommand("spectrogram", text)) return *c;
    ADD_FAILURE() << "no spectrogram command " << text.toStdString();
    static WindowCommand none;
    return none;
}

}  // namespace sgtest
