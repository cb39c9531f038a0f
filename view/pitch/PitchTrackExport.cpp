#include "PitchTrackExport.h"

#include <charconv>
#include <cstdio>

#include "PitchComputation.h"
#include "document/AtomicFileWriter.h"
#include "document/MessageService.h"

namespace {

void appendNumber(std::string& out, double v) {
    char b[64];
    const auto [end, ec] = std::to_chars(b, b + sizeof b, v);
    out.append(b, ec == std::errc() ? end : b);
}

}  // namespace

std::string pitchTrackText(const PitchResults& r) {
    std::string out = "frame\ttime_ms\tf0_hz\n";
    out.reserve(out.size() + static_cast<std::size_t>(r.frameCount()) * 24);
    for (int i = 0; i < r.frameCount(); ++i) {
        out += std::to_string(i);
        out += '\t';
        appendNumber(out, r.frameMs(i));
        out += '\t';
        appendNumber(out, r.track.track[static_cast<std::size_t>(i)]);
        out += '\n';
    }
    return out;
}

bool exportPitchTrack(const PitchResults& results, const QString& path) {
    const std::string text = pitchTrackText(results);
    const std::string target = path.toStdString();
    bool created = false;
    const bool ok = sonmetra::writeFileAtomically(target, [&](std::FILE* f) {
        created = true;
        return std::fwrite(text.data(), 1, text.size(), f) == text.size();
    });
    if (!ok && created)
        sonmetra::showMessage("Cannot write the file '" + target + "'.", sonmetra::MsgButtons::Ok,
                              sonmetra::MsgIcon::Error);
    return ok;
}
