// The libusb transport end to end without hardware: umockdev emulates a
// USB device with the unit's descriptors (one interface, bulk IN 0x82 and
// bulk OUT 0x02), and answers libusb's usbdevfs requests from the simulated
// unit's firmware model. So the protocol runs over the real libusb code
// path: enumeration, open, claim, vendor control transfers, bulk URBs,
// time-outs that discard URBs. Runs under umockdev-wrapper.
#include <glib.h>
#include <gtest/gtest.h>
#include <linux/ioctl.h>
#include <linux/usbdevice_fs.h>
#include <umockdev.h>

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <deque>
#include <filesystem>
#include <fstream>
#include <map>
#include <mutex>
#include <sstream>

#include "document/AppConfig.h"
#include "document/CKestruneDoc.h"
#include "document/MessageService.h"
#include "document/UserException.h"
#include "io/usb/LibusbDriver.h"
#include "io/usb/TraceTransport.h"
#include "io/usb/UnitFirmware.h"
#include "io/usb/UnitRecording.h"
#include "io/usb/UsbProtocol.h"

using namespace sonmetra;
using namespace sonmetra::usb;

namespace {

constexpr UsbId kUnitId{0x1209, 0x5a01};
constexpr char kDeviceNode[] = "/dev/bus/usb/001/002";

std::string hex(const std::vector<std::uint8_t>& bytes) {
    std::string s;
    char b[4];
    for (const std::uint8_t v : bytes) {
        std::snprintf(b, sizeof b, "%02x", v);
        s += b;
    }
    return s;
}

// The device, configuration, interface and endpoint descriptors of the unit.
std::vector<std::uint8_t> unitDescriptors(UsbId id) {
    return {0x12,
            0x01,
            0x00,
            0x02,
            0x00,
            0x00,
            0x00,
            0x40,  // USB 2.0, 64-byte control pipe
            static_cast<std::uint8_t>(id.vendor & 0xFF),
            static_cast<std::uint8_t>(id.vendor >> 8),
            static_cast<std::uint8_t>(id.product & 0xFF),
            static_cast<std::uint8_t>(id.product >> 8),
            0x00,
            0x01,
            0x00,
            0x00,
            0x00,
            0x01,
            0x09,
            0x02,
            0x20,
            0x00,
            0x01,
            0x01,
            0x00,
            0x80,
            0x32,  // one interface, 32 bytes in all
            0x09,
            0x04,
            0x00,
            0x00,
            0x02,
            0xFF,
            0x00,
            0x00,
            0x00,  // vendor class, two endpoints
            0x07,
            0x05,
            0x82,
            0x02,
            0x00,
            0x02,
            0x00,  // bulk IN 0x82, 512 bytes
            0x07,
            0x05,
            0x02,
            0x02,
            0x00,
            0x02,
            0x00};  // bulk OUT 0x02
}

// The emulated device: usbdevfs requests answered from the firmware model.
// URBs the unit answers wait in `m_done` until libusb reaps them; URBs it
// does not answer stay in `m_silent` until libusb discards them on time-out.
class EmulatedUnit {
public:
    explicit EmulatedUnit(std::shared_ptr<UnitFirmware> firmware) : m_firmware(std::move(firmware)) {
        m_testbed = umockdev_testbed_new();
        m_handler = umockdev_ioctl_base_new();
        g_signal_connect(m_handler, "handle-ioctl", G_CALLBACK(&EmulatedUnit::onIoctl), this);
        // The handler goes on the node before the device appears, so that libusb's first open is answered.
        GError* error = nullptr;
        m_attached = umockdev_testbed_attach_ioctl(m_testbed, kDeviceNode, m_handler, &error);
        if (error) g_error_free(error);
        const std::string description = std::string("P: /devices/usb1/1-1\nN: bus/usb/001/002\n") +
                                        "E: SUBSYSTEM=usb\nE: DEVTYPE=usb_device\nE: DRIVER=usb\n" +
                                        "E: BUSNUM=001\nE: DEVNUM=002\nE: DEVNAME=" + kDeviceNode + "\n" +
                                        "A: busnum=1\\n\nA: devnum=2\\n\nA: bConfigurationValue=1\\n\n" +
                                        "A: speed=480\\n\nH: descriptors=" + hex(unitDescriptors(kUnitId)) + "\n";
        m_added = umockdev_testbed_add_from_string(m_testbed, description.c_str(), nullptr);
    }
    ~EmulatedUnit() {
        {
            std::lock_guard lock(m_mutex);
            for (auto* d : m_done) g_object_unref(d);
            for (auto* d : m_silent) g_object_unref(d);
        }
        g_object_unref(m_handler);
        g_object_unref(m_testbed);
    }
    bool ready() const { return m_attached && m_added; }

private:
    static gboolean onIoctl(UMockdevIoctlBase*, UMockdevIoctlClient* client, gpointer self) {
        return static_cast<EmulatedUnit*>(self)->handle(client);
    }

