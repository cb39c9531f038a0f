#include "SpectrogramPalette.h"

#include <algorithm>
#include <cmath>

namespace {

// D65 white point of sRGB.
constexpr double kWhiteX = 0.95047, kWhiteY = 1.0, kWhiteZ = 1.08883;

double labInverse(double t) {
    constexpr double d = 6.0 / 29.0;
    return t > d ? t * t * t : 3.0 * d * d * (t - 4.0 / 29.0);
}

double labForward(double t) {
    constexpr double d = 6.0 / 29.0;
    return t > d * d * d ? std::cbrt(t) : t / (3.0 * d * d) + 4.0 / 29.0;
}

double gammaEncode(double linear) {
    return linear <= 0.0031308 ? 12.92 * linear : 1.055 * std::pow(linear, 1.0 / 2.4) - 0.055;
}

double gammaDecode(double encoded) {
    return encoded <= 0.04045 ? encoded / 12.92 : std::pow((encoded + 0.055) / 1.055, 2.4);
}

// sRGB components (0 … 1, unclipped) of a CIELAB colour.
void labToRgb(double l, double a, double b, double rgb[3]) {
    const double fy = (l + 16.0) / 116.0;
    const double x = kWhiteX * labInverse(fy + a / 500.0);
    const double y = kWhiteY * labInverse(fy);
    const double z = kWhiteZ * labInverse(fy - b / 200.0);
    rgb[0] = gammaEncode(3.2404542 * x - 1.5371385 * y - 0.4985314 * z);
    rgb[1] = gammaEncode(-0.9692660 * x + 1.8760108 * y + 0.0415560 * z);
    rgb[2] = gammaEncode(0.0556434 * x - 0.2040259 * y + 1.0572252 * z);
}

bool inGamut(const double rgb[3]) {
    for (int k = 0; k < 3; ++k)
        if (!(rgb[k] >= 0.0 && rgb[k] <= 1.0)) return false;
    return true;
}

QRgb toQRgb(const double rgb[3]) {
    auto channel = [](double v) { return static_cast<int>(std::lround(std::clamp(v, 0.0, 1.0) * 255.0)); };
    return qRgb(channel(rgb[0]), channel(rgb[1]), channel(rgb[2]));
}

// Lightness rises linearly; the hue turns from blue-violet to yellow and the
// chroma grows towards the loud end, where yellow can carry it. A colour
// outside sRGB keeps its lightness and hue and loses chroma until it fits,
// so the lightness ramp stays exact.
PaletteTable makeColourTable() {
    PaletteTable table{};
    constexpr double kPi = 3.14159265358979323846;
    for (int i = 0; i < 256; ++i) {
        const double t = i / 255.0;
        const double lightness = 14.0 + 80.0 * t;
        const double hueDeg = 300.0 - 205.0 * t;
        double chroma = 42.0 + 50.0 * t * t * t;
        double rgb[3];
        for (int step = 0; step < 60; ++step) {
            const double h = hueDeg * kPi / 180.0;
            labToRgb(lightness, chroma * std::cos(h), chroma * std::sin(h), rgb);
            if (inGamut(rgb)) break;
            chroma *= 0.95;
        }
        table[static_cast<std::size_t>(i)] = toQRgb(rgb);
    }
    return table;
}

PaletteTable makeGreyTable() {
    PaletteTable table{};
    for (int i = 0; i < 256; ++i) table[static_cast<std::size_t>(i)] = qRgb(255 - i, 255 - i, 255 - i);
    return table;
}

}  // namespace

const PaletteTable& greyPalette() {
    static const PaletteTable table = makeGreyTable();
    return table;
}

const PaletteTable& colourPalette() {
    static const PaletteTable table = makeColourTable();
    return table;
}

double cieLightness(QRgb rgb) {
    const double r = gammaDecode(qRed(rgb) / 255.0);
    const double g = gammaDecode(qGreen(rgb) / 255.0);
    const double b = gammaDecode(qBlue(rgb) / 255.0);
    const double y = 0.2126729 * r + 0.7151522 * g + 0.0721750 * b;
    return 116.0 * labForward(y / kWhiteY) - 16.0;
}
