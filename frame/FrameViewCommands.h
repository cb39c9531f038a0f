// The waveform view's commands that open dialogs or write files (option
// dialogs, bitmaps, printing), registered once at start-up.
#pragma once

void registerFrameViewCommands();
