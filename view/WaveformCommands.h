// The waveform view's own menu commands (zoom, selection, channel
// references), registered once at start-up into ViewCommandRegistry.
#pragma once

class CKestruneView;

void registerWaveformViewCommands();

// Text of the "Set Reference for Clicked Channel" entry as the menu opens.
class QString;
QString clickedChannelMenuText(const CKestruneView& view);
