// The unit's protocol on the simulated unit: the packets and transfers it
// makes (through the trace), the sample conversion and block rules of
// playback, the chunking of reads, and every failure with its message and
// the stop request.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <numeric>

#include "UsbTestSupport.h"
#include "document/UserException.h"
#include "io/usb/UsbUnitSettings.h"

using namespace sonmetra;
using namespace sonmetra::usb;
using namespace sonmetra::usb::test;

namespace {

// Keeps the packets it is given and answers every request.
class PacketRecorder : public IUsbTransport {
public:
    bool controlRequest(const ControlPacket& packet, std::uint8_t*, std::uint32_t length,
                        std::uint32_t& moved) override {
        packets.push_back(packet);
        moved = length;
        return true;
    }
    bool bulkRead(std::uint32_t, std::uint8_t*, std::uint32_t, std::uint32_t&) override { return false; }
    bool bulkWrite(std::uint32_t, const std::uint8_t*, std::uint32_t, std::uint32_t&) override { return false; }
    std::vector<ControlPacket> packets;
};

std::vector<std::uint8_t> littleEndian(const std::vector<std::int16_t>& samples) {
    std::vector<std::uint8_t> bytes;
    for (const std::int16_t s : samples) {
        bytes.push_back(static_cast<std::uint8_t>(s & 0xFF));
        bytes.push_back(static_cast<std::uint8_t>((static_cast<std::uint16_t>(s) >> 8) & 0xFF));
    }
    return bytes;
}

}  // namespace

TEST(UsbPacket, TenBytesWithTheIndexTakenFromTheDataLength) {
    PacketRecorder recorder;
    std::uint8_t data[4] = {};
    SendRequest(recorder, data, kRequestIdentify, 64, kUnitToHost, 0x1234);
    SendRequest(recorder, data, kRequestSetup, 70000, kHostToUnit, 0);  // index keeps the low 16 bits
    ASSERT_EQ(recorder.packets.size(), 2u);
    const std::array<std::uint8_t, 10> identify = {1, 2, 0, 0, 0xB7, 0, 0x34, 0x12, 64, 0};
    EXPECT_EQ(recorder.packets[0].bytes(), identify);
    const std::array<std::uint8_t, 10> setup = {0, 2, 0, 0, 0xB1, 0, 0, 0, 0x70, 0x11};
    EXPECT_EQ(recorder.packets[1].bytes(), setup);
}

TEST(UsbPlayback, SamplesAreOffsetByThirtyTwoThousandSevenHundredSixtySevenAndBitReversed) {
    EXPECT_EQ(ConvertSampleForPlayback(-32767), 0x0000);  // 0 before reversal
    EXPECT_EQ(ConvertSampleForPlayback(0), 0xFFFE);       // 0x7FFF reversed
    EXPECT_EQ(ConvertSampleForPlayback(32767), 0x7FFF);   // 0xFFFE reversed
    EXPECT_EQ(ConvertSampleForPlayback(1), 0x0001);       // 0x8000 reversed
    EXPECT_EQ(ConvertSampleForPlayback(-32768), 0xFFFF);  // wraps to 0xFFFF
    EXPECT_EQ(ConvertSampleForPlayback(-32766), 0x8000);  // 1 reversed

    std::vector<std::uint8_t> bytes = littleEndian({0, -32767, 32767});
    ConvertForPlayback(bytes.data(), bytes.size());
    EXPECT_EQ(bytes, (std::vector<std::uint8_t>{0xFE, 0xFF, 0x00, 0x00, 0xFF, 0x7F}));
}

TEST(UsbPlayback, StartValueFromTheRate) {
    EXPECT_EQ(PlayStartValue(11025.0), 75);   // d = 181
    EXPECT_EQ(PlayStartValue(22050.0), 166);  // d = 90
    EXPECT_EQ(PlayStartValue(16000.0), 131);  // d = 125
    EXPECT_EQ(PlayStartValue(8000.0), 6);     // d = 250
    EXPECT_EQ(PlayStartValue(11025.9), 75);   // the rate is truncated first
    EXPECT_EQ(PlayStartValue(5000.0), 256 - 400 % 256);
}

TEST(UsbPlayback, WholeBlocksAndATailCutToSixtyFourBytes) {
    EXPECT_EQ(PlanPlayback(0.0, 63.0).fullBlocks, 0u);
    EXPECT_EQ(PlanPlayback(0.0, 63.0).remainder, 0u);
    const PlayPlan oneAndTail = PlanPlayback(10.7, 44032.0 + 100.9);
    EXPECT_EQ(oneAndTail.start, 10u);
    EXPECT_EQ(oneAndTail.fullBlocks, 1u);
    EXPECT_EQ(oneAndTail.remainder, 64u);
    const PlayPlan exact = PlanPlayback(0.0, 2.0 * 44032.0);
    EXPECT_EQ(exact.fullBlocks, 2u);
    EXPECT_EQ(exact.remainder, 0u);
    EXPECT_EQ(PlanPlayback(0.0, 44031.0).remainder, 43968u);
}

