#include "LabelTransfer.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "LabelTrackFormat.h"
#include "TextDecoding.h"
#include "TextGridFormat.h"
#include "document/AtomicFileWriter.h"
#include "document/MessageService.h"

namespace sonmetra {
namespace {

// Larger files are not label files; refusing them keeps a wrong choice
// from filling the memory.
constexpr std::uintmax_t kMaxLabelFileBytes = 256u << 20;

std::string fileNameOf(const std::string& path) { return std::filesystem::path(path).filename().string(); }

std::string channelName(const CKestruneDoc& doc, int channel) {
    const std::string& name = doc.channel(channel).m_name;
    return "channel " + std::to_string(channel + 1) + (name.empty() ? std::string() : " \"" + name + "\"");
}

std::string msText(double ms) { return praatNumber(ms) + " ms"; }

// The first 40 bytes of a text for a message, not cutting a character in two.
std::string beginning(const std::string& text) {
    if (text.size() <= 40) return text;
    std::size_t cut = 40;
    while (cut > 0 && (static_cast<unsigned char>(text[cut]) & 0xc0) == 0x80) --cut;
    return text.substr(0, cut) + "...";
}

std::optional<std::string> readWholeFile(const std::string& path) {
    std::error_code ec;
    const auto size = std::filesystem::file_size(path, ec);
    if (!ec && size > kMaxLabelFileBytes) {
        showMessage("'" + path + "' is too large to be a label file.", MsgButtons::Ok, MsgIcon::Error);
        return std::nullopt;
    }
    std::FILE* f = std::fopen(path.c_str(), "rb");
    if (!f) {
        showMessage("Cannot open the file '" + path + "':\n" + std::strerror(errno), MsgButtons::Ok, MsgIcon::Error);
        return std::nullopt;
    }
    std::string bytes;
    char buf[1 << 16];
    std::size_t n;
    while ((n = std::fread(buf, 1, sizeof buf, f)) > 0) bytes.append(buf, n);
    const bool failed = std::ferror(f) != 0;
    std::fclose(f);
    if (failed) {
        showMessage("Cannot read the file '" + path + "'.", MsgButtons::Ok, MsgIcon::Error);
        return std::nullopt;
    }
    return bytes;
}

// The labels one tier becomes in channel `ch`.
bool labelsFromTier(const LabelTier& tier, const CChannel& ch, const CLabel& style, std::vector<CLabel>& out,
                    std::string& error) {
    const double durationMs = ch.m_durationMs;
    const double slackMs = std::max(ch.msPerSample(), 1e-6);
    const std::string tierName = "tier \"" + tier.name + "\"";
    auto inSignal = [&](double ms, const std::string& what, double& placed) {
        if (ms < -slackMs) {
            error = what + " at " + praatNumber(secondsFromMs(ms)) + " s lies before the start of the signal";
            return false;
        }
        if (ms > durationMs + slackMs) {
            error = what + " reaches " + praatNumber(secondsFromMs(ms)) + " s, past the end of the signal at " +
                    praatNumber(secondsFromMs(durationMs)) + " s";
            return false;
        }
        placed = std::clamp(ms, 0.0, durationMs);
        return true;
    };
    auto label = [&](double ms, const std::string& text) {
        CLabel l = style;
        l.timeMs = ms;
        l.text = text;
        out.push_back(std::move(l));
    };

    std::vector<const TierItem*> items;
    for (const TierItem& it : tier.items)
        if (!it.text.empty()) items.push_back(&it);
    const bool intervals = tier.kind == TierKind::Interval;
    for (std::size_t k = 0; k < items.size(); ++k) {
        const TierItem& it = *items[k];
        const std::string what =
            std::string(intervals ? "the interval \"" : "the point \"") + beginning(it.text) + "\" of " + tierName;
        if (it.text.size() > CLabel::kMaxText) {
            error = what + " holds " + std::to_string(it.text.size()) + " bytes of text; a label holds at most " +
                    std::to_string(CLabel::kMaxText);
            return false;
        }
        if (it.text.find('\0') != std::string::npos) {
            error = what + " holds a NUL character, which a label cannot hold";
            return false;
        }
        double startMs = 0.0, endMs = 0.0;
        if (!inSignal(msFromSeconds(it.startS), what, startMs)) return false;
        if (!inSignal(msFromSeconds(it.endS), what, endMs)) return false;
        label(startMs, it.text);
        if (!intervals || !(endMs > startMs)) continue;
        // The end needs a label of its own unless the next interval starts there.
        const bool followed =
            k + 1 < items.size() && std::clamp(msFromSeconds(items[k + 1]->startS), 0.0, durationMs) == endMs;
        if (!followed) label(endMs, std::string());
    }
    std::stable_sort(out.begin(), out.end(), [](const CLabel& a, const CLabel& b) { return a.timeMs < b.timeMs; });
    return true;
}

}  // namespace

double msFromSeconds(double seconds) {
    double ms = seconds * 1000.0;
    if (!std::isfinite(ms) || ms / 1000.0 == seconds) return ms;
    double up = ms, down = ms;
    for (int step = 0; step < 4; ++step) {
        up = std::nextafter(up, HUGE_VAL);
        down = std::nextafter(down, -HUGE_VAL);
        if (up / 1000.0 == seconds) return up;
        if (down / 1000.0 == seconds) return down;
    }
    return ms;
}

double secondsFromMs(double ms) {
    const double seconds = ms / 1000.0;
    if (!std::isfinite(seconds) || seconds == 0.0) return seconds;
    char buf[64];
    // The usual case, a time read from a file: ms ÷ 1000 is that file's
    // number, and no shorter one maps to the same ms.
    const auto [end15, ec15] = std::to_chars(buf, buf + sizeof buf, seconds, std::chars_format::general, 15);
    double back = 0.0;
    if (ec15 == std::errc() && std::from_chars(buf, end15, back).ec == std::errc() && back == seconds &&
        msFromSeconds(seconds) == ms)
        return seconds;
    for (int digits = 1; digits <= 15; ++digits) {
        const auto [end, ec] = std::to_chars(buf, buf + sizeof buf, seconds, std::chars_format::general, digits);
        double rounded = 0.0;
        if (ec != std::errc() || std::from_chars(buf, end, rounded).ec != std::errc()) break;
        if (msFromSeconds(rounded) == ms) return rounded;
    }
    // Full precision: a neighbour of ms ÷ 1000 may be the one that maps back.
    double up = seconds, down = seconds;
    for (int step = 0; step < 2; ++step) {
        up = std::nextafter(up, HUGE_VAL);
        down = std::nextafter(down, -HUGE_VAL);
        if (msFromSeconds(up) == ms) return up;
        if (msFromSeconds(down) == ms) return down;
    }
    return seconds;
}

std::optional<LabelFile> readLabelFile(const std::string& path) {
    const auto bytes = readWholeFile(path);
    if (!bytes) return std::nullopt;
    std::string reason;
    const auto text = decodeTextFile(*bytes, reason);
    std::optional<LabelFile> file;
    std::string kind = "a label text";
    if (text && text->rfind("ooBinaryFile", 0) == 0) {
        kind = "a TextGrid";
        reason = "it is a binary Praat file; save it from Praat as a text file";
    } else if (text && isPraatTextFile(*text)) {
        kind = "a TextGrid";
        file = parseTextGrid(*text, reason);
    } else if (text) {
        const std::string name = std::filesystem::path(path).stem().string();
        if (auto tier = parseLabelTrack(*text, name, reason)) {
            file.emplace();
            file->xminS = tier->xminS;
            file->xmaxS = tier->xmaxS;
            file->tiers.push_back(std::move(*tier));
        }
    }
    if (!file) {
        showMessage("'" + fileNameOf(path) + "' cannot be read as " + kind + ":\n" + reason + ".", MsgButtons::Ok,
                    MsgIcon::Error);
    }
    return file;
}

std::optional<PreparedLabels> prepareLabelImport(const CKestruneDoc& doc, const LabelFile& file,
                                                 const std::vector<TierAssignment>& assignments, const CLabel& style,
                                                 const std::string& fileName) {
    PreparedLabels prepared;
    std::string error;
    for (const TierAssignment& a : assignments) {
        if (a.tier >= file.tiers.size() || a.channel < 0 || a.channel >= doc.channelCount()) {
            error = "a tier or a channel that does not exist was chosen";
            break;
        }
        const bool taken = std::any_of(prepared.channels.begin(), prepared.channels.end(),
                                       [&](const auto& c) { return c.first == a.channel; });
        if (taken) {
            error = "two tiers were chosen for " + channelName(doc, a.channel);
            break;
        }
        const CChannel& ch = doc.channel(a.channel);
        if (!(ch.m_durationMs > 0.0)) {
            error = channelName(doc, a.channel) + " holds no samples to place labels on";
            break;
        }
        std::vector<CLabel> labels;
        if (!labelsFromTier(file.tiers[a.tier], ch, style, labels, error)) {
            error = "for " + channelName(doc, a.channel) + ", " + error;
            break;
        }
        prepared.channels.emplace_back(a.channel, std::move(labels));
    }
    if (!error.empty()) {
        beep();
        showMessage("No labels were imported from '" + fileName + "':\n" + error + ".", MsgButtons::Ok, MsgIcon::Error);
        return std::nullopt;
    }
    return prepared;
}

void applyLabelImport(CKestruneDoc& doc, PreparedLabels prepared) {
    for (auto& [channel, labels] : prepared.channels) doc.channel(channel).m_labels = std::move(labels);
    if (!prepared.channels.empty()) doc.setModified(true);
}

TierKind suggestedTierKind(const CChannel& channel) {
    const bool ends =
        std::any_of(channel.m_labels.begin(), channel.m_labels.end(), [](const CLabel& l) { return l.text.empty(); });
    return ends ? TierKind::Interval : TierKind::Point;
}

std::string defaultTierName(const CKestruneDoc& doc, int channel) {
    const std::string& name = doc.channel(channel).m_name;
    return name.empty() ? "Channel " + std::to_string(channel + 1) : name;
}

std::vector<TierExport> defaultTierExports(const CKestruneDoc& doc) {
    std::vector<TierExport> tiers;
    for (int i = 0; i < doc.channelCount(); ++i) {
        const CChannel& ch = doc.channel(i);
        if (ch.m_labels.empty()) continue;
        tiers.push_back(TierExport{i, defaultTierName(doc, i), suggestedTierKind(ch)});
    }
    return tiers;
}

std::optional<LabelFileFormat> labelFileFormatFor(const std::string& path) {
    std::string ext = std::filesystem::path(path).extension().string();
    std::transform(ext.begin(), ext.end(), ext.begin(), [](unsigned char c) { return std::tolower(c); });
    if (ext == ".textgrid") return LabelFileFormat::TextGrid;
    if (ext == ".txt" || ext == ".tsv" || ext == ".lab") return LabelFileFormat::LabelTrack;
    return std::nullopt;
}

std::optional<LabelFile> tiersFromChannels(const CKestruneDoc& doc, const std::vector<TierExport>& tiers,
                                           LabelFileFormat format, std::string& error) {
    if (tiers.empty()) {
        error = "the document holds no labels";
        return std::nullopt;
    }
    if (format == LabelFileFormat::LabelTrack && tiers.size() != 1) {
        error = "a label text holds the labels of one channel only";
        return std::nullopt;
    }
    // The span of the grid: the signal, widened to any label outside it.
    LabelFile file;
    for (const TierExport& t : tiers) {
        if (t.channel < 0 || t.channel >= doc.channelCount()) {
            error = "channel " + std::to_string(t.channel + 1) + " does not exist";
            return std::nullopt;
        }
        const CChannel& ch = doc.channel(t.channel);
        file.xmaxS = std::max(file.xmaxS, secondsFromMs(ch.m_durationMs));
        for (const CLabel& l : ch.m_labels) {
            const std::string where = "the label at " + msText(l.timeMs) + " in " + channelName(doc, t.channel);
            if (!std::isfinite(l.timeMs)) {
                error = "a label in " + channelName(doc, t.channel) + " has no valid time";
                return std::nullopt;
            }
            if (!isValidUtf8(l.text)) {
                error = where + " is not UTF-8 text, which a " +
                        (format == LabelFileFormat::TextGrid ? "TextGrid" : "label text") + " cannot hold";
                return std::nullopt;
            }
            if (format == LabelFileFormat::LabelTrack && l.text.find_first_of("\t\n\r") != std::string::npos) {
                error = where + " holds a tab or a line break, which a label text cannot hold (a TextGrid can)";
                return std::nullopt;
            }
            file.xminS = std::min(file.xminS, secondsFromMs(l.timeMs));
            file.xmaxS = std::max(file.xmaxS, secondsFromMs(l.timeMs));
        }
    }
    if (!(file.xmaxS > file.xminS)) {
        error = "the channels hold no samples and no labels";
        return std::nullopt;
    }

    for (const TierExport& t : tiers) {
        const CChannel& ch = doc.channel(t.channel);
        std::vector<const CLabel*> labels;
        labels.reserve(ch.m_labels.size());
        for (const CLabel& l : ch.m_labels) labels.push_back(&l);
        std::stable_sort(labels.begin(), labels.end(),
                         [](const CLabel* a, const CLabel* b) { return a->timeMs < b->timeMs; });
        auto twoAtOnce = [&](const CLabel& l) {
            return "two labels of " + channelName(doc, t.channel) + " stand at " + msText(l.timeMs) + ", and " +
                   (t.kind == TierKind::Interval ? "an interval tier" : "a TextGrid") + " cannot hold both";
        };
        LabelTier tier;
        tier.name = t.name;
        tier.kind = t.kind;
        tier.xminS = file.xminS;
        tier.xmaxS = file.xmaxS;
        if (t.kind == TierKind::Point) {
            // Praat keeps one point of several at the same time.
            const CLabel* last = nullptr;
            for (const CLabel* p : labels) {
                const CLabel& l = *p;
                if (l.text.empty()) continue;
                if (format == LabelFileFormat::TextGrid && last && last->timeMs == l.timeMs) {
                    error = twoAtOnce(l);
                    return std::nullopt;
                }
                tier.items.push_back(TierItem{secondsFromMs(l.timeMs), secondsFromMs(l.timeMs), l.text});
                last = &l;
            }
        } else {
            // Each label with text opens an interval that the next label closes.
            double cursorS = file.xminS;  // where the last interval ended
            const CLabel* open = nullptr;
            auto close = [&](double endS) {
                const double startS = secondsFromMs(open->timeMs);
                if (startS > cursorS) tier.items.push_back(TierItem{cursorS, startS, std::string()});
                tier.items.push_back(TierItem{startS, endS, open->text});
                cursorS = endS;
                open = nullptr;
            };
            for (const CLabel* p : labels) {
                const CLabel& l = *p;
                if (open && l.timeMs == open->timeMs) {
                    if (l.text.empty()) continue;  // an end mark where an interval starts
                    error = twoAtOnce(l);
                    return std::nullopt;
                }
                if (open) close(secondsFromMs(l.timeMs));
                if (!l.text.empty()) open = &l;
            }
            if (open) {
                // The last interval runs to the end of its own channel in a
                // label text, to the end of the grid in a TextGrid.
                close(format == LabelFileFormat::LabelTrack
                          ? std::max(secondsFromMs(ch.m_durationMs), secondsFromMs(open->timeMs))
                          : file.xmaxS);
            }
            if (format == LabelFileFormat::TextGrid && cursorS < file.xmaxS)
                tier.items.push_back(TierItem{cursorS, file.xmaxS, std::string()});
            if (format == LabelFileFormat::LabelTrack)
                std::erase_if(tier.items, [](const TierItem& it) { return it.text.empty(); });
        }
        file.tiers.push_back(std::move(tier));
    }
    return file;
}

bool exportLabelFile(const CKestruneDoc& doc, const std::vector<TierExport>& tiers, LabelFileFormat format,
                     const std::string& path) {
    std::string error;
    const auto file = tiersFromChannels(doc, tiers, format, error);
    if (!file) {
        beep();
        showMessage("The labels were not exported:\n" + error + ".", MsgButtons::Ok, MsgIcon::Error);
        return false;
    }
    const std::string text =
        format == LabelFileFormat::TextGrid ? formatTextGrid(*file) : formatLabelTrack(file->tiers.front());
    const bool ok = writeFileAtomically(
        path, [&](std::FILE* f) { return text.empty() || std::fwrite(text.data(), 1, text.size(), f) == text.size(); });
    if (!ok) {
        beep();
        showMessage("Error in save operation.");
    }
    return ok;
}

}  // namespace sonmetra
