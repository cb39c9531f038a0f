// The acquisition parameter block and the multiplex rows: the bytes of
// every row, the divider counts, the input selector and its refusals, and
// the splitting of the stream into inputs.
#include <gtest/gtest.h>

#include "document/MessageService.h"
#include "document/UserException.h"
#include "io/usb/Multiplex.h"
#include "io/usb/ParameterBlock.h"

using namespace sonmetra;
using namespace sonmetra::usb;

namespace {

MultiplexRow tableRow(const ParameterBlock& block, int r) {
    MultiplexRow row{};
    std::copy_n(block.begin() + 16 * r, 16, row.begin());
    return row;
}

AcquisitionSettings settings(int channels, int type, const char* line = "Mic") {
    AcquisitionSettings s;
    s.unitChannels = channels;
    s.multiplexType = type;
    s.inputLine = line;
    return s;
}

}  // namespace

TEST(ParameterBlock, TheMultiplexRowIsRepeatedSixteenTimes) {
    struct Case {
        int channels, type;
        MultiplexRow row;
    };
    const Case cases[] = {
        {5, 1, {0, 1, 0, 2, 0, 3, 0, 4, 0, 1, 0, 2, 0, 3, 0, 4}},
        {5, 2, {0, 1, 2, 3, 0, 1, 2, 4, 0, 1, 2, 3, 0, 1, 2, 4}},
        {5, 3, {0, 1, 2, 3, 4, 5, 6, 7, 0, 1, 2, 3, 4, 5, 6, 7}},
        {9, 1, {0, 1, 2, 3, 0, 4, 5, 6, 0, 1, 2, 3, 0, 4, 7, 8}},
        {9, 2, {0, 1, 2, 3, 4, 5, 6, 7, 0, 1, 2, 3, 4, 5, 6, 8}},
        {13, 1, {0, 1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 9, 0, 10, 11, 12}},
        {13, 3, {0, 1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 9, 0, 10, 11, 12}},
        {16, 2, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}},
    };
    for (const Case& c : cases) {
        const ParameterBlock block = BuildParameterBlock(settings(c.channels, c.type));
        for (int r = 0; r < 16; ++r)
            EXPECT_EQ(tableRow(block, r), c.row) << c.channels << "/" << c.type << " row " << r;
    }
}

TEST(ParameterBlock, AFiveChannelUnitWithAnotherTypeGetsNoTable) {
    for (const int type : {0, 4, -1}) {
        const ParameterBlock block = BuildParameterBlock(settings(5, type));
        EXPECT_TRUE(std::all_of(block.begin(), block.begin() + 256, [](std::uint8_t b) { return b == 0; })) << type;
        EXPECT_EQ(block[kBlockBits], 16);
    }
    EXPECT_FALSE(MultiplexRowFor(-1, 2).has_value());
}

TEST(ParameterBlock, NineChannelsWithTypeThreeAndAWrongSourceAreRefused) {
    RecordingMessageService messages;
    ScopedMessageService scope(&messages);
    EXPECT_THROW(BuildParameterBlock(settings(9, 3)), UserException);
    EXPECT_THROW(BuildParameterBlock(settings(9, 0)), UserException);
    EXPECT_THROW(BuildParameterBlock(settings(5, 2, "Computer")), UserException);
    EXPECT_THROW(BuildParameterBlock(settings(5, 2, "mic")), UserException);
    // The multiplex type is checked before the source.
    EXPECT_THROW(BuildParameterBlock(settings(9, 3, "Computer")), UserException);
    const std::string wrongSource =
        "Wrong input source.\nPlease refer to the Record/Play window to select a proper\ninput source.";
    EXPECT_EQ(messages.texts(), (std::vector<std::string>{"Unknown multiplex type.", "Unknown multiplex type.",
                                                          wrongSource, wrongSource, "Unknown multiplex type."}));
    EXPECT_EQ(messages.beeps(), 5);
}

TEST(ParameterBlock, InputSelectorBitsAndDividerCounts) {
    AcquisitionSettings s = settings(9, 2, "Line");
    s.audioRateHz = 1000.0;        // 60e6 / 512000 = 117.19 -> 115
    s.inputs[1].rateHz = 1000.0;   // 60e6 / 800000 = 75 -> 73
    s.inputs[2].rateHz = 5500.0;   // 13.64 -> 11
    s.inputs[3].rateHz = 45000.0;  // 1.67 -> -1, clamped to 0
    s.inputs[16].rateHz = 100.0;   // 750 -> 748
    const ParameterBlock block = BuildParameterBlock(s);
    EXPECT_EQ(block[kBlockInputSelector], 0);
    EXPECT_EQ(block[kBlockInputSelector + 1], 1);
    EXPECT_EQ(block[kBlockBits], 16);
    EXPECT_EQ(block[256], 28);    // 115 >> 2
    EXPECT_EQ(block[257], 0xC0);  // (115 << 6) & 0xFF
    EXPECT_EQ(block[264], 18);    // 73 >> 2
    EXPECT_EQ(block[265], 0x40);
    EXPECT_EQ(block[266], 2);  // 11 >> 2
    EXPECT_EQ(block[267], 0xC0);
    EXPECT_EQ(block[268], 0);
    EXPECT_EQ(block[269], 0);
    EXPECT_EQ(StoredDividerCount(block.data(), 264 + 30), 748);
    EXPECT_EQ(StoredDividerCount(block.data(), 264 + 8), 0);  // input 5 has no rate

    const ParameterBlock mic = BuildParameterBlock(settings(9, 2, "Mic"));
    EXPECT_EQ(mic[kBlockInputSelector + 1], 0);
}

