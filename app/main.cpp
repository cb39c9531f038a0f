// The Sonmetra workstation; with --render, one window drawn into a file.
#include "CKestruneApp.h"
#include "HeadlessRender.h"

int main(int argc, char** argv) {
    if (isRenderCommand(argc, argv)) return runRender(argc, argv);
    CKestruneApp app(argc, argv);
    if (!app.initInstance()) return 1;
    return app.runEventLoop();
}