    gboolean handle(UMockdevIoctlClient* client) {
        const gulong request = umockdev_ioctl_client_get_request(client);
        UMockdevIoctlData* arg = umockdev_ioctl_client_get_arg(client);
        switch (request) {
            case USBDEVFS_GET_CAPABILITIES: {
                UMockdevIoctlData* d = umockdev_ioctl_data_resolve(arg, 0, sizeof(guint32), nullptr);
                *reinterpret_cast<guint32*>(d->data) = USBDEVFS_CAP_BULK_CONTINUATION |
                                                       USBDEVFS_CAP_NO_PACKET_SIZE_LIM |
                                                       USBDEVFS_CAP_REAP_AFTER_DISCONNECT;
                umockdev_ioctl_client_complete(client, 0, 0);
                g_object_unref(d);
                return TRUE;
            }
            case USBDEVFS_CLAIMINTERFACE:
            case USBDEVFS_RELEASEINTERFACE:
            case USBDEVFS_CLEAR_HALT:
            case USBDEVFS_RESETEP:
            case USBDEVFS_DISCONNECT_CLAIM:
                umockdev_ioctl_client_complete(client, 0, 0);
                return TRUE;
            case USBDEVFS_GETDRIVER:
            case USBDEVFS_IOCTL:
                umockdev_ioctl_client_complete(client, -1, ENODATA);  // no kernel driver holds the unit
                return TRUE;
            case USBDEVFS_SUBMITURB:
                submit(client, arg);
                return TRUE;
            case USBDEVFS_REAPURB:
            case USBDEVFS_REAPURBNDELAY:
                reap(client, arg);
                return TRUE;
            case USBDEVFS_DISCARDURB:
                discard(client, arg);
                return TRUE;
            default:
                return FALSE;
        }
    }

    void submit(UMockdevIoctlClient* client, UMockdevIoctlData* arg) {
        UMockdevIoctlData* urbData = umockdev_ioctl_data_resolve(arg, 0, sizeof(usbdevfs_urb), nullptr);
        auto* urb = reinterpret_cast<usbdevfs_urb*>(urbData->data);
        UMockdevIoctlData* buffer = umockdev_ioctl_data_resolve(urbData, offsetof(usbdevfs_urb, buffer),
                                                                static_cast<gsize>(urb->buffer_length), nullptr);
        auto* bytes = buffer->data;
        urb->status = 0;
        urb->actual_length = 0;
        bool answered = true;
        if (urb->type == USBDEVFS_URB_TYPE_CONTROL) {
            // The 8-byte setup packet stands in front of the data.
            const bool toHost = (bytes[0] & 0x80) != 0;
            const auto value = static_cast<std::uint16_t>(bytes[2] | (bytes[3] << 8));
            const auto index = static_cast<std::uint16_t>(bytes[4] | (bytes[5] << 8));
            const auto length = static_cast<std::size_t>(bytes[6] | (bytes[7] << 8));
            const long n = (bytes[0] & 0x60) == 0x40
                               ? m_firmware->controlRequest(toHost, bytes[1], value, index, bytes + 8, length)
                               : -1;  // the unit knows vendor requests only
            if (n < 0)
                urb->status = -EPIPE;
            else
                urb->actual_length = static_cast<int>(n);
        } else {
            const auto length = static_cast<std::size_t>(urb->buffer_length);
            const BulkResult r =
                (urb->endpoint & 0x80) ? m_firmware->bulkIn(bytes, length) : m_firmware->bulkOut(bytes, length);
            urb->actual_length = static_cast<int>(r.bytes);
            if (r.end == BulkEnd::Stall) urb->status = -EPIPE;
            answered = r.end != BulkEnd::NoAnswer;
        }
        {
            std::lock_guard lock(m_mutex);
            if (answered)
                m_done.push_back(urbData);
            else
                m_silent.push_back(urbData);
        }
        g_object_unref(buffer);
        umockdev_ioctl_client_complete(client, 0, 0);
    }

