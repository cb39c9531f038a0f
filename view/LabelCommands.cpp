// The "&Label" menu: label entry mode, the label list, and the measurement
// entries that go to the open log.
#include <QString>

#include "CFrameLabelView.h"
#include "CKestruneView.h"
#include "LabelController.h"
#include "MeasurementEntries.h"
#include "ViewCommands.h"
#include "document/CKestruneDoc.h"
#include "log/CFormLog.h"

namespace {

bool hasData(const CKestruneView& v) { return v.document() && v.document()->holdsData(); }
bool logOpen(const CKestruneView& v) { return hasData(v) && CFormLog::activeLog() != nullptr; }

}  // namespace

void registerLabelCommands() {
    static bool registered = false;
    if (registered) return;
    registered = true;

    registerViewExtension([](CKestruneView& view) { return std::make_unique<LabelController>(view); });

    auto& r = ViewCommandRegistry::instance();
    const QString menu = "&Label";

    ViewCommand mode;
    mode.menu = menu;
    mode.text = "Mode";
    mode.statusTip = "Turns label entry with the mouse on or off";
    mode.order = 10;
    mode.enabled = hasData;
    mode.dynamicText = [](const CKestruneView& v) {
        const auto* labels = v.extension<LabelController>();
        return QString(labels && labels->labelMode() ? "Disable Label Entry Mode" : "Enable Label Entry Mode");
    };
    mode.run = [](CKestruneView& v) {
        if (auto* labels = v.extension<LabelController>()) labels->setLabelMode(!labels->labelMode());
    };
    r.add(mode);

    ViewCommand list;
    list.menu = menu;
    list.text = "View Labels";
    list.statusTip = "Shows the labels of the document";
    list.order = 20;
    list.enabled = hasData;
    list.run = [](CKestruneView& v) { CFrameLabelView::showFor(v.document()); };
    r.add(list);

    ViewCommand marker;
    marker.menu = menu;
    marker.text = "Enter at Marker\tCtrl+T";
    marker.statusTip = "Sends the cursor time to the log";
    marker.order = 30;
    marker.separatorBefore = true;
    marker.enabled = [](const CKestruneView& v) { return logOpen(v) && v.cursorPlaced(); };
    marker.run = [](CKestruneView& v) { sendToLog(markerEntry(*v.document())); };
    r.add(marker);

    ViewCommand duration;
    duration.menu = menu;
    duration.text = "Enter Duration\tCtrl+D";
    duration.statusTip = "Sends the selection's start, end and duration to the log";
    duration.order = 40;
    duration.enabled = [](const CKestruneView& v) { return logOpen(v) && v.selectionPresent(); };
    duration.run = [](CKestruneView& v) { sendToLog(durationEntry(*v.document())); };
    r.add(duration);

    ViewCommand selection;
    selection.menu = menu;
    selection.text = "Enter Data Selection";
    selection.statusTip = "Sends the selection's time to the log";
    selection.order = 50;
    selection.enabled = [](const CKestruneView& v) { return logOpen(v) && v.selectionPresent(); };
    selection.run = [](CKestruneView& v) { sendToLog(dataSelectionEntry(*v.document())); };
    r.add(selection);
}
