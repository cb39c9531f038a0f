// The live scope's refresh: how long the unit needs for one snapshot (the
// simulated unit in real time, as a real unit delivers), and the interface
// thread's share of a refresh, splitting the snapshot and drawing nine bands
// of traces in a 1280-pixel-wide window, offscreen.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QImage>
#include <QPainter>

#include "document/AppConfig.h"
#include "document/MessageService.h"
#include "io/usb/ScopeSnapshot.h"
#include "io/usb/SimulatedUsbDriver.h"
#include "io/usb/UnitRecording.h"
#include "io/usb/UsbProtocol.h"
#include "view/scope/ScopePicture.h"

namespace {

using namespace sonmetra;
using namespace sonmetra::usb;

ParameterBlock blockFor(int unitChannels, int type) {
    AppConfig config;
    config.m_multiplexType = type;
    config.m_externalRateHz = 11000;
    return BuildParameterBlock(AcquisitionFromConfig(config, unitChannels));
}

// Args: unit channels, multiplex type.
void BM_SnapshotInRealTime(benchmark::State& state) {
    const int channels = static_cast<int>(state.range(0));
    const int type = static_cast<int>(state.range(1));
    setDriverSetting(0);
    setUsbDriver(std::make_shared<SimulatedUsbDriver>(std::make_shared<UnitFirmware>(channels), true));
    const ParameterBlock block = blockFor(channels, type);
    for (auto _ : state) benchmark::DoNotOptimize(AcquireScopeStream(block).data());
    setUsbDriver(nullptr);
}
BENCHMARK(BM_SnapshotInRealTime)
    ->Args({9, 2})
    ->Args({9, 1})
    ->Args({5, 1})
    ->Args({16, 1})
    ->Iterations(2)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

std::vector<std::uint8_t> snapshotStream(const ParameterBlock& block) {
    setDriverSetting(0);
    setUsbDriver(std::make_shared<SimulatedUsbDriver>(std::make_shared<UnitFirmware>(9), false));
    std::vector<std::uint8_t> stream = AcquireScopeStream(block);
    setUsbDriver(nullptr);
    return stream;
}

void BM_SplitSnapshot(benchmark::State& state) {
    const ParameterBlock block = blockFor(9, 1);
    const std::vector<std::uint8_t> stream = snapshotStream(block);
    ScopeChannels channels;
    for (auto _ : state) {
        SplitScopeStream(stream, block, 9, 1, channels);
        benchmark::DoNotOptimize(channels[0].data());
    }
}
BENCHMARK(BM_SplitSnapshot)->Unit(benchmark::kMicrosecond);

// Nine bands, audio four times a row (11,008 samples), the data channels 2752 or 5504.
void BM_DrawNineBands(benchmark::State& state) {
    const ParameterBlock block = blockFor(9, 1);
    ScopeChannels channels;
    SplitScopeStream(snapshotStream(block), block, 9, 1, channels);
    ScopePicture picture;
    picture.shownChannels = {0, 1, 2, 3, 4, 5, 6, 7, 8};
    picture.samples = &channels;
    picture.dataReady = true;
    const QSize size(1280, scopeScrollHeight(picture.shownChannels.size()));
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    for (auto _ : state) {
        image.fill(Qt::white);
        QPainter painter(&image);
        benchmark::DoNotOptimize(drawScope(painter, size, picture).data());
    }
}
BENCHMARK(BM_DrawNineBands)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    sonmetra::RecordingMessageService quiet;
    sonmetra::ScopedMessageService scope(&quiet);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
