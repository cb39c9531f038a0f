// Shared pieces of the spectrum window's tests: documents with a synthetic
// vowel or a pure tone, the application's configuration in a temporary
// folder, the commands by their menu text and the answering of a dialog.
#pragma once

#include <QApplication>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>
#include <cmath>
#include <functional>
#include <memory>
#include <numbers>

#include "VowelSynth.h"
#include "document/AppConfig.h"
#include "document/CKestruneDoc.h"
#include "frame/SpectrumOptionCommands.h"
#include "view/AppServices.h"
#include "view/ViewCommands.h"
#include "view/WindowCommands.h"
#include "view/spectrum/SpectrumCommands.h"

namespace spectrumtest {

// Channel 0 is the audio channel unless `audio` is false; more channels are slow data.
inline std::unique_ptr<sonmetra::CKestruneDoc> makeDocument(const std::vector<std::int16_t>& samples, double rateHz,
                                                            bool audio = true, int dataChannels = 1) {
    auto doc = std::make_unique<sonmetra::CKestruneDoc>();
    auto fill = [&](int index, const std::vector<std::int16_t>& s, double rate, bool isAudio) {
        sonmetra::CChannel& ch = doc->channel(index);
        ch.m_name = isAudio ? "Audio" : "ch" + std::to_string(index);
        ch.m_rateHz = rate;
        ch.m_audio = isAudio ? 1 : 0;
        ch.m_inUse = 1;
        (void)ch.m_samples.resize(s.size());
        std::copy(s.begin(), s.end(), ch.m_samples.data());
        ch.setSampleCountFromBlock();
        ch.resetDisplayToWhole();
    };
    fill(0, samples, rateHz, audio);
    for (int d = 1; d <= dataChannels; ++d) {
        std::vector<std::int16_t> slow(samples.size() / 10);
        for (std::size_t i = 0; i < slow.size(); ++i) slow[i] = static_cast<std::int16_t>(3000 * std::sin(i * 0.01));
        fill(d, slow, rateHz / 10, false);
    }
    doc->setChannelCount(1 + dataChannels);
    doc->setHoldsData(true);
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

// The application's configuration, kept in a temporary folder for the test.
struct ScopedConfig {
    QTemporaryDir folder;
    sonmetra::AppConfig config;
    explicit ScopedConfig(double rateHz = 11025.0) {
        config.setFilePath(folder.filePath("SonmetraConf.cfg").toStdString());
        config.takeAudioRate(rateHz);
        AppServices::instance().config = &config;
    }
    ~ScopedConfig() { AppServices::instance().config = nullptr; }
};

inline void registerAll() {
    registerSpectrumWindow();
    registerSpectrumOptionCommands();
}

inline const ViewCommand& viewCommand(const QString& text) {
    for (const auto& c : ViewCommandRegistry::instance().commands())
        if (c.text == text) return c;
    qFatal("no command %s", qPrintable(text));
}

inline const WindowCommand& windowCommand(const QString& text) {
    for (const auto& c : WindowCommandRegistry::instance().commands())
        if (c.context == kSpectrumContext && c.text == text) return c;
    qFatal("no spectrum command %s", qPrintable(text));
}

// Calls answer(dialog) as soon as a modal dialog of type T is up.
template <class T>
void whenModal(std::function<void(T*)> answer) {
    auto* timer = new QTimer;
    timer->setInterval(5);
    QObject::connect(timer, &QTimer::timeout, [timer, answer] {
        if (auto* d = qobject_cast<T*>(QApplication::activeModalWidget())) {
            timer->stop();
            timer->deleteLater();
            answer(d);
        }
    });
    timer->start();
}

// Saves a picture of w when SONMETRA_SHOTS names a folder (for looking at it).
inline void shoot(const QImage& image, const QString& name) {
    const QString folder = qEnvironmentVariable("SONMETRA_SHOTS");
    if (!folder.isEmpty()) image.save(folder + "/" + name + ".png");
}
inline void shoot(QWidget* w, const QString& name) { shoot(w->grab().toImage(), name); }

}  // namespace spectrumtest
