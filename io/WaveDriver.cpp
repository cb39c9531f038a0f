#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <mutex>

#include "io/PortAudioWaveDevice.h"
#include "io/SimulatedWaveDevice.h"
#include "io/WaveDevice.h"

namespace sonmetra {
namespace {

std::mutex g_driverMutex;
std::shared_ptr<IWaveDriver> g_installed;  // guarded by g_driverMutex
std::shared_ptr<IWaveDriver> g_default;    // guarded by g_driverMutex; made on first use

}  // namespace

bool isSupportedPcmFormat(const WaveFormat& format) {
    return format.formatTag == kWaveFormatPcm && (format.channels == 1 || format.channels == 2) &&
           format.bitsPerSample == 16 && format.samplesPerSec >= 1 && format.samplesPerSec <= 192000 &&
           format.blockAlign == format.channels * 2 &&
           format.avgBytesPerSec == format.samplesPerSec * format.blockAlign;
}

std::shared_ptr<IWaveDriver> waveDriver() {
    std::lock_guard lock(g_driverMutex);
    if (g_installed) return g_installed;
    if (!g_default) {
        const char* choice = std::getenv("SONMETRA_SOUND");
        if (choice != nullptr && std::strcmp(choice, "simulated") == 0) {
            auto simulated = SimulatedWaveDriver::create(SimulatedWaveDriver::Clock::RealTime);
            // Something to see in the strip chart: a tone that swells and fades.
            simulated->setInputSignal([](std::uint64_t frame, unsigned rateHz) {
                const auto tone = SimulatedWaveDriver::sine(220.0, 12000.0)(frame, rateHz);
                const double swell = 0.5 + 0.5 * std::sin(static_cast<double>(frame) / std::max(1u, rateHz));
                return static_cast<std::int16_t>(tone * swell);
            });
            g_default = simulated;
        } else {
            g_default = PortAudioWaveDriver::create();
        }
    }
    return g_default;
}

void setWaveDriver(std::shared_ptr<IWaveDriver> driver) {
    std::lock_guard lock(g_driverMutex);
    g_installed = std::move(driver);
}

}  // namespace sonmetra
