// Reading path text. Both syntaxes scan the text twice with the same scanner: once to size
// the block and once to fill it, so the two passes can never disagree on its layout.
#include "mg/ansi.h"
#include "mg/dbgtools.h"
#include "mg/textutil.h"
#include "pathmgr/pathblock.h"
#include "platform/platform.h"

MG_SOURCE_IDENTITY("mgsource\\pathmgr\\textscan.cpp", "$Revision: 1 $");

using namespace pathmgr;

namespace {

// No script table is ever installed, so TextStep steps by single bytes; the scans still go
// through it so that double-byte text would keep its trail bytes inside names.
constexpr const void* kScript = nullptr;

// Longest server name kept in a network component, leaving room for "\\", "\" and the share.
constexpr int32_t kMaxServerLength = 251;
constexpr int32_t kMaxUncLength = 252;

// Collects the components found by a scan. In the sizing pass `block` is null and only the
// count and size grow.
struct Builder {
    uint8_t* block = nullptr;
    int32_t size = kHeaderSize;
    int32_t count = 0;
    int32_t kind = PathKindAbsolute;

    void Add(const uint8_t* bytes, int32_t length) {
        if (block != nullptr) {
            block[size] = static_cast<uint8_t>(length);
            BlockMove(bytes, block + size + 1, length);
        }
        size += length + 1;
        ++count;
    }
    // A network root: "\\server\share" with both parts cut so the whole fits one PStr.
    void AddUnc(const uint8_t* server, int32_t serverLength, const uint8_t* share,
                int32_t shareLength) {
        if (serverLength > kMaxServerLength) serverLength = kMaxServerLength;
        if (shareLength > kMaxUncLength - serverLength) shareLength = kMaxUncLength - serverLength;
        int32_t length = 3 + serverLength + shareLength;
        if (block != nullptr) {
            uint8_t* p = block + size;
            *p++ = static_cast<uint8_t>(length);
            *p++ = '\\';
            *p++ = '\\';
            BlockMove(server, p, serverLength);
            p += serverLength;
            *p++ = '\\';
            BlockMove(share, p, shareLength);
        }
        size += length + 1;
        ++count;
    }
};

int32_t StepChar(const uint8_t* text, int32_t index, int32_t length) {
    int32_t next = TextStep(text, index, kScript);
    if (next <= index) next = index + 1;
    return next < length ? next : length;
}

bool IsDot(const uint8_t* word, int32_t length) {
    return length == 1 && word[0] == '.';
}
bool IsDotDot(const uint8_t* word, int32_t length) {
    return length == 2 && word[0] == '.' && word[1] == '.';
}

// Adds an ordinary word, "." or "..", cutting a long name to what a PStr holds.
void AddWord(Builder& b, const uint8_t* word, int32_t length) {
    if (IsDot(word, length)) return;
    if (IsDotDot(word, length)) {
        b.Add(word, 0);
        return;
    }
    b.Add(word, length > kMaxNameLength ? kMaxNameLength : length);
}

// The Windows grammar: a volume word ended by ':', '\' separators, "\\server\share" roots,
// and the drive of the current directory for text that starts with '\' or ':'.
void ScanWindows(const uint8_t* text, int32_t length, uint8_t drive, Builder& b) {
    int32_t pos = 0;
    for (int32_t index = 0; pos < length; ++index) {
        if (index == 0) {
            int32_t start = pos;
            while (pos < length && text[pos] != ':' && text[pos] != '\\')
                pos = StepChar(text, pos, length);
            int32_t wordLength = pos - start;
            if (wordLength == 0 && pos >= length) break;
            if (wordLength == 0 && length - pos >= 2 && text[pos] == '\\' &&
                text[pos + 1] == '\\') {
                b.kind = PathKindUNC;
                while (pos < length && text[pos] == '\\') ++pos;
                int32_t server = pos;
                while (pos < length && text[pos] != ':' && text[pos] != '\\') ++pos;
                int32_t serverLength = pos - server;
                while (pos < length && text[pos] == '\\') ++pos;
                int32_t share = pos;
                while (pos < length && text[pos] != ':' && text[pos] != '\\') ++pos;
                b.AddUnc(text + server, serverLength, text + share, pos - share);
            } else if (wordLength == 0) {
                // Text that starts with '\' or ':' is on the current drive.
                b.Add(&drive, 1);
            } else {
                // A word followed by ':' is the volume, whatever its length; any other first
                // word starts a relative path.
                if (pos >= length || text[pos] == '\\') b.kind = PathKindRelative;
                AddWord(b, text + start, wordLength);
            }
            while (pos < length && text[pos] == ':') ++pos;
        } else {
            while (pos < length && text[pos] == '\\') ++pos;
            int32_t start = pos;
            while (pos < length && text[pos] != '\\') pos = StepChar(text, pos, length);
            if (pos == start) break;
            AddWord(b, text + start, pos - start);
        }
    }
}

// The POSIX grammar: '/' separates, a leading '/' roots the path. The root is its own
// parent, so ".." directly under it is dropped instead of climbing out of the tree.
void ScanPosix(const uint8_t* text, int32_t length, Builder& b) {
    int32_t pos = 0;
    b.kind = text[0] == '/' ? PathKindAbsolute : PathKindRelative;
    int32_t depth = 0;
    while (pos < length) {
        while (pos < length && text[pos] == '/') ++pos;
        int32_t start = pos;
        while (pos < length && text[pos] != '/') pos = StepChar(text, pos, length);
        int32_t wordLength = pos - start;
        if (wordLength == 0) break;
        if (IsDotDot(text + start, wordLength)) {
            if (b.kind == PathKindAbsolute && depth == 0) continue;
            if (depth > 0) --depth;
        } else if (!IsDot(text + start, wordLength)) {
            ++depth;
        }
        AddWord(b, text + start, wordLength);
    }
}

void Scan(const uint8_t* text, int32_t length, int32_t syntax, uint8_t drive, Builder& b) {
    if (length <= 0) return;
    if (syntax == PathSyntaxPosix)
        ScanPosix(text, length, b);
    else
        ScanWindows(text, length, drive, b);
}

// The volume of the process: the first byte of the current directory, in upper case. Only
// that byte matters, so the buffer is large enough for any directory the host can report.
uint8_t CurrentDrive() {
    char directory[4096] = {};
    plat::CurrentDirectory(directory, sizeof directory);
    return static_cast<uint8_t>(CharToUpper(static_cast<uint8_t>(directory[0])));
}

bool NeedsDrive(const uint8_t* text, int32_t length, int32_t syntax) {
    return syntax != PathSyntaxPosix && length > 0 && (text[0] == '\\' || text[0] == ':');
}

}  // namespace