TEST(UsbRecording, ReadsComeInChunksOfTwoMebibytesLessOneUnit) {
    const std::uint32_t chunk = 2097152 - 176128;
    EXPECT_EQ(ReadChunkSizes(176128, 176128), std::vector<std::uint32_t>{176128});
    EXPECT_EQ(ReadChunkSizes(chunk, 176128), std::vector<std::uint32_t>{chunk});
    EXPECT_EQ(ReadChunkSizes(3ull * chunk + 5, 176128), (std::vector<std::uint32_t>{chunk, chunk, chunk, 5}));
    EXPECT_EQ(ReadChunkSizes(88064, 44032), std::vector<std::uint32_t>{88064});
    const auto reads = ReadChunkSizes(40ull * 176128, 176128);
    EXPECT_EQ(std::accumulate(reads.begin(), reads.end(), std::uint64_t{0}), 40ull * 176128);
    EXPECT_EQ(reads.size(), 4u);
}

TEST(UsbIdentify, TheHighFourBitsOfByteZeroWithoutTheTopBit) {
    EXPECT_EQ(UnitChannelsFromIdentify(0x40), 5);
    EXPECT_EQ(UnitChannelsFromIdentify(0x5F), 9);
    EXPECT_EQ(UnitChannelsFromIdentify(0x60), 13);
    EXPECT_EQ(UnitChannelsFromIdentify(0x70), 16);
    EXPECT_EQ(UnitChannelsFromIdentify(0xC3), 5);
    EXPECT_EQ(UnitChannelsFromIdentify(0xF0), 16);
    EXPECT_EQ(UnitChannelsFromIdentify(0x80), -1);
    EXPECT_EQ(UnitChannelsFromIdentify(0x30), -1);
}

TEST(UsbDeviceName, TheDriverSettingChoosesTheName) {
    EXPECT_EQ(DeviceName(1), "\\\\.\\Ezusb-0");
    EXPECT_EQ(DeviceName(-3), "\\\\.\\Ezusb-0");
    EXPECT_EQ(DeviceName(0), "\\\\.\\Rvm-0");
    EXPECT_EQ(ShortDeviceName(DeviceName(0)), "Rvm-0");
}

using UsbOnSimulatedUnit = SimulatedUnitTest;

TEST_F(UsbOnSimulatedUnit, IdentifyAsksSixtyFourBytes) {
    EXPECT_EQ(IdentifyDevice(), 9);
    EXPECT_EQ(traceLines(), std::vector<std::string>{"control in request=0xB7 value=0 index=64 length=64"});
    for (const int size : {5, 13, 16}) {
        firmware().setUnitChannels(size);
        EXPECT_EQ(IdentifyDevice(), size);
    }
    firmware().setIdentifyByte(0xC3);
    EXPECT_EQ(IdentifyDevice(), 5);
    firmware().setIdentifyByte(0x20);
    EXPECT_EQ(IdentifyDevice(), -1);
    EXPECT_TRUE(m_messages.texts().empty());
}

TEST_F(UsbOnSimulatedUnit, IdentifyWithoutAUnitIsMinusOneAndSilent) {
    m_driver->setPlugged(false);
    EXPECT_EQ(IdentifyDevice(), -1);
    EXPECT_TRUE(traceLines().empty());
    EXPECT_TRUE(m_messages.texts().empty());
    EXPECT_EQ(m_messages.beeps(), 0);
}

TEST_F(UsbOnSimulatedUnit, AUnitThatPassesTheProbeButWillNotOpenIsReported) {
    m_driver->failOpens(1, 1);  // the probe opens, the open after it fails
    EXPECT_THROW(IdentifyDevice(), UserException);
    EXPECT_EQ(m_messages.texts(), std::vector<std::string>{kOpenError});
    EXPECT_EQ(m_messages.beeps(), 1);
}

