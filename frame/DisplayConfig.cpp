#include "DisplayConfig.h"

#include "document/AppConfig.h"
#include "document/MessageService.h"
#include "res/StringTable.h"
#include "view/AppServices.h"

sonmetra::AppConfig& displayConfig() {
    static sonmetra::AppConfig defaults;
    sonmetra::AppConfig* config = AppServices::instance().config;
    return config != nullptr ? *config : defaults;
}

void writeDisplayConfig() {
    const sonmetra::AppConfig& config = displayConfig();
    if (config.filePath().empty()) return;
    if (!config.writeFile(config.filePath())) {
        sonmetra::showMessage(sonmetra::formatString(sonmetra::IDS_CONFIG_WRITE_ERROR, config.filePath()));
    }
}