int32_t FHostPathSyntax(void) {
    return plat::VolumeDepth() == 0 ? PathSyntaxPosix : PathSyntaxWindows;
}

MgStatus FTextToPathSyntax(const uint8_t* text, int32_t length, Path* path, int32_t syntax) {
    if (path == nullptr) return MgBadArgument;
    if (text == nullptr) {
        // The variable is not written: one holding 0 stays 0.
        FEmptyPath(*path);
        return MgNoError;
    }
    uint8_t drive = NeedsDrive(text, length, syntax) ? CurrentDrive() : 0;

    Builder sizing;
    Scan(text, length, syntax, drive, sizing);
    if (sizing.count > kMaxCount) return MgBadArgument;

    if (*path == nullptr) {
        *path = MemNewHandle(sizing.size);
        if (*path == nullptr) return MgNoMemory;
    }
    if (MemResizeHandle(*path, sizing.size) != MgNoError) return MgNoMemory;

    Builder filling;
    filling.block = **path;
    Scan(text, length, syntax, drive, filling);
    WriteKind(**path, filling.kind);
    WriteCount(**path, filling.count);
    return FPathNormalizeSyntax(*path, syntax);
}

MgStatus FTextToPath(const uint8_t* text, int32_t length, Path* path) {
    return FTextToPathSyntax(text, length, path, FHostPathSyntax());
}

MgStatus FLStrToPath(Handle lstr, Path* path) {
    static const uint8_t kNoText[1] = {0};
    if (lstr == nullptr || *lstr == nullptr) return FTextToPath(kNoText, 0, path);
    const LStr* l = reinterpret_cast<const LStr*>(*lstr);
    return FTextToPath(l->text, l->count, path);
}

int32_t FPrevCharOffset(const uint8_t* text, int32_t offset, const void* script) {
    if (offset < 0) {
        MG_FAIL();
        return 0;
    }
    // Characters can only be told apart from the start of the text, so walk forward.
    int32_t previous = 0;
    for (int32_t i = 0; i < offset;) {
        previous = i;
        int32_t next = TextStep(text, i, script);
        i = next > i ? next : i + 1;
    }
    return previous;
}