    void reap(UMockdevIoctlClient* client, UMockdevIoctlData* arg) {
        UMockdevIoctlData* urbData = nullptr;
        {
            std::lock_guard lock(m_mutex);
            if (!m_done.empty()) {
                urbData = m_done.front();
                m_done.pop_front();
            }
        }
        if (urbData == nullptr) {
            umockdev_ioctl_client_complete(client, -1, EAGAIN);
            return;
        }
        UMockdevIoctlData* pointer = umockdev_ioctl_data_resolve(arg, 0, sizeof(gpointer), nullptr);
        umockdev_ioctl_data_set_ptr(pointer, 0, urbData);
        umockdev_ioctl_client_complete(client, 0, 0);
        g_object_unref(pointer);
        g_object_unref(urbData);
    }

    // The argument of DISCARDURB is the URB's address in the client.
    void discard(UMockdevIoctlClient* client, UMockdevIoctlData* arg) {
        const gulong address = *reinterpret_cast<gulong*>(arg->data);
        std::lock_guard lock(m_mutex);
        for (auto it = m_silent.begin(); it != m_silent.end(); ++it) {
            if ((*it)->client_addr != address) continue;
            reinterpret_cast<usbdevfs_urb*>((*it)->data)->status = -ENOENT;
            m_done.push_back(*it);
            m_silent.erase(it);
            umockdev_ioctl_client_complete(client, 0, 0);
            return;
        }
        umockdev_ioctl_client_complete(client, -1, EINVAL);
    }

    std::shared_ptr<UnitFirmware> m_firmware;
    UMockdevTestbed* m_testbed = nullptr;
    UMockdevIoctlBase* m_handler = nullptr;
    bool m_attached = false;
    bool m_added = false;
    std::mutex m_mutex;  // the handler thread and the test's teardown
    std::deque<UMockdevIoctlData*> m_done;
    std::vector<UMockdevIoctlData*> m_silent;
};

class UsbOverUmockdev : public ::testing::Test {
protected:
    void SetUp() override {
        m_unit = std::make_unique<EmulatedUnit>(m_firmware);
        ASSERT_TRUE(umockdev_in_mock_environment()) << "run this test under umockdev-wrapper";
        ASSERT_TRUE(m_unit->ready());
        setDriverSetting(0);
        m_libusb = std::make_shared<LibusbDriver>(std::map<std::string, UsbId>{{"Rvm-0", kUnitId}}, 300);
        setUsbDriver(std::make_shared<TracingDriver>(m_libusb, m_trace));
    }
    void TearDown() override {
        setUsbDriver(nullptr);
        m_libusb.reset();
        m_unit.reset();
    }
    std::vector<std::string> traceLines() const {
        std::vector<std::string> lines;
        std::istringstream in(m_trace.str());
        for (std::string line; std::getline(in, line);) lines.push_back(line);
        return lines;
    }

    std::shared_ptr<UnitFirmware> m_firmware = std::make_shared<UnitFirmware>(9);
    std::unique_ptr<EmulatedUnit> m_unit;
    std::shared_ptr<LibusbDriver> m_libusb;
    std::ostringstream m_trace;
    RecordingMessageService m_messages;
    ScopedMessageService m_scope{&m_messages};
};

}  // namespace

