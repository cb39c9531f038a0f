// Recording from and playing through the external unit for the waveform
// view's Record and play commands when the input source is
// "External Hardware".
//
// Recording: the unit is identified, the parameter block and the plan made
// from the record options (io/usb/UnitRecording.h), and the units acquired
// with RecordFromDevice under a modal progress with the elapsed time. The
// stream then replaces the document's channels: "Audio" and "ch%d", each at
// its own rate. A failed acquisition adds "Sample routine failed." to the
// unit's message and leaves the document as it was; channels whose rates
// the multiplex row cannot carry bring the sampling-time warning.
#pragma once

class QWidget;

namespace sonmetra {
class AppConfig;
class CKestruneDoc;
class CChannel;
}  // namespace sonmetra

// True when the document was filled.
bool recordFromUnit(QWidget* parent, sonmetra::CKestruneDoc& doc, const sonmetra::AppConfig& config);
// Plays count samples of the channel from firstSample through the unit.
void playThroughUnit(QWidget* parent, const sonmetra::CChannel& channel, double firstSample, double count,
                     const sonmetra::AppConfig& config);
