// Level-to-colour tables of the spectrogram image: 256 entries from the
// quietest level (index 0) to the loudest (index 255).
//
// The grey table runs from white to black, so that the loudest cells are
// black, as spectrograms are read in phonetics and as they print. The colour
// table runs from a dark blue-violet through teal and green to yellow with
// its CIELAB lightness rising in equal steps, so that equal level
// differences look equally different and the picture still reads correctly
// when printed in grey.
#pragma once

#include <QRgb>
#include <array>

using PaletteTable = std::array<QRgb, 256>;

const PaletteTable& greyPalette();
const PaletteTable& colourPalette();

// The entry for a level of 0 … rangeDb (levels outside are clamped).
inline int paletteIndex(double level, double rangeDb) {
    if (!(rangeDb > 0.0) || !(level > 0.0)) return 0;
    if (level >= rangeDb) return 255;
    return static_cast<int>(level / rangeDb * 255.0 + 0.5);
}

// CIELAB lightness (0 … 100) of an sRGB colour, for the tests of the tables.
double cieLightness(QRgb rgb);
