// "FFT/LPC..." and "Log..." in the Options menus of the waveform view and of
// the spectrum window, registered once at start-up.
#pragma once

void registerSpectrumOptionCommands();
