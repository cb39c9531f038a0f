#include "DocumentOpener.h"

#include "AppConfig.h"
#include "AudioRate.h"
#include "ChannelRate.h"
#include "MessageService.h"
#include "res/StringTable.h"

namespace sonmetra {
namespace {

// Tries each reader from the start of the file. Returns the status of the
// first reader that did not decline, or NotMyType when all declined.
ReadStatus tryReaders(const std::vector<FileReaderEntry>& readers, BinaryFile& file, CKestruneDoc& doc,
                      ReadContext& context) {
    for (const FileReaderEntry& reader : readers) {
        if (!file.seek(0)) return ReadStatus::NotMyType;
        const ReadStatus status = reader.read(file, doc, context);
        if (status == ReadStatus::Accepted && doc.readerName().empty()) doc.setReaderName(reader.name);
        if (status != ReadStatus::NotMyType) return status;
    }
    return ReadStatus::NotMyType;
}

}  // namespace

bool openDocument(CKestruneDoc& doc, const std::string& path, IImportDialogs& dialogs, AppConfig* config) {
    BinaryFile file;
    if (!file.open(path)) {
        showMessage("Cannot open the file '" + path + "':\n" + file.error(), MsgButtons::Ok, MsgIcon::Error);
        return false;
    }
    if (file.size() == 0) {
        beep();
        showMessage(IDS_ZERO_LENGTH_FILE);
        return false;
    }

    ReadContext context{&dialogs, fileNameOf(path)};
    doc.setReaderName({});
    ReadStatus status = tryReaders(sequenceReaders(), file, doc, context);
    if (status == ReadStatus::NotMyType) {
        GenericFileSettings settings = doc.m_generic;
        if (dialogs.genericFileSelection(settings)) {
            doc.m_generic = settings;
            status = tryReaders(genericReaders(), file, doc, context);
        }
    }
    if (status == ReadStatus::Abandoned) return false;
    if (status == ReadStatus::NotMyType) {
        beep();
        showMessage(IDS_WRONG_FILE_TYPE);
        return false;
    }

    doc.setHoldsData(true);
    doc.setUntitledMark(false);
    doc.setPathAndTitle(path);
    doc.setModified(false);

    // A document at another audio rate changes the rate in force: its
    // rate-derived analysis defaults follow, and the configuration record
    // is written again with the new values.
    // A rate outside the range of analysis/SampleRateRange.h derives
    // nothing, and the document opens with its data. The workstation (which
    // keeps a configuration) tells the user at once; elsewhere each command
    // that needs the rate refuses it with the same words.
    if (doc.channelCount() > 0) {
        const double rate = doc.channel(0).m_rateHz;
        if (const std::string problem = channelRateProblem(doc.channel(0), 0); !problem.empty()) {
            if (config) showMessage(problem, MsgButtons::Ok, MsgIcon::Warning);
        } else if (rate != audioRateInForce()) {
            doc.m_analysis.applyRateDefaults(rate);
            if (config)
                config->takeAudioRate(rate);
            else
                setAudioRateInForce(rate);
        }
    }
    return true;
}

}  // namespace sonmetra