TEST_F(UsbOverUmockdev, IdentifyFindsTheUnitByItsIdAndAsksItsSize) {
    EXPECT_EQ(IdentifyDevice(), 9);
    EXPECT_EQ(traceLines(), std::vector<std::string>{"control in request=0xB7 value=0 index=64 length=64"});
    EXPECT_EQ(m_firmware->requestLog(), std::vector<std::uint8_t>{0xB7});
    m_firmware->setIdentifyByte(0xC3);
    EXPECT_EQ(IdentifyDevice(), 5);
    EXPECT_TRUE(m_messages.texts().empty()) << m_libusb->lastError();
}

TEST_F(UsbOverUmockdev, ARecordingArrivesWholeAndSplitsIntoItsChannels) {
    AppConfig config;
    config.m_multiplexType = 2;
    config.m_recordTimeMs = 24000;  // 24 units: two chunks of just under 2 MiB and the rest
    for (int r = 1; r <= 8; ++r) config.m_rows[static_cast<std::size_t>(r)].word = ChannelRow::kSelected;
    const UnitRecordingPlan plan = PlanUnitRecording(config, 9);
    ASSERT_EQ(plan.unitCount, 24u);
    std::vector<std::uint8_t> stream(plan.streamBytes());
    EXPECT_EQ(RecordFromDevice(stream, kRecordingUnitBytes, plan.unitCount, 16, plan.block.data(), 320), 1);
    EXPECT_EQ(traceLines().size(), 6u);
    EXPECT_EQ(traceLines()[2], "bulk in pipe=8 length=1921024");
    EXPECT_EQ(traceLines()[3], "bulk in pipe=8 length=1921024");
    EXPECT_EQ(traceLines()[4], "bulk in pipe=8 length=385024");
    EXPECT_EQ(m_firmware->requestLog(), (std::vector<std::uint8_t>{0xB1, 0xB2, 0xB4}));
    EXPECT_EQ(m_firmware->parameterBlock(), plan.block);

    CKestruneDoc doc;
    ASSERT_TRUE(FillDocumentFromUnit(doc, plan, stream));
    ASSERT_EQ(doc.channelCount(), 9);
    for (int input = 0; input < 9; ++input) {
        const CChannel& ch = doc.channel(input);
        EXPECT_DOUBLE_EQ(ch.m_durationMs, 24000.0) << input;
        const double rate = m_firmware->inputRateHz(input);
        int wrong = 0;
        for (std::size_t k = 0; k < ch.m_samples.size(); ++k)
            wrong += ch.m_samples[k] != UnitFirmware::InputSample(input, k, rate) ? 1 : 0;
        EXPECT_EQ(wrong, 0) << input;
    }
    EXPECT_TRUE(m_messages.texts().empty()) << m_libusb->lastError();
}

TEST_F(UsbOverUmockdev, PlaybackReachesTheUnitConvertedAndInOrder) {
    std::vector<std::int16_t> samples(3 * 22016 + 1024);
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = static_cast<std::int16_t>(static_cast<int>(i * 7919 % 65536) - 32768);
    SampleBlock block;
    ASSERT_TRUE(block.resize(samples.size()));
    std::copy(samples.begin(), samples.end(), block.begin());
    PlayThroughDevice(SampleBytes(block), 0.0, 2.0 * samples.size(), 22050.0);
    EXPECT_EQ(m_firmware->playClockValue(), 166);
    const auto played = m_firmware->playedSamples();
    ASSERT_EQ(played.size(), samples.size());  // a tail of 2048 bytes: a multiple of 64
    EXPECT_TRUE(std::equal(played.begin(), played.end(), samples.begin()));
    EXPECT_EQ(m_firmware->requestLog(), (std::vector<std::uint8_t>{0xB3, 0xB4}));
    EXPECT_TRUE(m_messages.texts().empty()) << m_libusb->lastError();
}

