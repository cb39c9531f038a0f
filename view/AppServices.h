// Application-wide objects that the view layer needs but that the
// application object owns: set once at start-up by CKestruneApp (and by
// tests), read by the views and their extensions.
#pragma once

#include <string>

class QFont;
class QMdiArea;
class QWidget;

class IViewReadouts;

namespace sonmetra {
class AppConfig;
class EditClipboard;
}  // namespace sonmetra

struct AppServices {
    QMdiArea* mdiArea = nullptr;                   // where new child frames go
    QWidget* mainWindow = nullptr;                 // parent of dialogs
    sonmetra::AppConfig* config = nullptr;         // settings and the configuration record
    sonmetra::EditClipboard* clipboard = nullptr;  // the program-wide edit clipboard
    std::string workingFolder;                     // configuration, help, tmp live here
    std::string tempFolder;                        // workingFolder + "/tmp/"
    IViewReadouts* readouts = nullptr;             // the status window that the active view feeds
    const QFont* defaultFont = nullptr;            // the shared start-up font (Arial 14, weight 400)

    static AppServices& instance();
};
