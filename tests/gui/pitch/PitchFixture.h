// Shared pieces of the pitch window tests: voiced signals of known F0, a
// document and a shown waveform view with every feature that the pitch
// window meets (editing, smoothing, labels, the pitch commands), the window
// commands by their menu text, and the wait for a computation.
#pragma once

#include <QApplication>
#include <QtTest>
#include <cmath>
#include <memory>
#include <numbers>
#include <vector>

#include "document/CKestruneDoc.h"
#include "document/EditClipboard.h"
#include "document/MessageService.h"
#include "frame/IntensitySmoothCommands.h"
#include "frame/PitchOptionDialog.h"
#include "tests/support/GuiTestSupport.h"
#include "tests/support/TestDocument.h"
#include "view/AppServices.h"
#include "view/CKestruneView.h"
#include "view/EditCommands.h"
#include "view/LabelController.h"
#include "view/ViewCommands.h"
#include "view/WindowCommands.h"
#include "view/pitch/CPitchFrame.h"
#include "view/pitch/CPitchView.h"
#include "view/pitch/PitchCommands.h"
#include "view/pitch/PitchComputation.h"

namespace pitchtest {

using namespace sonmetra::test;

constexpr double kRateHz = 11025.0;

// A voice-like tone: harmonics of f0 up to 4 kHz with amplitudes falling as
// 1/k, scaled so that the fundamental has amplitude `amplitude`.
inline double voicedSample(std::size_t i, double f0, double amplitude) {
    double v = 0.0;
    for (int k = 1; k * f0 < 4000.0; ++k)
        v += std::sin(2.0 * std::numbers::pi * k * f0 * static_cast<double>(i) / kRateHz) / k;
    return amplitude * v;
}

// Its mean power: the sum of the harmonics' powers.
inline double voicedPower(double f0, double amplitude) {
    double p = 0.0;
    for (int k = 1; k * f0 < 4000.0; ++k) p += (amplitude / k) * (amplitude / k) / 2.0;
    return p;
}

// One stretch of the signal: `ms` long, voiced at f0 Hz (0: silence).
struct Stretch {
    double ms;
    double f0;
};

inline std::shared_ptr<sonmetra::CKestruneDoc> voiceDocument(const std::vector<Stretch>& stretches,
                                                             double amplitude = 6000.0) {
    std::vector<std::int16_t> samples;
    for (const Stretch& s : stretches) {
        const auto n = static_cast<std::size_t>(s.ms * kRateHz / 1000.0);
        for (std::size_t i = 0; i < n; ++i)
            samples.push_back(s.f0 > 0.0 ? static_cast<std::int16_t>(std::lround(voicedSample(i, s.f0, amplitude)))
                                         : 0);
    }
    auto doc = std::make_shared<sonmetra::CKestruneDoc>();
    fillChannel(*doc, 0, "Audio", kRateHz, samples, true);
    doc->setTitle("voice.kvd");
    return doc;
}

inline void registerFeatures() {
    registerEditCommands();
    registerLabelCommands();
    registerPitchWindow();
    registerPitchOptionCommands();
    registerIntensitySmoothCommands();
}

inline void runView(const QString& text, CKestruneView& view) { viewCommand(text).run(view); }

inline const WindowCommand& pitchCommand(const QString& text) { return windowCommandOf(kPitchContext, text); }
inline bool pitchEnabled(const QString& text, const CPitchView& view) {
    return commandEnabled(pitchCommand(text), view);
}
inline void runPitch(const QString& text, CPitchView& view) { pitchCommand(text).run(view); }

// Waits for the frame's computation to end (results are delivered on the
// interface thread, so events must run).
inline bool waitForTrack(CPitchFrame* frame, int timeoutMs = 60000) {
    waitFor([frame] { return !frame->computing(); }, timeoutMs);
    QCoreApplication::processEvents();
    return !frame->computing();
}

// The F0 of the frame at `ms`, or -1 without a track.
inline double f0At(const CPitchView& view, double ms) {
    const PitchResults* r = view.results();
    if (r == nullptr) return -1.0;
    const int i = r->frameAt(ms);
    return i < 0 ? -1.0 : r->track.track[static_cast<std::size_t>(i)];
}

// The configuration record and clipboard of a test, in force while it lives;
// the program's temporary files go to the record's folder.
struct Services : ScopedConfig {
    sonmetra::EditClipboard clipboard;
    Services() {
        AppServices& s = AppServices::instance();
        s.clipboard = &clipboard;
        s.tempFolder = folder.path().toStdString() + "/";
    }
    ~Services() {
        AppServices& s = AppServices::instance();
        s.clipboard = nullptr;
        s.tempFolder.clear();
    }
};

// What every pitch test function starts from: a configuration record and
// clipboard of its own, no messages yet, and a voice document of `stretches`.
class PitchTest : public QObject {
protected:
    void start(const std::vector<Stretch>& stretches) {
        m_services = std::make_unique<Services>();
        m_messages.clear();
        m_doc = voiceDocument(stretches);
    }

    sonmetra::RecordingMessageService m_messages;
    sonmetra::ScopedMessageService m_scoped{&m_messages};
    std::unique_ptr<Services> m_services;
    std::shared_ptr<sonmetra::CKestruneDoc> m_doc;
};

}  // namespace pitchtest
