// Shared pieces of the spectrum window's tests: documents with a synthetic
// vowel or a pure tone, the application's configuration in a temporary
// folder, the commands by their menu text and the answering of a dialog.
#pragma once

#include <QApplication>
#include <QtTest>
#include <cmath>
#include <memory>
#include <numbers>

#include "VowelSynth.h"
#include "document/CKestruneDoc.h"
#include "frame/SpectrumOptionCommands.h"
#include "tests/support/GuiTestSupport.h"
#include "tests/support/TestDocument.h"
#include "view/ViewCommands.h"
#include "view/WindowCommands.h"
#include "view/spectrum/SpectrumCommands.h"

namespace spectrumtest {

using namespace sonmetra::test;

// Channel 0 is the audio channel unless `audio` is false; more channels are slow data.
inline std::unique_ptr<sonmetra::CKestruneDoc> makeDocument(const std::vector<std::int16_t>& samples, double rateHz,
                                                            bool audio = true, int dataChannels = 1) {
    auto doc = std::make_unique<sonmetra::CKestruneDoc>();
    fillChannel(*doc, 0, audio ? "Audio" : "ch0", rateHz, samples, audio);
    for (int d = 1; d <= dataChannels; ++d) {
        std::vector<std::int16_t> slow(samples.size() / 10);
        for (std::size_t i = 0; i < slow.size(); ++i) slow[i] = static_cast<std::int16_t>(3000 * std::sin(i * 0.01));
        fillChannel(*doc, d, "ch" + std::to_string(d), rateHz / 10, slow);
    }
    doc->setTitle("vowel.kvd");
    return doc;
}

// An /a/ at 11025 Hz (F 730, 1090, 2440, 3400, 4500), one second.
inline sonmetra::synth::VowelRecipe vowelRecipe(double rateHz = 11025.0) {
    sonmetra::synth::VowelRecipe v;
    v.rateHz = rateHz;
    v.seconds = 1.0;
    return v;
}

inline std::vector<std::int16_t> tone(double hz, double amplitude, double rateHz, int count) {
    std::vector<std::int16_t> s(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        s[static_cast<std::size_t>(i)] =
            static_cast<std::int16_t>(std::lround(amplitude * std::sin(2.0 * std::numbers::pi * hz * i / rateHz)));
    return s;
}

// The application's configuration, kept in a temporary folder for the test,
// with the rate-derived values of an audio rate in force.
struct RateConfig : ScopedConfig {
    explicit RateConfig(double rateHz = 11025.0) { config.takeAudioRate(rateHz); }
};

inline void registerAll() {
    registerSpectrumWindow();
    registerSpectrumOptionCommands();
}

inline const WindowCommand& windowCommand(const QString& text) { return windowCommandOf(kSpectrumContext, text); }

}  // namespace spectrumtest
