#include "HeadlessRender.h"

#include <sys/stat.h>

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPrinter>
#include <QRegularExpression>
#include <QSettings>
#include <QTemporaryFile>
#include <cmath>
#include <cstring>
#include <functional>
#include <iostream>
#include <memory>

#include "CKestruneApp.h"
#include "document/AppConfig.h"
#include "document/CKestruneDoc.h"
#include "document/DocumentOpener.h"
#include "document/EditClipboard.h"
#include "document/MessageService.h"
#include "view/AppServices.h"
#include "view/PictureOutput.h"
#include "view/RenderKinds.h"
#include "view/TimeBase.h"

namespace {

constexpr int kMaxSidePx = 16384;

// Every message goes to standard error; questions take their last button.
class StderrMessages : public sonmetra::IMessageService {
public:
    sonmetra::MsgAnswer show(const std::string& text, sonmetra::MsgButtons buttons, sonmetra::MsgIcon) override {
        std::cerr << text << '\n';
        switch (buttons) {
            case sonmetra::MsgButtons::YesNo:
                return sonmetra::MsgAnswer::No;
            case sonmetra::MsgButtons::Ok:
                return sonmetra::MsgAnswer::Ok;
            default:
                return sonmetra::MsgAnswer::Cancel;
        }
    }
    void beep() override {}
};

// Qt's own diagnostics (missing runtime folders of the offscreen platform,
// fonts) are not the user's business on a script's terminal.
void quietQtMessages(QtMsgType type, const QMessageLogContext&, const QString& text) {
    if (type == QtCriticalMsg || type == QtFatalMsg) std::cerr << text.toStdString() << '\n';
}

int fail(const QString& text) {
    sonmetra::showMessage(text.toStdString(), sonmetra::MsgButtons::Ok, sonmetra::MsgIcon::Error);
    return 1;
}

// The configuration in force: CFG, else the working folder's file, else the
// built-in settings. The record is read only: a render never writes it.
bool loadConfiguration(sonmetra::AppConfig& config, const QString& configPath, QString& workingFolder) {
    QSettings settings;
    workingFolder = settings.value("General Strings Section/Temp Directory").toString();
    if (workingFolder.isEmpty()) workingFolder = QDir::currentPath();
    config.setBuiltInChannelTable();
    if (!configPath.isEmpty()) return config.readFile(configPath.toStdString());
    config.readFile((workingFolder + "/SonmetraConf.cfg").toStdString());
    return true;
}

std::optional<double> numberOption(const QCommandLineParser& parser, const QString& name, bool& ok) {
    if (!parser.isSet(name)) return std::nullopt;
    bool good = false;
    const double v = parser.value(name).toDouble(&good);
    if (!good || !std::isfinite(v)) ok = false;
    return v;
}

// Writes through a temporary file beside OUT, renamed over it only once
// complete, so that a failure leaves nothing behind.
bool writeOutput(const QString& out, const std::function<bool(const QString& path)>& write) {
    QTemporaryFile temp(QFileInfo(out).absolutePath() + "/.sonmetra-render-XXXXXX");
    if (!temp.open()) return false;
    const QString tempPath = temp.fileName();
    temp.close();
    if (!write(tempPath)) return false;
    QFile::remove(out);
    if (!QFile::rename(tempPath, out)) return false;
    temp.setAutoRemove(false);
    // The temporary file was private; the picture gets a new file's usual mode.
    const mode_t mask = umask(0);
    umask(mask);
    chmod(QFile::encodeName(out).constData(), 0666 & ~mask);
    return true;
}

}  // namespace

bool isRenderCommand(int argc, char** argv) {
    for (int i = 1; i < argc; ++i)
        if (std::strcmp(argv[i], "--render") == 0 || std::strncmp(argv[i], "--render=", 9) == 0) return true;
    return false;
}

