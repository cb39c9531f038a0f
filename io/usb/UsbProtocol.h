// The external acquisition unit's protocol: open the unit by name, send its
// vendor requests, read and write its bulk pipes, identify it, acquire a
// recording in one go and play samples through it.
//
// Every operation is synchronous and opens the unit anew; each closes what
// it opened before it returns, the probe and identify included (a unit's
// interface can be held by one connection at a time; an operation started
// while another thread's is under way waits for it). A failure beeps, shows
// its message through the message service and throws UserException; after
// a successful open, a failed recording or playback first sends the stop
// request (quietly: a stop that fails as well adds no second message).
//
// A recording: 0xB1 with the 320-byte parameter block, 0xB2, bulk reads of
// at most 2,097,152 - unit bytes straight into the caller's buffer, 0xB4.
// A playback: 0xB3 with the clock value 256 - (d mod 256), d = 4,000,000 /
// (2 x rate), then blocks of 44,032 bytes converted for the unit's converter
// (+32,767 with 16-bit wrap, bits reversed), a tail cut to whole 64 bytes, 0xB4.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "UsbConstants.h"
#include "UsbTransport.h"

namespace sonmetra::usb {

using UsbHandle = std::unique_ptr<IUsbTransport>;

// "\\.\" followed by "Ezusb-0" when the driver setting is non-zero, else "Rvm-0".
inline constexpr char kDevicePrefix[] = "\\\\.\\";
inline constexpr char kEzusbName[] = "Ezusb-0";
inline constexpr char kRvmName[] = "Rvm-0";
std::string DeviceName(int driverSetting);
// The name without its "\\.\" prefix ("Rvm-0"), as the settings key it.
std::string ShortDeviceName(const std::string& deviceName);

// The driver setting in force (kept in the configuration record) and the
// device name it chooses.
void setDriverSetting(int setting);
int driverSetting();
std::string currentDeviceName();

// The driver the operations use: the one installed, else libusb with the
// built-in vendor/product ids.
std::shared_ptr<IUsbDriver> usbDriver();
void setUsbDriver(std::shared_ptr<IUsbDriver> driver);

// Opens with a message on failure. Returns 1.
int OpenDevice(UsbHandle& handle, const std::string& deviceName);
// The same open without a message; the connection is closed again at once.
bool ProbeDevice(const std::string& deviceName);
// Builds the control packet (index = low 16 bits of length) and sends it.
// Fails only when the driver call fails and the bytes moved differ from length.
void SendRequest(IUsbTransport& handle, std::uint8_t* data, std::uint8_t request, std::uint32_t length,
                 std::uint8_t direction, std::uint16_t value);
// Succeed only when the call succeeds with exactly `bytes` moved; both
// report "Error in reading the incoming data." otherwise.
void ReadBulk(IUsbTransport& handle, std::uint8_t* destination, std::uint32_t bytes);
void WriteBulk(IUsbTransport& handle, const std::uint8_t* source, std::uint32_t bytes);

// 5, 9, 13 or 16 channels, or -1 when no unit answers the probe or its
// answer is not a known size.
int IdentifyDevice();
// Channels from byte 0 of the identify answer: its high four bits, top bit ignored.
int UnitChannelsFromIdentify(std::uint8_t byte0);

// Acquires unitBytes x unitCount bytes into destination (which must hold
// them) with the parameter block. The unit delivers 16-bit words whatever
// bitsPerSample says; the block's own bits byte tells the unit. Returns the
// result of closing the connection (1 when it closed cleanly).
int RecordFromDevice(std::span<std::uint8_t> destination, std::uint32_t unitBytes, std::uint32_t unitCount,
                     int bitsPerSample, const std::uint8_t* block, std::uint32_t blockLength);
// The reads a recording makes, in order: n reads of (2,097,152 - unit)
// bytes and the rest, or one read of everything when that is less.
std::vector<std::uint32_t> ReadChunkSizes(std::uint64_t totalBytes, std::uint32_t unitBytes);

// Plays trunc(length) bytes of little-endian 16-bit samples from
// trunc(startOffset) at the rate (Hz); bytes beyond `samples` are not played.
void PlayThroughDevice(std::span<const std::uint8_t> samples, double startOffset, double length, double rateHz);
struct PlayPlan {
    std::uint64_t start = 0;
    std::uint64_t fullBlocks = 0;
    std::uint32_t remainder = 0;  // a multiple of 64 below 44,032
};
PlayPlan PlanPlayback(double startOffset, double length);
// 256 - (d mod 256) with d = 4,000,000 / (2 x trunc(rate)); rates below 1 Hz have none.
std::uint16_t PlayStartValue(double rateHz);
// One sample as the unit's converter takes it, and a whole buffer in place.
std::uint16_t ConvertSampleForPlayback(std::int16_t sample);
void ConvertForPlayback(std::uint8_t* bytes, std::size_t byteCount);

}  // namespace sonmetra::usb
