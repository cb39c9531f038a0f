// The pitch settings in force: those of the application's configuration
// record, or built-in defaults where no record is loaded (a view used
// without the application, tests). The "Pitch option" dialog edits them;
// the pitch window and `sonmetra --render pitch` read them.
#pragma once

#include "analysis/AnalysisSettings.h"

sonmetra::PitchSettings& pitchSettingsInForce();