TEST_F(UsbOnSimulatedUnit, RecordingSendsTheBlockStartsReadsAndStops) {
    ParameterBlock block{};
    for (std::size_t i = 0; i < block.size(); ++i) block[i] = static_cast<std::uint8_t>(i % 7);
    const std::uint32_t units = 12;  // 2,113,536 bytes: one chunk and the rest
    std::vector<std::uint8_t> data(std::size_t{units} * kRecordingUnitBytes);
    EXPECT_EQ(RecordFromDevice(data, kRecordingUnitBytes, units, 16, block.data(), 320), 1);
    EXPECT_EQ(traceLines(), (std::vector<std::string>{
                                "control out request=0xB1 value=0 index=320 length=320 data=00 01 02 03 04 05 06 00 01 "
                                "02 03 04 05 06 00 01",
                                "control out request=0xB2 value=0 index=0 length=0",
                                "bulk in pipe=8 length=1921024",
                                "bulk in pipe=8 length=192512",
                                kStopLine,
                            }));
    EXPECT_EQ(firmware().parameterBlock(), block);
    EXPECT_EQ(firmware().streamedBytes(), data.size());
    EXPECT_FALSE(firmware().streaming());
    // The reads landed one after the other: the stream's last word is where it belongs.
    UnitFirmware reference(9);
    std::vector<std::uint8_t> again(data.size());
    reference.controlRequest(false, kRequestSetup, 0, 320, block.data(), 320);
    reference.controlRequest(false, kRequestStart, 0, 0, nullptr, 0);
    reference.bulkIn(again.data(), again.size());
    EXPECT_EQ(data, again);
    EXPECT_TRUE(m_messages.texts().empty());
}

TEST_F(UsbOnSimulatedUnit, PlaybackSendsConvertedBlocksAndDropsAShortTail) {
    std::vector<std::int16_t> samples(22016 + 50);  // 44,032 + 100 bytes
    for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = static_cast<std::int16_t>(i * 37 - 20000);
    // Known words at the head of each block: 0 goes out as FE FF, -32767 as 00 00.
    std::fill_n(samples.begin(), 8, 0);
    std::fill_n(samples.begin() + 22016, 8, -32767);
    const std::vector<std::uint8_t> bytes = littleEndian(samples);
    PlayThroughDevice(bytes, 0.0, static_cast<double>(bytes.size()), 11025.0);
    EXPECT_EQ(traceLines(), (std::vector<std::string>{
                                "control out request=0xB3 value=75 index=0 length=0",
                                "bulk out pipe=1 length=44032 data=FE FF FE FF FE FF FE FF FE FF FE FF FE FF FE FF",
                                "bulk out pipe=1 length=64 data=00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00",
                                kStopLine,
                            }));
    const std::vector<std::int16_t> played = firmware().playedSamples();
    ASSERT_EQ(played.size(), 22016u + 32u);
    EXPECT_TRUE(std::equal(played.begin(), played.end(), samples.begin()));
    EXPECT_EQ(firmware().playClockValue(), 75);
}

TEST_F(UsbOnSimulatedUnit, APlaybackBelowSixtyFourBytesOnlyStartsAndStops) {
    const std::vector<std::uint8_t> bytes(63, 0);
    PlayThroughDevice(bytes, 0.0, 63.0, 8000.0);
    EXPECT_EQ(traceLines(), (std::vector<std::string>{"control out request=0xB3 value=6 index=0 length=0", kStopLine}));
}

TEST_F(UsbOnSimulatedUnit, PlaybackStopsAtTheEndOfTheSamplesGiven) {
    const std::vector<std::uint8_t> bytes(1000, 0);
    PlayThroughDevice(bytes, 100.0, 5000.0, 16000.0);  // 900 bytes are there: 896 played
    EXPECT_EQ(firmware().playedSamples().size(), 448u);
    EXPECT_EQ(traceLines().front(), "control out request=0xB3 value=131 index=0 length=0");
}

TEST_F(UsbOnSimulatedUnit, EveryFailureAfterTheOpenReportsItsTextAndStopsTheUnit) {
    ParameterBlock block{};
    std::vector<std::uint8_t> data(kRecordingUnitBytes);
    auto record = [&] { RecordFromDevice(data, kRecordingUnitBytes, 1, 16, block.data(), 320); };
    struct Case {
        const char* what;
        std::function<void()> fault;
        const char* message;
    };
    const Case cases[] = {
        {"refused parameter block", [&] { firmware().refuseRequest(kRequestSetup); }, kRequestError},
        {"short read", [&] { firmware().endStreamAfter(1000, BulkEnd::ShortPacket); }, kReadError},
        {"silent unit", [&] { firmware().endStreamAfter(0, BulkEnd::NoAnswer); }, kReadError},
        {"stalled pipe", [&] { firmware().endStreamAfter(32, BulkEnd::Stall); }, kReadError},
    };
    for (const Case& c : cases) {
        firmware().clearFaults();
        clearTrace();
        m_messages.clear();
        c.fault();
        EXPECT_THROW(record(), UserException) << c.what;
        EXPECT_EQ(m_messages.texts(), std::vector<std::string>{c.message}) << c.what;
        EXPECT_EQ(m_messages.beeps(), 1) << c.what;
        EXPECT_EQ(traceLines().back(), kStopLine) << c.what;
        EXPECT_FALSE(firmware().streaming()) << c.what;
    }
}

