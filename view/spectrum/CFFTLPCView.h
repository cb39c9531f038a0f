// The content of the FFT/LPC spectrum window: the readout bar above the plot
// of the audio channel's spectrum and LPC envelope, at the cursor ("FFT/LPC")
// or averaged over the selection ("FFT/LPC Selection").
//
// The view reads the document's audio channel; it keeps the analysed range,
// a copy of the settings, the computed result (whose F1..F5 and BW1..BW5
// carry over a failed factoring) and the marker that a click in the plot
// places on the nearest bin. Its picture is drawSpectrumPicture() of these.
#pragma once

#include <QImage>
#include <QWidget>
#include <optional>

#include "SpectrumAnalysis.h"
#include "SpectrumPicture.h"

class QPrinter;
class SpectrumPlotWidget;
class SpectrumReadoutBar;

namespace sonmetra {
class CKestruneDoc;
}

class CFFTLPCView : public QWidget {
    Q_OBJECT
public:
    CFFTLPCView(sonmetra::CKestruneDoc* doc, bool average, QWidget* parent = nullptr);
    ~CFFTLPCView() override;

    sonmetra::CKestruneDoc* document() const { return m_doc; }
    // The document is going away: the view keeps its picture and computes no more.
    void detachDocument() { m_doc = nullptr; }
    bool isAverage() const { return m_average; }
    // The document's title and "::FFT/LPC" or "::Average FFT/LPC".
    QString titleText() const;

    // Stores the range (samples of the audio channel) and the settings, fills
    // the readouts and computes. False after the message when it cannot (no
    // audio channel, no memory) or was cancelled; the view then shows what it
    // showed before.
    bool setup(double startSample, double endSample, const sonmetra::FftLpcSettings& settings);
    // The same range again with the settings in force.
    bool recompute();
    // Progress dialog and cancelling for long selections (off for renders).
    void setInteractive(bool on) { m_interactive = on; }

    // The FFT/LPC settings in force: the application's, else the document's.
    static sonmetra::FftLpcSettings settingsInForce(const sonmetra::CKestruneDoc& doc);
    // Every open spectrum window computes again with the settings in force.
    static void recomputeAll();

    const SpectrumResult& result() const { return m_analysis.result(); }
    const SpectrumAnalysis& analysis() const { return m_analysis; }
    const sonmetra::FftLpcSettings& settings() const { return m_settings; }
    SpectrumReadoutBar* readoutBar() const { return m_bar; }
    SpectrumPlotWidget* plot() const { return m_plot; }

    SpectrumPicture picture(bool colour) const;
    SpectrumAxes axesAt(QSize size) const { return SpectrumAxes(picture(true), size); }
    // The picture as the plot shows it on screen, at `size`.
    QImage screenImage(QSize size) const;
    // The picture at the print size and colour of the settings.
    QImage bitmapImage() const;
    void printOn(QPrinter& printer) const;

    // The marker, on the bin nearest to a frequency.
    std::optional<int> markerBin() const;
    void placeMarkerAtHz(double hz);
    // The envelope goes into entries and copies only when it is drawn.
    bool envelopeShown() const;

    // Commands.
    void saveAsBitmap();
    void printSpectrum();
    void previewSpectrum();
    void copySpectrum();
    bool canEnterAtMarker() const;
    bool canEnterFrame() const;
    void enterAtMarker();
    void enterFormants();
    void enterAllFrame();

private:
    void mouseMovedTo(QPointF pos);
    void clickedAt(QPointF pos);
    void showAnalysis();
    QString whereText() const;

    sonmetra::CKestruneDoc* m_doc;
    const bool m_average;
    bool m_interactive = true;
    double m_startSample = 0.0, m_endSample = 0.0;
    double m_msPerSample = 0.0;
    sonmetra::FftLpcSettings m_settings;
    SpectrumAnalysis m_analysis;
    std::optional<double> m_markerHz;
    SpectrumReadoutBar* m_bar;
    SpectrumPlotWidget* m_plot;
};
