#include "RecordPlayConfig.h"

#include "document/AppConfig.h"
#include "document/MessageService.h"
#include "res/StringTable.h"
#include "view/AppServices.h"

sonmetra::AppConfig& recordPlayConfig() {
    static sonmetra::AppConfig defaults;
    sonmetra::AppConfig* config = AppServices::instance().config;
    return config != nullptr ? *config : defaults;
}

bool writeRecordPlayConfig() {
    const sonmetra::AppConfig& config = recordPlayConfig();
    if (config.filePath().empty()) return true;
    if (config.writeFile(config.filePath())) return true;
    sonmetra::showMessage(sonmetra::formatString(sonmetra::IDS_CONFIG_WRITE_ERROR, config.filePath()));
    return false;
}
