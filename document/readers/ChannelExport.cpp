#include "ChannelExport.h"

#include "document/AtomicFileWriter.h"
#include "document/MessageService.h"
#include "document/WavWriter.h"
#include "res/StringTable.h"

namespace sonmetra {

bool exportChannelWav(const CChannel& channel, const std::string& path) {
    const bool ok =
        writeFileAtomically(path, [&channel](std::FILE* file) { return writeWavChannel(file, channel, false); });
    if (!ok) {
        beep();
        showMessage(IDS_SAVE_ERROR);
    }
    return ok;
}

}  // namespace sonmetra
