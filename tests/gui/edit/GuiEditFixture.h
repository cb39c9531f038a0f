// Shared pieces of the editing and label GUI tests: a document of several
// channels, a shown view with the edit and label features, the commands by
// their menu text, and the answering of a modal dialog.
#pragma once

#include <QApplication>
#include <QDir>
#include <QTimer>
#include <QtTest>
#include <cmath>
#include <functional>
#include <memory>

#include "document/CKestruneDoc.h"
#include "view/CKestruneView.h"
#include "view/EditCommands.h"
#include "view/LabelController.h"
#include "view/ViewCommands.h"

namespace guitest {

// Channels of one second at 1000 Hz: a slow sine per channel.
inline std::shared_ptr<sonmetra::CKestruneDoc> makeDocument(int channels, int samples = 1000) {
    auto doc = std::make_shared<sonmetra::CKestruneDoc>();
    for (int ch = 0; ch < channels; ++ch) {
        auto& c = doc->channel(ch);
        c.m_inUse = 1;
        c.m_audio = ch == 0 ? 1 : 0;
        c.m_rateHz = 1000.0;
        c.m_name = "ch" + std::to_string(ch + 1);
        (void)c.m_samples.resize(static_cast<std::size_t>(samples));
        for (int i = 0; i < samples; ++i)
            c.m_samples[static_cast<std::size_t>(i)] = static_cast<std::int16_t>(12000 * std::sin(i * 0.02 * (ch + 1)));
        c.m_sampleCount = samples;
        c.m_durationMs = samples;
        c.resetDisplayToWhole();
    }
    doc->setChannelCount(channels);
    doc->setHoldsData(true);
    doc->setTitle("speech.kvd");
    return doc;
}

inline void registerFeatures() {
    registerEditCommands();
    registerLabelCommands();
}

inline const ViewCommand& command(const QString& text) {
    for (const auto& c : ViewCommandRegistry::instance().commands())
        if (c.text == text) return c;
    qFatal("no command %s", qPrintable(text));
}
inline bool enabled(const QString& text, const CKestruneView& view) {
    const auto& c = command(text);
    return !c.enabled || c.enabled(view);
}
inline void run(const QString& text, CKestruneView& view) { command(text).run(view); }

// The first y of channel `index`'s strip in the view.
inline int stripY(const CKestruneView& view, int index) {
    for (int y = 0; y < view.height(); ++y)
        if (view.channelAt(QPoint(view.width() / 2, y)) == index) return y;
    return -1;
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

// Saves a picture of w when SONMETRA_SHOTS names a folder.
inline void shoot(QWidget* w, const QString& name) {
    const QString folder = qEnvironmentVariable("SONMETRA_SHOTS");
    if (!folder.isEmpty()) w->grab().save(QDir(folder).filePath(name + ".png"));
}

}  // namespace guitest
