// Layout of the configuration record "SonmetraConf.cfg": 2224 bytes,
// little-endian, written and read whole. Every setting has one fixed place;
// bytes no setting uses are written as zero and kept as read.
//
//  offset width field
//  0      16    version text "8.9.1", NUL-terminated
//  16     4     int32 driver setting of the external unit: non-zero opens "Ezusb-0", 0 "Rvm-0"
//  20     16    input line text: "Mic" or "Line"
//  36     36    acquisition source text: "Computer" or "External Hardware"
//  72     68    17 x int32 channel word of channel-table rows 0..16: bit 0 = selected for
//               recording from the unit (row 0, the audio channel, is always recorded)
//  140    68    17 x int32 sample rate (Hz), taken when 1000..45000
//  208    68    17 x int32 bandwidth (Hz), taken when 0 < bw <= 8000
//  276    68    17 x int32 gain, taken when 0 < gain <= 350
//  --- record and play options
//  344    4     int32 recording time (ms)
//  348    4     int32 audio sample rate in force (Hz)
//  352    4     int32 sample rate for input "Line" (Hz)
//  356    4     int32 sample rate for the external unit (Hz)
//  --- waveform display, zoom and log options
//  360    8     double zoom range from the cursor (ms)
//  368    4     int32 time grid on
//  372    8     double time grid step (ms), 0 = automatic
//  380    4     int32 track mouse for all windows
//  384    8     double print/bitmap width
//  392    8     double print/bitmap height
//  400    4     int32 print size in inches (1) or cm (0)
//  404    4     int32 colour (1) or black and white (0)
//  408    4     int32 log: step for entire-frame entry (Hz), 1..5000
//  --- FFT/LPC spectrum window (its window length, range and order are at 560, 960, 980)
//  424    4     int32 FFT size index 0..7
//  428    4     int32 average step (ms)
//  432    4     int32 draw LPC
//  436    4     int32 absolute level (1) or relative (0)
//  440    4     int32 absolute level (dB)
//  444    8     double print width
//  452    8     double print height
//  460    4     int32 print inches
//  464    4     int32 print colour
//  468    4     int32 frequency grid on
//  472    4     int32 frequency grid spacing (Hz)
//  476    4     int32 power grid on
//  480    4     int32 power grid spacing (dB)
//  --- values derived from the audio rate, rewritten when it changes
//  560    4     int32 analysis frame length (ms) = cut(256 × 1000 / rate)
//  568    4     int32 cut(rate / 1000) × 1000
//  --- pitch window
//  576    4     int32 method: 0 cepstral, 1 autocorrelation
//  580..636     int32 window ms, step ms, deviation Hz, threshold %, low Hz, high Hz,
//               display low Hz, display high Hz, frequency grid on, grid Hz,
//               time grid on, time grid ms, draw audio, draw intensity, draw labels
//  640    8     double print width
//  648    8     double print height
//  656    4     int32 print inches
//  660    4     int32 print colour
//  --- spectrogram window
//  672    4     int32 FFT size index
//  676    4     int32 frequency range (Hz)
//  680    4     int32 dynamic range (dB)
//  684    8     double pre-emphasis
//  692..724     int32 display formants, LPC order, draw audio, draw labels, draw
//               intensity, frequency grid on, grid Hz, time grid on, time grid ms
//  728    8     double print width
//  736    8     double print height
//  744    4     int32 print inches
//  748    4     int32 print colour
//  752    4     int32 colour map: 0 grey, 1 colour
//  --- derived from the audio rate (continued)
//  960    4     int32 display frequency range (Hz) = cut(rate / 2 / 1000) × 1000
//  980    4     int32 analysis order = largest even number <= 4 + cut(rate / 1000)
//  --- intensity and smoothing, 20 channel slots of 32 bytes from 1000
//  +0     8     double intensity window (ms)
//  +8     8     double intensity step (ms)
//  +16    4     int32 normalise
//  +20    4     int32 smoothing on
//  +24    8     double smoothing length (samples)
//  --- external USB unit and live scope from 1640
//  1640   4     int32 multiplex type 1..3
//  1644   580   zero (reserved for the unit and the live scope)
#pragma once

#include <cstddef>

namespace sonmetra::cfg {

constexpr std::size_t kRecordSize = 2224;
constexpr char kVersion[] = "8.9.1";
constexpr int kRows = 17;

constexpr std::size_t kVersionText = 0;
constexpr std::size_t kDriverSetting = 16;
constexpr std::size_t kInputLine = 20;
constexpr std::size_t kSource = 36;
constexpr std::size_t kChannelWords = 72;
constexpr std::size_t kRowRates = 140;
constexpr std::size_t kRowBandwidths = 208;
constexpr std::size_t kRowGains = 276;

constexpr std::size_t kRecordTimeMs = 344;
constexpr std::size_t kAudioRateHz = 348;
constexpr std::size_t kLineRateHz = 352;
constexpr std::size_t kExternalRateHz = 356;

constexpr std::size_t kZoomRangeMs = 360;
constexpr std::size_t kTimeGridOn = 368;
constexpr std::size_t kTimeGridStepMs = 372;
constexpr std::size_t kTrackMouse = 380;
constexpr std::size_t kPrintWidth = 384;
constexpr std::size_t kPrintHeight = 392;
constexpr std::size_t kPrintInches = 400;
constexpr std::size_t kPrintColor = 404;
constexpr std::size_t kLogFrameStepHz = 408;

constexpr std::size_t kFftSizeIndex = 424;
constexpr std::size_t kFftAverageStepMs = 428;
constexpr std::size_t kFftDrawLpc = 432;
constexpr std::size_t kFftAbsolute = 436;
constexpr std::size_t kFftAbsoluteDb = 440;
constexpr std::size_t kFftPrint = 444;  // width, height, inches, colour
constexpr std::size_t kFftFrequencyGrid = 468;
constexpr std::size_t kFftFrequencyGridHz = 472;
constexpr std::size_t kFftPowerGrid = 476;
constexpr std::size_t kFftPowerGridDb = 480;

constexpr std::size_t kAnalysisFrameMs = 560;
constexpr std::size_t kRateRoundedHz = 568;

constexpr std::size_t kPitchMethod = 576;
constexpr std::size_t kPitchInts = 580;  // 15 int32 in the order listed above
constexpr std::size_t kPitchPrint = 640;

constexpr std::size_t kSpecFftSizeIndex = 672;
constexpr std::size_t kSpecFrequencyRangeHz = 676;
constexpr std::size_t kSpecDynamicRangeDb = 680;
constexpr std::size_t kSpecPreEmphasis = 684;
constexpr std::size_t kSpecInts = 692;  // 9 int32 in the order listed above
constexpr std::size_t kSpecPrint = 728;
constexpr std::size_t kSpecColourMap = 752;

constexpr std::size_t kDisplayFrequencyRangeHz = 960;
constexpr std::size_t kAnalysisOrder = 980;

constexpr std::size_t kChannelSettings = 1000;
constexpr std::size_t kChannelSettingsStride = 32;
constexpr int kChannelSettingsSlots = 20;

constexpr std::size_t kExternalUnit = 1640;
constexpr std::size_t kMultiplexType = 1640;

static_assert(kChannelSettings + kChannelSettingsStride * kChannelSettingsSlots <= kExternalUnit);
static_assert(kExternalUnit < kRecordSize);

}  // namespace sonmetra::cfg
