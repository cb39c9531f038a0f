// Every feature of the waveform view registers its menu commands and view
// extensions here, once, before the main frame builds its menus.
#include "CKestruneApp.h"
#include "frame/DocumentCommands.h"
#include "frame/FrameViewCommands.h"
#include "frame/IntensitySmoothCommands.h"
#include "frame/PitchOptionDialog.h"
#include "frame/SpectrogramOptionDialog.h"
#include "frame/SpectrumOptionCommands.h"
#include "view/CRecordPlay.h"
#include "view/EditCommands.h"
#include "view/LabelController.h"
#include "view/WaveformCommands.h"
#include "view/pitch/PitchCommands.h"
#include "view/scope/ScopeCommands.h"
#include "view/spectrum/SpectrumCommands.h"

void CKestruneApp::registerFeatures() {
    static bool registered = false;
    if (registered) return;
    registered = true;
    registerWaveformViewCommands();
    registerFrameViewCommands();
    registerEditCommands();
    registerLabelCommands();
    registerRecordPlayCommands();
    registerPitchWindow();
    registerPitchOptionCommands();
    registerSpectrumWindow();
    registerSpectrumOptionCommands();
    registerScopeCommands();
    registerSpectrogramWindow();
    registerIntensitySmoothCommands();
    // Saving before a recording uses the main frame's own Save As dialog.
    CRecordPlay::setSaveAsHandler(&DocumentCommands::saveAs);
}
