// `sonmetra --render KIND FILE -o OUT [--size WxH] [--cursor MS | --from MS
// --to MS] [--config CFG]`: one window's picture written without a screen,
// through the window's own drawing code, for scripted figures and tests.
//
// KIND is a kind that a window registered (view/RenderKinds.h): waveform,
// spectrum, pitch, spectrogram. OUT's extension picks the format: .png and
// .bmp (the "Save As bmp..." writer) hold the client area at --size (default
// 800x600), .pdf the window's printout. Settings come from the working
// folder's configuration file, or from CFG; nothing is written back to it.
// Qt's offscreen platform is selected, no message box is shown: messages go
// to standard error, the exit status is 1 and no file is written.
#pragma once

// True when the arguments ask for a render rather than the workstation.
bool isRenderCommand(int argc, char** argv);
// Runs the render and returns the process's exit status.
int runRender(int argc, char** argv);
