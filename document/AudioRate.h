// The audio sample rate in force (Hz): 11000 until the configuration file
// or an opened document says otherwise. New documents derive their
// rate-dependent analysis defaults from it.
#pragma once

namespace sonmetra {

double audioRateInForce();
void setAudioRateInForce(double rateHz);

}  // namespace sonmetra
