// The pictures that `sonmetra --render KIND FILE -o OUT` draws without a
// screen. Each kind of window registers how it sets itself up for a
// document and draws itself, through the same code as the window on screen:
// its client area for PNG and BMP files, its print path for PDF.
#pragma once

#include <QImage>
#include <QSize>
#include <QString>
#include <QStringList>
#include <functional>
#include <memory>
#include <optional>

class QPrinter;

namespace sonmetra {
class CKestruneDoc;
}

struct RenderRequest {
    // Opened and shown whole, with the cursor (--cursor) or the selection
    // (--from/--to) already placed on every channel when they were given.
    sonmetra::CKestruneDoc* doc = nullptr;
    QSize size{800, 600};  // the window's client size in pixels
    std::optional<double> cursorMs;
    std::optional<double> fromMs, toMs;
    bool hasSelection() const { return fromMs.has_value() && toMs.has_value(); }
};

// A window set up for a request, kept only while its picture is written.
class IRenderedWindow {
public:
    virtual ~IRenderedWindow() = default;
    // The client area as the window shows it at `size`.
    virtual QImage clientImage(QSize size) = 0;
    // What "Print..." puts on the page.
    virtual void printPage(QPrinter& printer) = 0;
};

// Sets the window up for the request; null after the message the window
// would show (through the message service) when it cannot.
using RenderFactory = std::function<std::unique_ptr<IRenderedWindow>(const RenderRequest&)>;

void registerRenderKind(const QString& kind, RenderFactory factory);
// The factory of a kind; empty when no window registered it.
RenderFactory renderFactory(const QString& kind);
QStringList renderKindNames();
