// The FFT/LPC spectrum window's commands, registered once at start-up:
// "FFT/LPC\tCtrl+F" and "FFT/LPC Selection" in the waveform view's Analysis
// menu; Save As bmp, printing, Copy and the three log entries in the menus of
// the window itself (command context "spectrum"); and the render kind
// `spectrum` of `sonmetra --render`.
#pragma once

#include <QString>

inline const QString kSpectrumContext = QStringLiteral("spectrum");

void registerSpectrumWindow();
