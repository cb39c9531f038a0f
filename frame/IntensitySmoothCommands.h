// "Intensity" and "Smooth" of the waveform view's Analysis menu and the
// "Intensity/Smooth" entry of its Options menu.
//
// The intensity and smoothing settings are kept per channel slot in the
// configuration record (slot i for channel i of any document), so that they
// survive a restart; each command first hands every channel its slot's
// settings and then runs on every channel in order:
//   Intensity: the contour of each channel with its reference level as the
//              offset, drawn in blue over its trace; a failure stops at that
//              channel with " Intensity function failed ".
//   Smooth:    asks whether to save first (Yes runs Save As; a Save As that
//              does not save ends the command with nothing changed), keeps
//              the samples for Undo, smooths every channel whose flag is on,
//              and tells the document's other windows that the samples
//              changed; a failure shows " Smmoth function failed ".
#pragma once

class CKestruneView;

void runIntensity(CKestruneView& view);
void runSmooth(CKestruneView& view);

// Registers the three entries and the contour's recomputation after "Set
// Reference All to Zero" (the contour is measured from the reference).
void registerIntensitySmoothCommands();
