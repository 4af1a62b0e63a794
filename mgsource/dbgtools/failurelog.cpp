// The failure log: a record with the date, the message, the failing file's revision and a
// stack trace, appended to Meridax_Failure_Log.txt in the temporary directory, which stays
// bounded (logbound.h).
#include <string.h>

#include <memory>
#include <new>

#include "dbgtools/logbound.h"
#include "mg/datetime.h"
#include "mg/dbgtools.h"
#include "mg/stackwalk.h"
#include "mg/stringoutput.h"
#include "platform/platform.h"

namespace {

// The walker's own frame and the reporting routines above the failing code.
constexpr int32_t kReportFrames = 4;

// A log beyond the bound becomes the old log before the record is appended; when the names
// can't be built or the rename fails, the record goes to the end of the log as it is.
void BoundLog(const OutputName* name) {
    plat::FileFacts facts;
    if (name == nullptr || !plat::GetFileFacts(name->GetName(), &facts) || facts.size <= kLogBound)
        return;
    OutputName* oldName = MakeOutputName(kOutputInTempDirectory, "Meridax_Failure_Log.old", 1);
    if (oldName != nullptr) plat::RenameReplacing(name->GetName(), oldName->GetName());
    delete oldName;
}

// The sink of the record; null when it can't be had, and then the record is lost. A name
// that can't be built gives a sink that never opens.
StringOutput* MakeLogSink(bool toFile) {
    if (!toFile) return new (std::nothrow) DPrintfOutput;
    OutputName* name = MakeOutputName(kOutputInTempDirectory, "Meridax_Failure_Log", 1);
    BoundLog(name);
    StringOutput* sink = MakeFileOutput(name);
    if (sink) sink->Open(1);
    delete name;
    return sink;
}

// No one fills in the system's name: the date buffer stands in its place and is read as a
// PStr, its first character's code taken as the count. The NULs that read takes along would
// end the sink's text early and swallow the lines behind it, so the log shows what stands
// before them.
void OSNameText(const char* dateText, char* out) {
    const uint8_t count = static_cast<uint8_t>(dateText[0]);
    const size_t shown = strnlen(dateText + 1, count);
    memcpy(out, dateText + 1, shown);
    out[shown] = 0;
}

}  // namespace

extern "C" void DWriteFailureLog(ConstPStr message, const char* revision, int32_t toFile) {
    char dateText[256] = {};
    char versionText[256] = {};
    FailureStackTrace trace;
    std::unique_ptr<StringOutput> sink(MakeLogSink(toFile != 0));
    if (!revision) revision = "unspecified";
    FormatDateTime(TimeNow(), dateText);
    char osName[256];
    OSNameText(dateText, osName);
    if (sink) {
        sink->Printf("\\n\\n####\\n#Date: %s\\n", dateText);
        sink->Printf("#Desc: %p\\n", message);
        sink->Printf("#RCS: %s\\n#OSName: %s\\n#OSVers: %p\\n", revision, osName, versionText);
        sink->Printf("#AppName: %s\\n#AppKind: %s\\n", gAppName, "FDS");
    }
    trace.Capture(kReportFrames);
    if (sink) DDumpStack(&trace, sink.get());
}
