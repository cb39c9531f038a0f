#include "UsbProtocol.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <stdexcept>

#include "UsbUnitSettings.h"
#include "document/MessageService.h"
#include "document/UserException.h"
#include "res/StringTable.h"

namespace sonmetra::usb {
namespace {

std::atomic<int> g_driverSetting{0};
std::mutex g_driverMutex;
std::shared_ptr<IUsbDriver> g_installed;  // guarded by g_driverMutex
std::shared_ptr<IUsbDriver> g_default;    // guarded by g_driverMutex; made on first use
// The unit serves one connection at a time. The probe, identify, recording
// and playback each hold it for their whole run, so that an operation
// started on one thread (the interface) while another thread's (the live
// scope's snapshot) is under way waits for it to end instead of failing to
// open. Recursive because identify probes first.
std::recursive_mutex g_unitTurn;

[[noreturn]] void fail(int stringId) {
    beep();
    showMessage(stringId);
    throw UserException();
}

// The stop request on the way out of a failed recording or playback. The
// failure has been reported already, so this one stays silent.
void stopQuietly(IUsbTransport& handle) {
    ControlPacket packet;
    packet.direction = kHostToUnit;
    packet.request = kRequestStop;
    std::uint32_t moved = 0;
    (void)handle.controlRequest(packet, nullptr, 0, moved);
}

}  // namespace

std::string DeviceName(int setting) { return std::string(kDevicePrefix) + (setting != 0 ? kEzusbName : kRvmName); }

std::string ShortDeviceName(const std::string& deviceName) {
    const std::string prefix = kDevicePrefix;
    return deviceName.rfind(prefix, 0) == 0 ? deviceName.substr(prefix.size()) : deviceName;
}

void setDriverSetting(int setting) { g_driverSetting = setting; }
int driverSetting() { return g_driverSetting; }
std::string currentDeviceName() { return DeviceName(g_driverSetting); }

std::shared_ptr<IUsbDriver> usbDriver() {
    std::lock_guard lock(g_driverMutex);
    if (g_installed) return g_installed;
    if (!g_default) g_default = makeUsbDriver(usbSettingsFromEnvironment(UsbUnitSettings{}));
    return g_default;
}

void setUsbDriver(std::shared_ptr<IUsbDriver> driver) {
    std::lock_guard lock(g_driverMutex);
    g_installed = std::move(driver);
}

int OpenDevice(UsbHandle& handle, const std::string& deviceName) {
    handle = usbDriver()->openUnit(deviceName);
    if (!handle) fail(IDS_USB_OPEN_ERROR);
    return 1;
}

bool ProbeDevice(const std::string& deviceName) {
    std::lock_guard turn(g_unitTurn);
    UsbHandle handle = usbDriver()->openUnit(deviceName);
    const bool valid = handle != nullptr;
    if (handle) handle->closeConnection();
    return valid;
}

void SendRequest(IUsbTransport& handle, std::uint8_t* data, std::uint8_t request, std::uint32_t length,
                 std::uint8_t direction, std::uint16_t value) {
    ControlPacket packet;
    packet.direction = direction;
    packet.request = request;
    packet.value = value;
    packet.index = static_cast<std::uint16_t>(length & 0xFFFF);
    std::uint32_t moved = 0;
    const bool ok = handle.controlRequest(packet, data, length, moved);
    if (!ok && moved != length) fail(IDS_USB_REQUEST_FAILED);
}

void ReadBulk(IUsbTransport& handle, std::uint8_t* destination, std::uint32_t bytes) {
    std::uint32_t moved = 0;
    const bool ok = handle.bulkRead(kReadPipe, destination, bytes, moved);
    if (!ok || moved != bytes) fail(IDS_USB_READ_ERROR);
}

void WriteBulk(IUsbTransport& handle, const std::uint8_t* source, std::uint32_t bytes) {
    std::uint32_t moved = 0;
    const bool ok = handle.bulkWrite(kWritePipe, source, bytes, moved);
    // A failed write reports the read message, as the unit's software always has.
    if (!ok || moved != bytes) fail(IDS_USB_READ_ERROR);
}

int UnitChannelsFromIdentify(std::uint8_t byte0) {
    switch ((byte0 >> 4) & 0x7) {
        case 4:
            return 5;
        case 5:
            return 9;
        case 6:
            return 13;
        case 7:
            return 16;
        default:
            return -1;
    }
}

int IdentifyDevice() {
    std::lock_guard turn(g_unitTurn);
    const std::string name = currentDeviceName();
    if (!ProbeDevice(name)) return -1;
    UsbHandle handle;
    OpenDevice(handle, name);
    std::uint8_t answer[kIdentifyBytes] = {};
    SendRequest(*handle, answer, kRequestIdentify, kIdentifyBytes, kUnitToHost, 0);
    handle->closeConnection();
    return UnitChannelsFromIdentify(answer[0]);
}

std::vector<std::uint32_t> ReadChunkSizes(std::uint64_t totalBytes, std::uint32_t unitBytes) {
    std::vector<std::uint32_t> reads;
    if (unitBytes >= kChunkLimitBytes) throw std::invalid_argument("recording unit of 2 MiB or more");
    const std::uint64_t chunk = kChunkLimitBytes - unitBytes;
    const std::uint64_t n = totalBytes / chunk;
    if (n == 0) {
        reads.push_back(static_cast<std::uint32_t>(totalBytes));
        return reads;
    }
    reads.assign(n, static_cast<std::uint32_t>(chunk));
    if (const std::uint64_t rest = totalBytes % chunk; rest > 0) reads.push_back(static_cast<std::uint32_t>(rest));
    return reads;
}

int RecordFromDevice(std::span<std::uint8_t> destination, std::uint32_t unitBytes, std::uint32_t unitCount,
                     [[maybe_unused]] int bitsPerSample, const std::uint8_t* block, std::uint32_t blockLength) {
    const std::uint64_t total = std::uint64_t{unitBytes} * unitCount;
    if (destination.size() < total) throw std::length_error("recording destination too small");
    const std::vector<std::uint32_t> reads = ReadChunkSizes(total, unitBytes);

    std::lock_guard turn(g_unitTurn);
    UsbHandle handle;
    OpenDevice(handle, currentDeviceName());
    try {
        // The block is sent as it is; SendRequest only reads from it on this direction.
        SendRequest(*handle, const_cast<std::uint8_t*>(block), kRequestSetup, blockLength, kHostToUnit, 0);
        SendRequest(*handle, nullptr, kRequestStart, 0, kHostToUnit, 0);
        std::uint64_t offset = 0;
        for (const std::uint32_t bytes : reads) {
            ReadBulk(*handle, destination.data() + offset, bytes);
            offset += bytes;
        }
        SendRequest(*handle, nullptr, kRequestStop, 0, kHostToUnit, 0);
    } catch (const UserException&) {
        stopQuietly(*handle);
        handle->closeConnection();
        throw;
    }
    return handle->closeConnection() ? 1 : 0;
}

PlayPlan PlanPlayback(double startOffset, double length) {
    PlayPlan plan;
    const double start = std::trunc(startOffset);
    const double n = std::trunc(length);
    plan.start = start > 0.0 ? static_cast<std::uint64_t>(start) : 0;
    const std::uint64_t bytes = n > 0.0 ? static_cast<std::uint64_t>(n) : 0;
    plan.fullBlocks = bytes / kPlayBlockBytes;
    const std::uint64_t rest = bytes - plan.fullBlocks * kPlayBlockBytes;
    plan.remainder = static_cast<std::uint32_t>(rest / kPlayTailGranule * kPlayTailGranule);
    return plan;
}

std::uint16_t PlayStartValue(double rateHz) {
    const double rate = std::trunc(rateHz);
    if (!(rate >= 1.0)) return 0;
    const long d = 4000000L / (2L * static_cast<long>(std::min(rate, 1e9)));
    return static_cast<std::uint16_t>(256 - d % 256);
}

std::uint16_t ConvertSampleForPlayback(std::int16_t sample) {
    // +32,767 with 16-bit wrap-around, then bit 0 becomes bit 15 and so on.
    auto v = static_cast<std::uint16_t>(static_cast<std::uint16_t>(sample) + 32767u);
    std::uint16_t reversed = 0;
    for (int bit = 0; bit < 16; ++bit) {
        reversed = static_cast<std::uint16_t>((reversed << 1) | (v & 1u));
        v = static_cast<std::uint16_t>(v >> 1);
    }
    return reversed;
}

void ConvertForPlayback(std::uint8_t* bytes, std::size_t byteCount) {
    for (std::size_t i = 0; i + 1 < byteCount; i += 2) {
        const auto sample = static_cast<std::int16_t>(bytes[i] | (bytes[i + 1] << 8));
        const std::uint16_t out = ConvertSampleForPlayback(sample);
        bytes[i] = static_cast<std::uint8_t>(out & 0xFF);
        bytes[i + 1] = static_cast<std::uint8_t>(out >> 8);
    }
}

void PlayThroughDevice(std::span<const std::uint8_t> samples, double startOffset, double length, double rateHz) {
    if (!(std::trunc(rateHz) >= 1.0)) {
        beep();
        char rate[32];
        std::snprintf(rate, sizeof rate, "%g", rateHz);
        showMessage(formatString(IDS_USB_PLAY_RATE, rate));
        throw UserException();
    }
    // Bytes beyond the caller's samples are not played.
    const double start = std::max(0.0, std::trunc(startOffset));
    const double available = static_cast<double>(samples.size()) > start ? samples.size() - start : 0.0;
    const PlayPlan plan = PlanPlayback(start, std::min(std::trunc(length), available));

    std::lock_guard turn(g_unitTurn);
    UsbHandle handle;
    OpenDevice(handle, currentDeviceName());
    try {
        SendRequest(*handle, nullptr, kRequestPlay, 0, kHostToUnit, PlayStartValue(rateHz));
        std::vector<std::uint8_t> staging(kPlayBlockBytes);
        auto send = [&](std::uint64_t offset, std::uint32_t bytes) {
            std::memcpy(staging.data(), samples.data() + plan.start + offset, bytes);
            ConvertForPlayback(staging.data(), bytes);
            WriteBulk(*handle, staging.data(), bytes);
        };
        for (std::uint64_t k = 0; k < plan.fullBlocks; ++k) send(k * kPlayBlockBytes, kPlayBlockBytes);
        if (plan.remainder > 0) send(plan.fullBlocks * kPlayBlockBytes, plan.remainder);
        SendRequest(*handle, nullptr, kRequestStop, 0, kHostToUnit, 0);
    } catch (const UserException&) {
        stopQuietly(*handle);
        handle->closeConnection();
        throw;
    }
    handle->closeConnection();
}

}  // namespace sonmetra::usb
