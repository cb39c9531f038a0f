// The spectrogram command's files: its levels as a picture or as an array.
//
// PNG: time left to right, 0 Hz at the bottom, darker is louder: the grey of a
// level v is 255 − round(clamp(v · 255 / dynamic range, 0, 255)). With formants
// the picture is RGB and every formant below the frequency range is a red
// pixel in its column. The picture is written in bands of rows as they are
// made (stored deflate blocks, so no compression library does the work), and
// the bands are made on the processor's cores while the previous one is
// written.
//
// NumPy: a version 1.0 .npy file of little-endian float32, shape
// (columns, points), row-major: element [c, k] is level k (k = 0 at 0 Hz) of
// column c, each level the float nearest its double.
#pragma once

#include <string>

#include "analysis/Spectrogram.h"

namespace sonmetra::cli {

// Both return false when the file cannot be written completely.
bool WriteSpectrogramPng(const std::string& path, const SpectrogramResult& r, double dynamicRangeDb, int rangeHz,
                         bool formants);
bool WriteSpectrogramNpy(const std::string& path, const SpectrogramResult& r);

}  // namespace sonmetra::cli
