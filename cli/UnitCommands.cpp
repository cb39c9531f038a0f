#include "cli/UnitCommands.h"

#include <fstream>
#include <iostream>
#include <memory>

#include "cli/CliCommon.h"
#include "document/AppConfig.h"
#include "document/CKestruneDoc.h"
#include "document/MessageService.h"
#include "document/UserException.h"
#include "io/usb/TraceTransport.h"
#include "io/usb/UnitRecording.h"
#include "io/usb/UsbProtocol.h"
#include "io/usb/UsbUnitSettings.h"
#include "res/StringTable.h"

namespace sonmetra::cli {
namespace {

using namespace sonmetra::usb;

// The unit set up for one command: the driver (with its trace) installed,
// the device name chosen; both undone when the command ends.
class UnitSession {
public:
    UnitSession(const CliArgs& args, AppConfig& config) {
        std::string workingFolder;
        UsbUnitSettings settings =
            usbSettingsFromEnvironment(readUsbSettingsFile(settingsFilePath(), UsbUnitSettings{}, &workingFolder));
        if (args.has("unit")) {
            int simulated = 0;
            if (!parseUnitChoice(args.text("unit"), simulated))
                throw UsageError("--unit takes simulated:5, simulated:9, simulated:13, simulated:16 or usb");
            settings.simulatedChannels = simulated;
        }
        // A simulated unit answers at once on the command line.
        settings.simulatedRealTime = false;
        m_configRead = !workingFolder.empty() && config.readFile(workingFolder + "/SonmetraConf.cfg");
        setDriverSetting(config.m_driverSetting);

        m_driver = makeUsbDriver(settings);
        std::shared_ptr<IUsbDriver> used = m_driver;
        if (args.has("trace")) {
            m_trace.open(args.text("trace"), std::ios::out | std::ios::trunc);
            if (!m_trace) {
                showMessage("The trace file '" + args.text("trace") + "' cannot be written.");
                throw CommandFailed();
            }
            used = std::make_shared<TracingDriver>(m_driver, m_trace);
        }
        setUsbDriver(used);
    }
    ~UnitSession() { setUsbDriver(nullptr); }
    UnitSession(const UnitSession&) = delete;
    UnitSession& operator=(const UnitSession&) = delete;

    // Whether the workstation's configuration record was found and taken.
    bool configRead() const { return m_configRead; }

    // Why the unit could not be reached, for a line after the message.
    void explain() const {
        const std::string why = m_driver->lastError();
        std::cerr << "sonmetra-cli: " << m_driver->unitDescription(currentDeviceName()) << " at " << currentDeviceName()
                  << (why.empty() ? std::string() : ": " + why) << '\n';
    }

private:
    std::shared_ptr<IUsbDriver> m_driver;
    std::ofstream m_trace;
    bool m_configRead = false;
};

void requireArguments(const CliArgs& args, std::size_t n, const char* what) {
    if (args.positional.size() != n) throw UsageError(std::string("unit ") + what);
}

int identify(const CliArgs& args, std::ostream& out) {
    requireArguments(args, 1, "identify takes no file");
    AppConfig config;
    UnitSession session(args, config);
    const int size = IdentifyDevice();
    out << size << '\n';
    if (size < 0) {
        session.explain();
        return 1;
    }
    return 0;
}

int record(const CliArgs& args, std::ostream& out) {
    requireArguments(args, 2, "record takes one OUT.kvd");
    const auto ms = args.number("ms");
    if (!ms || !(*ms > 0.0) || *ms > 24.0 * 3600 * 1000) throw UsageError("unit record needs --ms T, 0 < T <= 24 h");
    const int mux = args.integer("mux", 0);
    if (args.has("mux") && (mux < 1 || mux > 3)) throw UsageError("--mux takes 1, 2 or 3");
    const int rate = args.integer("rate", 0);
    if (args.has("rate") && (rate < 1000 || rate > 200000)) throw UsageError("--rate takes 1000 to 200000 Hz");

    AppConfig config;
    UnitSession session(args, config);
    const int size = IdentifyDevice();
    // Without the workstation's record the channel table is the built-in one of this unit's size.
    if (!session.configRead()) config.setBuiltInChannelTable(size);
    config.m_recordTimeMs = static_cast<std::int32_t>(std::max(1.0, *ms));
    if (mux != 0) config.m_multiplexType = mux;
    if (rate != 0) config.m_externalRateHz = rate;
    if (args.has("source")) config.m_inputLine = args.text("source");
    for (std::size_t r = 1; r < config.m_rows.size(); ++r) config.m_rows[r].word |= ChannelRow::kSelected;

    const UnitRecordingPlan plan = PlanUnitRecording(config, size);
    std::vector<std::uint8_t> stream;
    try {
        stream.resize(plan.streamBytes());
    } catch (const std::bad_alloc&) {
        showMessage(IDS_NO_MEMORY);
        throw CommandFailed();
    }
    try {
        RecordFromDevice(stream, kRecordingUnitBytes, plan.unitCount, 16, plan.block.data(), kParameterBlockBytes);
    } catch (const UserException&) {
        session.explain();
        throw;
    }
    CKestruneDoc doc;
    if (!FillDocumentFromUnit(doc, plan, stream)) {
        showMessage(IDS_NO_MEMORY);
        throw CommandFailed();
    }
    doc.setFileTypeIndex(1);
    if (!doc.saveCopyAs(args.positional[1])) throw CommandFailed();
    out << "channel\tname\trate_hz\tsamples\n";
    for (int i = 0; i < doc.channelCount(); ++i) {
        const CChannel& ch = doc.channel(i);
        out << i + 1 << '\t' << ch.m_name << '\t' << formatNumber(ch.m_rateHz) << '\t' << formatNumber(ch.m_sampleCount)
            << '\n';
    }
    if (!plan.timesMatch()) showMessage(IDS_SAMPLING_TIME_MISMATCH);
    return 0;
}

int play(const CliArgs& args) {
    requireArguments(args, 2, "play takes one FILE");
    CKestruneDoc doc;
    openForCli(args.positional[1], args, doc);
    const CChannel& ch = doc.channel(chosenChannel(doc, args));
    AppConfig config;
    UnitSession session(args, config);
    try {
        PlayThroughDevice(SampleBytes(ch.m_samples), 0.0, 2.0 * ch.m_sampleCount, ch.m_rateHz);
    } catch (const UserException&) {
        session.explain();
        throw;
    }
    return 0;
}

}  // namespace

const std::set<std::string>& unitValueOptions() {
    static const std::set<std::string> names = {"unit", "trace", "ms", "mux", "source", "rate"};
    return names;
}

int runUnitCommand(const CliArgs& args, std::ostream& out) {
    const std::string sub = args.positional.empty() ? std::string() : args.positional[0];
    if (sub == "identify") return identify(args, out);
    if (sub == "record") return record(args, out);
    if (sub == "play") return play(args);
    throw UsageError("unit takes identify, record or play");
}

const char* unitUsage() {
    return "       unit identify [--unit simulated:N|usb] [--trace FILE]\n"
           "       unit record OUT.kvd --ms T [--mux 1|2|3] [--source Mic|Line] [--rate HZ] [--unit ...] "
           "[--trace FILE]\n"
           "       unit play FILE [--channel N] [--unit ...] [--trace FILE]";
}

}  // namespace sonmetra::cli
