// Start and end of the debug layer, for hosts that want the print switched by their
// configuration. mxsbutil calls neither.
#include "mg/dbgtools.h"
#include "mg/filemgr.h"
#include "mg/host.h"
#include "mg/mxexcept.h"
#include "mg/stringoutput.h"

extern "C" {

// The host's answer is not looked at: without the value the switch stays as it was.
void DebugInit(void) {
    HostConfigRead(3, "\tdebugging", &gDebugging);
    gDebugOutput = nullptr;
    try {
        gDebugOutput = new LStrOutput;
    } catch (...) {
        ConvertCurrentException();
    }
}

void DebugExit(void) {
    if (gDPrintfFile != 0) {
        FMClose(gDPrintfFile);
        gDPrintfFile = 0;
        gDPrintfFileMode = 0;
    }
    delete gDebugOutput;
    gDebugOutput = nullptr;
}

}  // extern "C"
