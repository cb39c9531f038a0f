#include "IntensitySmoothCommands.h"

#include <QApplication>

#include "DisplayConfig.h"
#include "DocumentCommands.h"
#include "IntensitySmoothDialog.h"
#include "document/AppConfig.h"
#include "document/CKestruneDoc.h"
#include "document/ChannelAnalysis.h"
#include "document/MessageService.h"
#include "view/AppServices.h"
#include "view/CKestruneView.h"
#include "view/DocumentWindows.h"
#include "view/EditCommands.h"
#include "view/ViewCommands.h"

using namespace sonmetra;

namespace {

const char kSaveFirstQuestion[] =
    "This operation will replace the existing data.\nDo you wish to save this data first?";

bool hasData(const CKestruneView& v) { return v.document() != nullptr && v.document()->holdsData(); }

class BusyCursor {
public:
    BusyCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }
    ~BusyCursor() { QApplication::restoreOverrideCursor(); }
    BusyCursor(const BusyCursor&) = delete;
    BusyCursor& operator=(const BusyCursor&) = delete;
};

}  // namespace

void runIntensity(CKestruneView& view) {
    CKestruneDoc& doc = *view.document();
    takeChannelSettings(displayConfig(), doc);
    AnalysisStatus status = AnalysisStatus::Ok;
    {
        BusyCursor busy;
        status = ComputeIntensityAllChannels(doc);
    }
    // Channels done before a failure keep their new contours: draw them.
    view.requestRedraw();
    if (status == AnalysisStatus::Failed) showMessage(kIntensityFailedText);
}

void runSmooth(CKestruneView& view) {
    CKestruneDoc& doc = *view.document();
    const MsgAnswer answer = showMessage(kSaveFirstQuestion, MsgButtons::YesNoCancel, MsgIcon::Question);
    if (answer == MsgAnswer::Cancel) return;
    // The user asked for a copy of the data as it is; without one nothing is replaced.
    if (answer == MsgAnswer::Yes && !DocumentCommands::saveAs(AppServices::instance().mainWindow, doc)) return;

    auto* edit = view.extension<EditController>();
    if (edit != nullptr && !edit->undo().saveForUndo(doc)) return;  // "No" to going on without undo

    takeChannelSettings(displayConfig(), doc);
    AnalysisStatus status = AnalysisStatus::Ok;
    {
        BusyCursor busy;
        status = SmoothAllChannels(doc);
    }
    // Channels smoothed before a failure stay smoothed, and Undo brings them back.
    view.channelsEdited();
    view.refreshReadouts();
    doc.setModified(true);
    documentReplaced(&doc);
    if (status == AnalysisStatus::Failed) showMessage(kSmoothFailedText);
}

void registerIntensitySmoothCommands() {
    static bool registered = false;
    if (registered) return;
    registered = true;
    auto& registry = ViewCommandRegistry::instance();

    ViewCommand intensity;
    intensity.menu = QStringLiteral("&Analysis");
    intensity.text = QStringLiteral("Intensity\tCtrl+I");
    intensity.statusTip = QStringLiteral("Perform power intensity of the waveform");
    intensity.order = 900;
    intensity.separatorBefore = true;
    intensity.run = runIntensity;
    intensity.enabled = hasData;
    registry.add(std::move(intensity));

    ViewCommand smooth;
    smooth.menu = QStringLiteral("&Analysis");
    smooth.text = QStringLiteral("Smooth\tCtrl+K");
    smooth.statusTip = QStringLiteral("Smooth the data");
    smooth.order = 910;
    smooth.run = runSmooth;
    smooth.enabled = hasData;
    registry.add(std::move(smooth));

    ViewCommand options;
    options.menu = QStringLiteral("&Options");
    options.text = QStringLiteral("Intensity/Smooth");
    options.statusTip = QStringLiteral("Intensity window and step, normalising and smoothing per channel");
    options.order = 290;
    options.run = runIntensitySmoothOptions;
    options.enabled = hasData;
    registry.add(std::move(options));

    // The contour is measured from the reference; when every reference goes
    // to zero, a channel's contour is computed again with the same settings.
    CKestruneView::setDerivedCurveRecompute([](CKestruneDoc& doc, int channel) {
        if (!ComputeIntensity(doc.channel(channel))) showMessage(kIntensityFailedText);
    });
}