TEST(ParameterBlock, DividerCountsGiveTheirRatesBack) {
    EXPECT_DOUBLE_EQ(RateFromDividerCount(73, kDataDivisor), 60e6 / (800.0 * 75));
    EXPECT_EQ(DividerCount(1e9, kAudioDivisor), 0);
    EXPECT_EQ(DividerCount(1.0, kDataDivisor), 1023);
    // A rate whose count is exact comes back exactly.
    EXPECT_DOUBLE_EQ(RateFromDividerCount(DividerCount(3000.0, kDataDivisor), kDataDivisor), 3000.0);
}

TEST(ParameterBlock, FrontEndCodesHoldBandwidthAndGainSteps) {
    AcquisitionSettings s = settings(9, 2);
    s.inputs[1] = {11000.0, 4000.0, 1.0};
    s.inputs[2] = {11000.0, 8000.0, 350.0};
    s.inputs[3] = {11000.0, 100.0, 0.5};  // below the first steps
    s.inputs[12] = {5500.0, 2100.0, 60.0};
    s.inputs[13] = {5500.0, 8000.0, 350.0};  // beyond the twelve coded inputs
    const ParameterBlock block = BuildParameterBlock(s);
    EXPECT_EQ(block[kBlockFrontEnd + 0], (5 << 4) | 0);
    EXPECT_EQ(block[kBlockFrontEnd + 1], (7 << 4) | 8);
    EXPECT_EQ(block[kBlockFrontEnd + 2], 0);
    EXPECT_EQ(block[kBlockFrontEnd + 11], (4 << 4) | 5);
    EXPECT_TRUE(std::all_of(block.begin() + 308, block.end(), [](std::uint8_t b) { return b == 0; }));
}

TEST(Multiplex, DemultiplexingTakesEachInputsSlotsInOrder) {
    // Two rows of the 5-channel type-2 row; each word holds its stream position.
    std::vector<std::uint8_t> stream;
    for (int w = 0; w < 32 + 5; ++w) {  // a partial third row is not used
        stream.push_back(static_cast<std::uint8_t>(w));
        stream.push_back(0);
    }
    const MultiplexRow row = *MultiplexRowFor(5, 2);
    auto input = [&](int i) { return Demultiplex(stream, SlotsOf(row, i)); };
    EXPECT_EQ(input(0), (std::vector<std::int16_t>{0, 4, 8, 12, 16, 20, 24, 28}));
    EXPECT_EQ(input(3), (std::vector<std::int16_t>{3, 11, 19, 27}));
    EXPECT_EQ(input(4), (std::vector<std::int16_t>{7, 15, 23, 31}));
    EXPECT_EQ(Demultiplex(stream, SlotsOf(row, 1), 3), (std::vector<std::int16_t>{1, 5, 9}));

    const MultiplexRow nine = *MultiplexRowFor(9, 1);
    EXPECT_EQ(SlotsOf(nine, 4), (std::vector<int>{5, 13}));
    EXPECT_EQ(SlotsOf(nine, 8), (std::vector<int>{15}));
    EXPECT_EQ(InputsOf(nine), (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST(Multiplex, EachInputIsCarriedAtItsShareOfTheAudioRate) {
    const MultiplexRow nine2 = *MultiplexRowFor(9, 2);
    EXPECT_DOUBLE_EQ(DeliveredRateHz(nine2, 0, 11000.0), 11000.0);
    EXPECT_DOUBLE_EQ(DeliveredRateHz(nine2, 6, 11000.0), 11000.0);
    EXPECT_DOUBLE_EQ(DeliveredRateHz(nine2, 7, 11000.0), 5500.0);
    const MultiplexRow five1 = *MultiplexRowFor(5, 1);
    EXPECT_DOUBLE_EQ(DeliveredRateHz(five1, 2, 22000.0), 5500.0);
    EXPECT_DOUBLE_EQ(DeliveredRateHz(five1, 5, 22000.0), 0.0);
}
