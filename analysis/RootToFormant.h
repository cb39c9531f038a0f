// Formant of one quadratic factor z² + P1·z + P2, scale = rate / (2π):
//   h = P1/2, D = h² − P2;
//   D < 0: root −h ± i·√(−D); frequency atan2(im, re)·scale, except for h
//          exactly 0 where it is the bare number π/2, deliberately without
//          the sample-rate scale; bandwidth −ln(P2)·scale;
//   D ≥ 0: R = |h| + √D, imaginary part 0; P1 < 0 gives frequency rate/2 and
//          real part −R, otherwise frequency 0 and real part R (the mirror of
//          the root's true sign, a deliberate placement); bandwidth −ln(R²)·scale.
#pragma once

namespace sonmetra {

struct FormantOfRoot {
    double frequencyHz = 0.0;
    double bandwidthHz = 0.0;
    double rootReal = 0.0;
    double rootImag = 0.0;
};

FormantOfRoot RootToFormant(double p1, double p2, double sampleRateHz);

}  // namespace sonmetra
