#include "CliCommon.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "document/DocumentOpener.h"

namespace sonmetra::cli {
namespace {

// Answers the reader's two questions from the command line.
class CliImportDialogs : public IImportDialogs {
public:
    explicit CliImportDialogs(const CliArgs& args) : m_args(args) {}

    int chooseChannel(int channelCount) override {
        const int n = m_args.integer("wav-channel", 1);
        if (n < 1 || n > channelCount) return -1;  // a channel the file lacks counts as Cancel
        return n - 1;
    }

    bool genericFileSelection(GenericFileSettings& s) override {
        const bool any =
            m_args.has("raw-header") || m_args.has("raw-rate") || m_args.has("raw-bits") || m_args.has("raw-order");
        if (!any) return false;
        s = GenericFileSettings{};
        s.headerBytes = m_args.integer("raw-header", 0);
        s.rateHz = m_args.number("raw-rate", 10000.0);
        s.bits = m_args.integer("raw-bits", 16);
        const std::string order = m_args.text("raw-order", "low");
        if (s.headerBytes < 0) throw UsageError("--raw-header must not be negative");
        if (!(s.rateHz > 0.0)) throw UsageError("--raw-rate must be above 0");
        if (s.bits != 8 && s.bits != 16) throw UsageError("--raw-bits takes 8 or 16");
        if (order != "low" && order != "high") throw UsageError("--raw-order takes low or high");
        s.lowByteFirst = order == "low";
        return true;
    }

private:
    const CliArgs& m_args;
};

}  // namespace

std::string formatNumber(double v) {
    char buf[64];
    const auto [end, ec] = std::to_chars(buf, buf + sizeof buf, v);
    return ec == std::errc() ? std::string(buf, end) : std::string("nan");
}

void writeNumber(std::ostream& out, double v) { out << formatNumber(v); }

int chosenChannel(const CKestruneDoc& doc, const CliArgs& args) {
    if (args.has("channel")) {
        const int n = args.integer("channel", 1);
        if (n < 1 || n > doc.channelCount())
            throw UsageError("--channel " + std::to_string(n) + ": the file has " + std::to_string(doc.channelCount()) +
                             " channel(s)");
        return n - 1;
    }
    const int audio = doc.audioChannelIndex();
    return audio >= 0 ? audio : 0;
}

double msToSample(const CChannel& ch, double ms) {
    if (!(ch.m_durationMs > 0.0)) return 0.0;
    return std::clamp(std::trunc(ms * ch.m_sampleCount / ch.m_durationMs), 0.0, ch.m_sampleCount);
}

bool applySelectionOptions(CKestruneDoc& doc, const CliArgs& args) {
    const bool from = args.has("from-ms"), to = args.has("to-ms");
    if (!from && !to) return false;
    if (from != to) throw UsageError("--from-ms and --to-ms go together");
    const double a = *args.number("from-ms"), b = *args.number("to-ms");
    if (a < 0.0 || b < a) throw UsageError("--from-ms must be >= 0 and <= --to-ms");
    for (int i = 0; i < doc.channelCount(); ++i) {
        CChannel& c = doc.channel(i);
        c.m_selStartMs = std::min(a, c.m_durationMs);
        c.m_selEndMs = std::min(b, c.m_durationMs);
        c.m_selStartSample = msToSample(c, c.m_selStartMs);
        c.m_selEndSample = msToSample(c, c.m_selEndMs);
    }
    doc.setSelectionFlag(true);
    return true;
}

void openForCli(const std::string& path, const CliArgs& args, CKestruneDoc& doc) {
    CliImportDialogs dialogs(args);
    if (!openDocument(doc, path, dialogs, nullptr)) throw CommandFailed();
}

}  // namespace sonmetra::cli