int runRender(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qInstallMessageHandler(quietQtMessages);
    QApplication qapp(argc, argv);
    QApplication::setOrganizationName("Melvarco");
    QApplication::setApplicationName("Sonmetra");
    StderrMessages messages;
    sonmetra::setMessageService(&messages);
    struct Restore {
        ~Restore() {
            sonmetra::setMessageService(nullptr);
            AppServices::instance() = AppServices{};
        }
    } restore;

    QCommandLineParser parser;
    parser.setApplicationDescription("Draws one window of the workstation into a PNG, BMP or PDF file.");
    parser.addHelpOption();
    parser.addOptions({
        {"render", "The window to draw: waveform, spectrum, pitch or spectrogram.", "kind"},
        {{"o", "output"}, "The file to write: .png, .bmp or .pdf.", "file"},
        {"size", "The window's client size in pixels (default 800x600).", "WxH", "800x600"},
        {"cursor", "The cursor time in ms.", "ms"},
        {"from", "Start of the selection in ms.", "ms"},
        {"to", "End of the selection in ms.", "ms"},
        {"config", "A configuration file to take the settings from.", "file"},
    });
    parser.addPositionalArgument("file", "The document or sound file.");
    if (!parser.parse(QApplication::arguments())) return fail(parser.errorText());
    if (parser.isSet("help")) {
        std::cout << parser.helpText().toStdString();
        return 0;
    }

    const QString kind = parser.value("render");
    const QStringList files = parser.positionalArguments();
    const QString out = parser.value("output");
    if (files.size() != 1 || out.isEmpty())
        return fail(
            "usage: sonmetra --render KIND FILE -o OUT [--size WxH] [--cursor MS | --from MS --to MS] "
            "[--config CFG]");
    CKestruneApp::registerFeatures();
    const RenderFactory make = renderFactory(kind);
    if (!make) return fail("Unknown window kind '" + kind + "'. Known kinds: " + renderKindNames().join(", ") + ".");

    const QString suffix = QFileInfo(out).suffix().toLower();
    if (suffix != "png" && suffix != "bmp" && suffix != "pdf")
        return fail("The output '" + out + "' must end in .png, .bmp or .pdf.");

    RenderRequest request;
    const QRegularExpressionMatch size = QRegularExpression("^(\\d+)x(\\d+)$").match(parser.value("size"));
    if (!size.hasMatch()) return fail("The size '" + parser.value("size") + "' is not of the form WxH.");
    request.size = QSize(size.captured(1).toInt(), size.captured(2).toInt());
    if (request.size.width() < 16 || request.size.height() < 16 || request.size.width() > kMaxSidePx ||
        request.size.height() > kMaxSidePx)
        return fail(QString("The size must lie between 16x16 and %1x%1 pixels.").arg(kMaxSidePx));
    bool numbersOk = true;
    request.cursorMs = numberOption(parser, "cursor", numbersOk);
    request.fromMs = numberOption(parser, "from", numbersOk);
    request.toMs = numberOption(parser, "to", numbersOk);
    if (!numbersOk) return fail("--cursor, --from and --to take a time in ms.");
    if (request.fromMs.has_value() != request.toMs.has_value()) return fail("--from and --to go together.");
    if (request.cursorMs && request.fromMs) return fail("Give either --cursor or --from and --to, not both.");

    sonmetra::AppConfig config;
    QString workingFolder;
    if (!loadConfiguration(config, parser.value("config"), workingFolder))
        return fail("'" + parser.value("config") + "' is not a Sonmetra configuration file of version 8.9.1.");
    sonmetra::EditClipboard clipboard;
    AppServices& services = AppServices::instance();
    services.config = &config;
    services.clipboard = &clipboard;
    services.workingFolder = workingFolder.toStdString();
    services.tempFolder = (workingFolder + "/tmp/").toStdString();

    const QString path = QFileInfo(files.front()).absoluteFilePath();
    auto doc = std::make_shared<sonmetra::CKestruneDoc>();
    sonmetra::DefaultImportDialogs dialogs;
    if (!QFileInfo::exists(path)) return fail("Cannot open the file '" + path + "':\nNo such file or directory");
    if (!sonmetra::openDocument(*doc, path.toStdString(), dialogs, &config)) return 1;
    if (doc->channelCount() == 0 || !doc->holdsData()) return fail("'" + path + "' holds no samples.");
    request.doc = doc.get();

    timebase::zoom(*doc, timebase::ZoomMode::Home);
    const double durationMs = doc->channel(0).m_durationMs;
    auto inside = [durationMs](double ms) { return ms >= 0.0 && ms <= durationMs; };
    if (request.cursorMs) {
        if (!inside(*request.cursorMs))
            return fail(QString("The cursor at %1 ms lies outside the signal (0 to %2 ms).")
                            .arg(*request.cursorMs)
                            .arg(durationMs));
        timebase::placeCursor(*doc, *request.cursorMs);
    }
    if (request.hasSelection()) {
        if (!inside(*request.fromMs) || !inside(*request.toMs) || *request.toMs <= *request.fromMs)
            return fail(QString("The selection %1 to %2 ms must lie inside the signal (0 to %3 ms) and not be empty.")
                            .arg(*request.fromMs)
                            .arg(*request.toMs)
                            .arg(durationMs));
        timebase::selectRange(*doc, *request.fromMs, *request.toMs);
        doc->setSelectionFlag(true);
    }

    std::unique_ptr<IRenderedWindow> window = make(request);
    if (!window) return 1;

    const bool written = writeOutput(out, [&](const QString& temp) {
        if (suffix == "pdf") {
            QPrinter printer(QPrinter::HighResolution);
            printer.setOutputFormat(QPrinter::PdfFormat);
            printer.setOutputFileName(temp);
            window->printPage(printer);
            return QFileInfo(temp).size() > 0;
        }
        const QImage image = window->clientImage(request.size);
        if (image.isNull()) return false;
        if (suffix == "bmp") return writeBitmap(image, temp);
        return image.save(temp, "PNG");
    });
    if (!written) return fail("The picture could not be written to '" + out + "'.");
    return 0;
}
