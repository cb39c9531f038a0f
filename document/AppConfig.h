// The application's acquisition, display and analysis settings and their
// configuration record "SonmetraConf.cfg" (layout in ConfigLayout.h).
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "ConfigLayout.h"
#include "analysis/AnalysisSettings.h"

namespace sonmetra {

// One row of the channel settings table. Row 0 is the audio channel, row i
// the unit's input i.
struct ChannelRow {
    static constexpr std::int32_t kSelected = 1;  // bit of the channel word: record this input
    std::int32_t word = 0;
    std::int32_t rateHz = 0;
    std::int32_t bandwidthHz = 0;
    std::int32_t gain = 0;
    bool selected() const { return (word & kSelected) != 0; }
};

// Per-channel intensity and smoothing settings, one slot per channel of a
// document. Smoothing is on for every slot but the first, the audio
// channel's: a moving average takes the highs out of speech, while the
// slow data channels (airflow, pressure) are what it is for.
struct ChannelAnalysisSettings {
    double intensityWindowMs = 20.0;
    double intensityStepMs = 10.0;
    std::int32_t normalise = 0;
    std::int32_t smoothingOn = 1;
    double smoothingLength = 5.0;
};

class AppConfig {
public:
    using Record = std::array<std::uint8_t, cfg::kRecordSize>;

    AppConfig();

    // The built-in channel table: as many rows as the unit has channels are
    // zeroed; with 9 channels rows 1-6 get 11000 Hz / 4000 Hz / gain 1 and
    // rows 7-8 5500 Hz / 2000 Hz / gain 1.
    void setBuiltInChannelTable(int unitChannels = 9);

    // Reads a record file with every range check. False (settings
    // untouched) when the file is missing, short or of another version.
    bool readFile(const std::string& path);
    // Writes the whole record; false when the file cannot be written.
    bool writeFile(const std::string& path) const;
    // Takes the settings of a 2224-byte record; false for another version.
    bool fromRecord(const Record& record);
    Record toRecord() const;

    // A document at a new audio rate was opened: the rate comes into force,
    // the rate-derived values are recomputed, and the record is written to
    // the file it was read from (when there is one).
    void takeAudioRate(double rateHz);
    double audioRateHz() const { return m_audioRateHz; }
    // Rate-derived values of the record.
    static std::int32_t analysisFrameMs(double rateHz);
    static std::int32_t rateRoundedHz(double rateHz);
    static std::int32_t displayFrequencyRangeHz(double rateHz);
    static std::int32_t analysisOrder(double rateHz);

    // The file that takeAudioRate() rewrites.
    void setFilePath(const std::string& path) { m_filePath = path; }
    const std::string& filePath() const { return m_filePath; }

    // The external unit: which device name opens it (non-zero "Ezusb-0",
    // 0 "Rvm-0") and the multiplex type 1..3 of its recordings.
    std::int32_t m_driverSetting = 0;
    std::int32_t m_multiplexType = 2;
    std::string m_inputLine = "Mic";
    std::string m_source = "Computer";
    std::array<ChannelRow, cfg::kRows> m_rows{};

    std::int32_t m_recordTimeMs = 5000;
    std::int32_t m_lineRateHz = 11025;
    std::int32_t m_externalRateHz = 11000;
    double m_zoomRangeMs = 100.0;
    std::int32_t m_timeGridOn = 1;
    double m_timeGridStepMs = 0.0;
    std::int32_t m_trackMouse = 1;
    PrintSize m_print;
    std::int32_t m_logFrameStepHz = 100;
    AnalysisSettings m_analysis;
    std::array<ChannelAnalysisSettings, cfg::kChannelSettingsSlots> m_channelSettings{};

private:
    double m_audioRateHz = 11000.0;
    std::string m_filePath;
    Record m_raw{};  // bytes no setting uses are kept as read
};

}  // namespace sonmetra
