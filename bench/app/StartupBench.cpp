// Time from the start of the process to a shown main window with the demo
// document open: application object, start-up steps, main frame, first paint.
#include <QApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTimer>
#include <cstdio>

#include "app/CKestruneApp.h"
#include "frame/CMainFrame.h"

int main(int argc, char** argv) {
    QElapsedTimer clock;
    clock.start();
    QTemporaryDir home;
    qputenv("HOME", home.path().toUtf8());
    qputenv("XDG_CONFIG_HOME", (home.path() + "/config").toUtf8());
    std::vector<char*> args(argv, argv + argc);
    static char demo[] = SONMETRA_DEMO;
    args.push_back(demo);
    int n = static_cast<int>(args.size());
    CKestruneApp app(n, args.data());
    if (!app.initInstance()) return 1;
    const qint64 init = clock.elapsed();
    QTimer::singleShot(0, [&] {
        app.mainFrame()->repaint();
        std::printf("start-up to a shown main window with the demo document: %lld ms (start-up steps %lld ms)\n",
                    static_cast<long long>(clock.elapsed()), static_cast<long long>(init));
        QApplication::quit();
    });
    return app.runEventLoop();
}
