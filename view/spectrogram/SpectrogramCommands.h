// The spectrogram window's commands: the waveform view's "Spectrogram All",
// "Spectrogram Selection" and "Spectrogram Window" that open it, the
// window's own View, Log and Play menus, and `sonmetra --render spectrogram`.
// The "Spectrogram..." option dialog is registered from the frame layer.
#pragma once

class CKestruneView;
class CSpectrogramView;

void registerSpectrogramCommands();

// The three ways of opening the window from a waveform view.
enum class SpectrogramSpan { All, Selection, Window };
void openSpectrogram(CKestruneView& view, SpectrogramSpan span);

// The window commands that write or send something.
void saveSpectrogramBitmap(CSpectrogramView& view);
void exportSpectrogramFormants(CSpectrogramView& view);
void enterSpectrogramMarker(CSpectrogramView& view);
void enterSpectrogramDuration(CSpectrogramView& view);
void enterSpectrogramFormantsAtMarker(CSpectrogramView& view);
void enterSpectrogramFormantsSelection(CSpectrogramView& view);
