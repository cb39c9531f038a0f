#include "UnitRecordPlay.h"

#include <QString>
#include <vector>

#include "UnitTransferRunner.h"
#include "UsbUnitSetup.h"
#include "document/AppConfig.h"
#include "document/CKestruneDoc.h"
#include "document/MessageService.h"
#include "io/usb/UnitRecording.h"
#include "io/usb/UsbProtocol.h"
#include "res/StringTable.h"

using namespace sonmetra;

bool recordFromUnit(QWidget* parent, CKestruneDoc& doc, const AppConfig& config) {
    takeDriverSetting(&config);
    usb::UnitRecordingPlan plan;
    std::vector<std::uint8_t> stream;
    bool acquiring = false;  // set by the worker before the acquisition starts
    const QString what = QStringLiteral("Recording from %1").arg(unitStatusText());
    const UnitTransferOutcome outcome = runUnitTransfer(parent, what, config.m_recordTimeMs, [&] {
        const int size = usb::IdentifyDevice();
        plan = usb::PlanUnitRecording(config, size);
        stream.resize(plan.streamBytes());
        acquiring = true;
        usb::RecordFromDevice(stream, usb::kRecordingUnitBytes, plan.unitCount, 16, plan.block.data(),
                              usb::kParameterBlockBytes);
    });
    if (!outcome.completed) {
        if (acquiring) showMessage(IDS_SAMPLE_ROUTINE_FAILED);
        return false;
    }
    if (!usb::FillDocumentFromUnit(doc, plan, stream)) {
        showMessage(IDS_NO_MEMORY);
        return false;
    }
    if (!plan.timesMatch()) showMessage(IDS_SAMPLING_TIME_MISMATCH);
    return true;
}

void playThroughUnit(QWidget* parent, const CChannel& channel, double firstSample, double count,
                     const AppConfig& config) {
    takeDriverSetting(&config);
    const QString what = QStringLiteral("Playing through %1").arg(unitStatusText());
    const double ms = channel.m_rateHz > 0.0 ? count * 1000.0 / channel.m_rateHz : 0.0;
    runUnitTransfer(parent, what, ms, [&] {
        usb::PlayThroughDevice(usb::SampleBytes(channel.m_samples), 2.0 * firstSample, 2.0 * count, channel.m_rateHz);
    });
}
