// Feeds arbitrary bytes to the label file readers (TextGrid or label text,
// in any encoding), and what they accept on into a document and out again
// as both formats. Each step must accept or refuse with a message: never
// crash, hang or allocate more than the input could need.
#include <cstdint>
#include <string>

#include "document/MessageService.h"
#include "document/labels/LabelTrackFormat.h"
#include "document/labels/LabelTransfer.h"
#include "document/labels/TextDecoding.h"
#include "document/labels/TextGridFormat.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static sonmetra::RecordingMessageService quiet;
    static sonmetra::ScopedMessageService install(&quiet);
    quiet.clear();
    using namespace sonmetra;

    std::string error;
    const auto text = decodeTextFile(std::string(reinterpret_cast<const char*>(data), size), error);
    if (!text) return 0;
    std::optional<LabelFile> file;
    if (isPraatTextFile(*text)) {
        file = parseTextGrid(*text, error);
    } else if (auto tier = parseLabelTrack(*text, "fuzz", error)) {
        file.emplace();
        file->tiers.push_back(std::move(*tier));
    }
    if (!file || file->tiers.empty()) return 0;

    // Two channels of 1 s at 1000 Hz take the first two tiers.
    CKestruneDoc doc;
    for (int i = 0; i < 2; ++i) {
        CChannel& c = doc.channel(i);
        if (!c.m_samples.resize(1000)) return 0;
        c.m_rateHz = 1000.0;
        c.setSampleCountFromBlock();
        c.m_inUse = 1;
    }
    doc.setChannelCount(2);
    doc.setHoldsData(true);
    std::vector<TierAssignment> to = {{0, 0}};
    if (file->tiers.size() > 1) to.push_back({1, 1});
    auto prepared = prepareLabelImport(doc, *file, to, CLabel{}, "fuzz");
    if (!prepared) return 0;
    applyLabelImport(doc, std::move(*prepared));
    for (const auto kind : {TierKind::Interval, TierKind::Point}) {
        std::vector<TierExport> tiers;
        for (int i = 0; i < 2; ++i) tiers.push_back({i, "t", kind});
        if (const auto grid = tiersFromChannels(doc, tiers, LabelFileFormat::TextGrid, error)) {
            // What is written reads back.
            std::string again;
            if (!parseTextGrid(formatTextGrid(*grid), again)) __builtin_trap();
        }
        tiers.resize(1);
        if (const auto track = tiersFromChannels(doc, tiers, LabelFileFormat::LabelTrack, error))
            (void)formatLabelTrack(track->tiers.front());
    }
    return 0;
}