TEST_F(UsbOnSimulatedUnit, AnUnopenedUnitIsReportedBeforeAnyTransfer) {
    m_driver->setPlugged(false);
    ParameterBlock block{};
    std::vector<std::uint8_t> data(kRecordingUnitBytes);
    EXPECT_THROW(RecordFromDevice(data, kRecordingUnitBytes, 1, 16, block.data(), 320), UserException);
    const std::vector<std::uint8_t> bytes(200, 0);
    EXPECT_THROW(PlayThroughDevice(bytes, 0.0, 200.0, 11025.0), UserException);
    EXPECT_EQ(m_messages.texts(), (std::vector<std::string>{kOpenError, kOpenError}));
    EXPECT_EQ(m_messages.beeps(), 2);
    EXPECT_TRUE(traceLines().empty());
}

TEST_F(UsbOnSimulatedUnit, ARequestWithoutDataCountsAsSentEvenWhenRefused) {
    // 0xB3 carries no data, so its failure moves as many bytes as asked (none)
    // and passes; the unit is then not playing and the first block fails.
    firmware().refuseRequest(kRequestPlay);
    const std::vector<std::uint8_t> bytes(200, 0);
    EXPECT_THROW(PlayThroughDevice(bytes, 0.0, 200.0, 11025.0), UserException);
    EXPECT_EQ(m_messages.texts(), std::vector<std::string>{kReadError});
    EXPECT_EQ(traceLines(), (std::vector<std::string>{"control out request=0xB3 value=75 index=0 length=0",
                                                      "bulk out pipe=1 length=192 data=FE FF FE FF FE FF FE FF FE FF "
                                                      "FE FF FE FF FE FF",
                                                      kStopLine}));
}

TEST_F(UsbOnSimulatedUnit, AFailedIdentifyRequestIsReported) {
    firmware().refuseRequest(kRequestIdentify);
    EXPECT_THROW(IdentifyDevice(), UserException);
    EXPECT_EQ(m_messages.texts(), std::vector<std::string>{kRequestError});
}

TEST_F(UsbOnSimulatedUnit, ARateBelowOneHertzIsNotPlayed) {
    const std::vector<std::uint8_t> bytes(200, 0);
    EXPECT_THROW(PlayThroughDevice(bytes, 0.0, 200.0, 0.5), UserException);
    EXPECT_EQ(m_messages.texts(), std::vector<std::string>{"The sample rate of 0.5 Hz cannot be played through the "
                                                           "unit."});
    EXPECT_TRUE(traceLines().empty());
}

TEST(UsbUnitSettings, TheUdevRuleLetsUsersOpenTheDefaultIds) {
    std::ifstream rule(SONMETRA_UDEV_RULE);
    ASSERT_TRUE(rule.good());
    std::map<std::string, UsbId> found;
    for (std::string line; std::getline(rule, line);) {
        if (line.empty() || line[0] == '#') continue;
        auto attr = [&](const std::string& name) {
            const auto at = line.find("ATTR{" + name + "}==\"");
            return at == std::string::npos ? std::string() : line.substr(at + name.size() + 9, 4);
        };
        UsbId id;
        ASSERT_TRUE(parseUsbId(attr("idVendor") + ":" + attr("idProduct"), id)) << line;
        EXPECT_NE(line.find("TAG+=\"uaccess\""), std::string::npos) << line;
        found[formatUsbId(id)] = id;
    }
    for (const auto& [name, id] : UsbUnitSettings::defaultIds()) EXPECT_EQ(found.count(formatUsbId(id)), 1u) << name;
}

TEST(UsbUnitSettings, UnitChoicesAndIdsAreReadStrictly) {
    int n = -1;
    EXPECT_TRUE(parseUnitChoice("simulated:13", n));
    EXPECT_EQ(n, 13);
    EXPECT_TRUE(parseUnitChoice("usb", n));
    EXPECT_EQ(n, 0);
    for (const char* bad : {"simulated:7", "simulated:", "simulated:9x", "USB", "sim:9", ""})
        EXPECT_FALSE(parseUnitChoice(bad, n)) << bad;
    UsbId id;
    EXPECT_TRUE(parseUsbId("04B4:8613", id));
    EXPECT_EQ(id, (UsbId{0x04b4, 0x8613}));
    for (const char* bad : {"4b4:8613", "04b4-8613", "04b4:861g", "04b4:86130", " 04b4:8613", ""})
        EXPECT_FALSE(parseUsbId(bad, id)) << bad;
}
