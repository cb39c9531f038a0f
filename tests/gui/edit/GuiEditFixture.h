// Shared pieces of the editing and label GUI tests: a document of several
// channels, the edit and label features, and the commands by their menu text.
#pragma once

#include <QApplication>
#include <QtTest>
#include <cmath>
#include <memory>

#include "document/CKestruneDoc.h"
#include "tests/support/GuiTestSupport.h"
#include "tests/support/TestDocument.h"
#include "view/CKestruneView.h"
#include "view/EditCommands.h"
#include "view/LabelController.h"
#include "view/ViewCommands.h"

namespace guitest {

using namespace sonmetra::test;

// Channels of one second at 1000 Hz: a slow sine per channel.
inline std::shared_ptr<sonmetra::CKestruneDoc> makeDocument(int channels, int samples = 1000) {
    auto doc = std::make_shared<sonmetra::CKestruneDoc>();
    for (int ch = 0; ch < channels; ++ch)
        fillChannel(
            *doc, ch, "ch" + std::to_string(ch + 1), 1000.0, static_cast<std::size_t>(samples),
            [ch](std::size_t i) { return static_cast<std::int16_t>(12000 * std::sin(i * 0.02 * (ch + 1))); }, ch == 0);
    doc->setTitle("speech.kvd");
    return doc;
}

inline void registerFeatures() {
    registerEditCommands();
    registerLabelCommands();
}

inline bool enabled(const QString& text, const CKestruneView& view) { return commandEnabled(viewCommand(text), view); }
inline void run(const QString& text, CKestruneView& view) { viewCommand(text).run(view); }

// The first y of channel `index`'s strip in the view.
inline int stripY(const CKestruneView& view, int index) {
    for (int y = 0; y < view.height(); ++y)
        if (view.channelAt(QPoint(view.width() / 2, y)) == index) return y;
    return -1;
}

}  // namespace guitest
