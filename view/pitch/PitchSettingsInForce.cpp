#include "PitchSettingsInForce.h"

#include "document/AppConfig.h"
#include "view/AppServices.h"

sonmetra::PitchSettings& pitchSettingsInForce() {
    static sonmetra::PitchSettings defaults;
    sonmetra::AppConfig* config = AppServices::instance().config;
    return config != nullptr ? config->m_analysis.pitch : defaults;
}
