#include "cli/LabelCommands.h"

#include <iostream>

#include "cli/CliCommon.h"
#include "cli/CorpusRun.h"
#include "document/MessageService.h"
#include "document/labels/LabelTransfer.h"

namespace sonmetra::cli {
namespace {

std::optional<TierKind> kindOption(const CliArgs& args) {
    if (!args.has("kind")) return std::nullopt;
    const std::string kind = args.text("kind");
    if (kind == "interval") return TierKind::Interval;
    if (kind == "point") return TierKind::Point;
    throw UsageError("--kind takes interval or point");
}

// The tiers to write: the chosen channel alone, or every channel with
// labels (a label text takes the audio channel's, else the first ones).
std::vector<TierExport> tiersToWrite(const CKestruneDoc& doc, const CliArgs& args, LabelFileFormat format) {
    std::vector<TierExport> tiers;
    if (args.has("channel")) {
        const int ch = chosenChannel(doc, args);
        tiers.push_back(TierExport{ch, defaultTierName(doc, ch), suggestedTierKind(doc.channel(ch))});
    } else {
        tiers = defaultTierExports(doc);
        if (format == LabelFileFormat::LabelTrack && tiers.size() > 1) {
            const int audio = doc.audioChannelIndex();
            std::erase_if(tiers, [&](const TierExport& t) { return t.channel != audio; });
            if (tiers.empty()) tiers = {defaultTierExports(doc).front()};
        }
    }
    if (args.has("tier")) {
        if (tiers.size() != 1) throw UsageError("--tier names the one tier written; choose its --channel");
        tiers.front().name = args.text("tier");
    }
    if (const auto kind = kindOption(args))
        for (TierExport& t : tiers) t.kind = *kind;
    return tiers;
}

int exportOne(const CliArgs& args) {
    if (args.positional.size() != 3) throw UsageError("labels export takes DOC and OUT (or DOC... --out-dir DIR)");
    const std::string& out = args.positional[2];
    const auto format = labelFileFormatFor(out);
    if (!format) throw UsageError("labels export writes OUT.TextGrid or OUT.txt");
    CKestruneDoc doc;
    openForCli(args.positional[1], args, doc);
    if (!exportLabelFile(doc, tiersToWrite(doc, args, *format), *format, out)) throw CommandFailed();
    return 0;
}

int exportCorpus(const CliArgs& args) {
    const std::string format = args.text("format", "TextGrid");
    if (format != "TextGrid" && format != "txt") throw UsageError("--format takes TextGrid or txt");
    CorpusCommand command;
    command.leading = {"export"};
    command.resultSuffix = "." + format;
    command.resultIsArgument = true;
    command.run = [](const CliArgs& one, std::ostream&) { return exportOne(one); };
    return runCorpus(args, command);
}

int importOne(const CliArgs& args) {
    if (args.positional.size() != 3) throw UsageError("labels import takes DOC and IN");
    const std::string out = args.text("o");
    if (out.size() < 4 || out.compare(out.size() - 4, 4, ".kvd") != 0)
        throw UsageError("labels import needs -o OUT.kvd");
    const std::string& in = args.positional[2];
    CKestruneDoc doc;
    openForCli(args.positional[1], args, doc);
    const int channel = chosenChannel(doc, args);
    const auto file = readLabelFile(in);
    if (!file) throw CommandFailed();
    std::size_t tier = 0;
    if (args.has("tier")) {
        const std::string name = args.text("tier");
        std::string names;
        for (tier = 0; tier < file->tiers.size() && file->tiers[tier].name != name; ++tier)
            names += std::string(names.empty() ? "" : ", ") + "\"" + file->tiers[tier].name + "\"";
        if (tier == file->tiers.size()) {
            showMessage("'" + in + "' holds no tier named \"" + name + "\"" +
                            (names.empty() ? std::string(".") : " (its tiers: " + names + ")."),
                        MsgButtons::Ok, MsgIcon::Error);
            throw CommandFailed();
        }
    } else if (file->tiers.empty()) {
        showMessage("'" + in + "' holds no tiers.", MsgButtons::Ok, MsgIcon::Error);
        throw CommandFailed();
    }
    CLabel style;
    style.setLineFlag(true);
    auto prepared = prepareLabelImport(doc, *file, {TierAssignment{tier, channel}}, style, in);
    if (!prepared) throw CommandFailed();
    applyLabelImport(doc, std::move(*prepared));
    doc.setFileTypeIndex(1);
    if (!doc.writeFile(out, false)) throw CommandFailed();
    return 0;
}

}  // namespace

const std::set<std::string>& labelsValueOptions() {
    static const std::set<std::string> names = {"tier", "kind", "format", "o", "out-dir"};
    return names;
}

int runLabelsCommand(const CliArgs& args) {
    const std::string what = args.positional.empty() ? std::string() : args.positional[0];
    if (what == "export") return isCorpusRun(args) ? exportCorpus(args) : exportOne(args);
    if (what == "import") {
        if (isCorpusRun(args)) throw UsageError("labels import reads one document");
        return importOne(args);
    }
    throw UsageError("labels takes export or import");
}

const char* labelsUsage() {
    return "       labels export DOC OUT.TextGrid|OUT.txt [--channel N] [--tier NAME] [--kind interval|point]\n"
           "       labels import DOC IN.TextGrid|IN.txt -o OUT.kvd [--tier NAME] [--channel N]\n"
           "       corpus runs: pitch|spectrum|lpc|spectrogram|intensity FILE... --out-dir DIR [--png .png]\n"
           "                    labels export DOC... --out-dir DIR [--format TextGrid|txt]";
}

}  // namespace sonmetra::cli