TEST_F(UsbOverUmockdev, AUnitThatStopsSendingIsReportedAndStopped) {
    m_firmware->endStreamAfter(100000, BulkEnd::NoAnswer);
    ParameterBlock block = BuildParameterBlock(AcquisitionSettings{});
    std::vector<std::uint8_t> data(4 * kRecordingUnitBytes);
    EXPECT_THROW(RecordFromDevice(data, kRecordingUnitBytes, 4, 16, block.data(), 320), UserException);
    EXPECT_EQ(m_messages.texts(), std::vector<std::string>{"Error in reading the incoming data."});
    EXPECT_EQ(m_firmware->requestLog().back(), kRequestStop);
    EXPECT_FALSE(m_firmware->streaming());
    EXPECT_NE(m_libusb->lastError().find("LIBUSB_ERROR_TIMEOUT"), std::string::npos) << m_libusb->lastError();
    EXPECT_NE(m_libusb->lastError().find("after 100000 of"), std::string::npos) << m_libusb->lastError();
}

TEST_F(UsbOverUmockdev, ARefusedRequestAndAnUnknownIdAreReported) {
    m_firmware->refuseRequest(kRequestSetup);
    ParameterBlock block = BuildParameterBlock(AcquisitionSettings{});
    std::vector<std::uint8_t> data(kRecordingUnitBytes);
    EXPECT_THROW(RecordFromDevice(data, kRecordingUnitBytes, 1, 16, block.data(), 320), UserException);
    EXPECT_EQ(m_firmware->requestLog(), (std::vector<std::uint8_t>{0xB1, 0xB4}));
    EXPECT_NE(m_libusb->lastError().find("LIBUSB_ERROR_PIPE"), std::string::npos) << m_libusb->lastError();

    // The other device name has an id no device answers to.
    setDriverSetting(1);
    EXPECT_EQ(IdentifyDevice(), -1);
    EXPECT_THROW(RecordFromDevice(data, kRecordingUnitBytes, 1, 16, block.data(), 320), UserException);
    EXPECT_EQ(m_messages.texts(),
              (std::vector<std::string>{"Request send command failed.",
                                        "Error in opening the requested USB device.\nPlease unplug the device, wait "
                                        "a few seconds and replug the device."}));
    EXPECT_EQ(m_libusb->lastError(), "no USB id is set for \\\\.\\Ezusb-0");
}

#ifdef SONMETRA_CLI
// sonmetra-cli run as a child process finds the emulated unit through the
// same settings the workstation writes.
TEST_F(UsbOverUmockdev, TheCommandLineToolTalksToTheUnit) {
#if defined(__SANITIZE_THREAD__)
    // A ThreadSanitizer program started afresh under umockdev's preloaded
    // library crashes before main (any command, even `info`); the plain and
    // AddressSanitizer builds run this test.
    GTEST_SKIP() << "sonmetra-cli built with ThreadSanitizer cannot start under umockdev";
#endif
    const auto dir = std::filesystem::temp_directory_path() / ("sonmetra-umockdev-" + std::to_string(::getpid()));
    std::filesystem::create_directories(dir / "Melvarco");
    std::ofstream(dir / "Melvarco" / "Sonmetra.conf")
        << "[UsbUnit]\nRvm-0=" << formatUsbId(kUnitId) << "\nSimulated=0\nIdleTimeoutMs=500\n";
    const std::string trace = (dir / "trace.txt").string();
    const std::string command =
        "XDG_CONFIG_HOME=" + dir.string() + " " + SONMETRA_CLI + " unit identify --trace " + trace + " 2>&1";
    std::string output;
    if (FILE* p = popen(command.c_str(), "r")) {
        char buf[256];
        while (std::fgets(buf, sizeof buf, p)) output += buf;
        EXPECT_EQ(pclose(p), 0) << output;
    }
    EXPECT_EQ(output, "9\n");
    std::ifstream in(trace);
    std::string line;
    std::getline(in, line);
    EXPECT_EQ(line, "control in request=0xB7 value=0 index=64 length=64");
    std::filesystem::remove_all(dir);
}
#endif
