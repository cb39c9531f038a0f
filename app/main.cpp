// The Sonmetra workstation.
#include "CKestruneApp.h"

int main(int argc, char** argv) {
    CKestruneApp app(argc, argv);
    if (!app.initInstance()) return 1;
    return app.runEventLoop();
}
