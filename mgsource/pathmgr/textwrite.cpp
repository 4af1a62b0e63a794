// Writing path text: the user form of either syntax and the portable '/' form, measured or
// written into an LStr, and the handle and buffer forms built on them.
#include "mg/ansi.h"
#include "pathmgr/pathblock.h"

using namespace pathmgr;

uint8_t gNotAPathText[256];

namespace {

// Appends bytes to the text, or only counts them when `out` is null.
struct TextSink {
    uint8_t* out;
    int32_t length = 0;

    void Put(const void* bytes, int32_t n) {
        if (out != nullptr) BlockMove(bytes, out + length, n);
        length += n;
    }
    void Put(const char* text) { Put(text, StrLen(text)); }
    void PutName(ConstPStr name) { Put(name + 1, name[0]); }
};

void WriteWindows(const uint8_t* block, int32_t size, TextSink& sink) {
    int32_t kind = ReadKind(block);
    int32_t count = ReadCount(block);
    if (count == 0 && kind == PathKindRelative) sink.Put(".");
    int32_t offset = kHeaderSize;
    ConstPStr name = nullptr;
    for (int32_t i = 0; i < count; ++i) {
        name = NameAtOffset(block, size, offset);
        if (i > 0) sink.Put("\\");
        if (name[0] == 0)
            sink.Put("..");
        else
            sink.PutName(name);
        if (i == 0 && name[0] != 0 && kind == PathKindAbsolute) sink.Put(":");
        offset = SkipName(block, size, offset);
    }
    // A drive alone reads "C:\", the root of the volume.
    if (count == 1 && kind == PathKindAbsolute && name[0] != 0) sink.Put("\\");
}

void WritePosix(const uint8_t* block, int32_t size, TextSink& sink) {
    int32_t kind = ReadKind(block);
    int32_t count = ReadCount(block);
    if (count == 0 && kind == PathKindRelative) sink.Put(".");
    if (count == 0 && kind == PathKindAbsolute) sink.Put("/");
    int32_t offset = kHeaderSize;
    for (int32_t i = 0; i < count; ++i) {
        ConstPStr name = NameAtOffset(block, size, offset);
        // A network root keeps its own backslashes and needs no '/' in front.
        bool first = i == 0 && kind != PathKindAbsolute;
        if (!first) sink.Put("/");
        if (name[0] == 0)
            sink.Put("..");
        else
            sink.PutName(name);
        offset = SkipName(block, size, offset);
    }
}

void WritePortable(const uint8_t* block, int32_t size, TextSink& sink, bool measuring) {
    int32_t kind = ReadKind(block);
    int32_t count = ReadCount(block);
    if (count == 0) {
        if (kind == PathKindRelative) sink.Put(".");
        if (kind == PathKindAbsolute) sink.Put("/");
        // The measure allows a byte for a network path with no names; nothing is written.
        if (kind == PathKindUNC && measuring) sink.length += 1;
    }
    int32_t offset = kHeaderSize;
    for (int32_t i = 0; i < count; ++i) {
        ConstPStr name = NameAtOffset(block, size, offset);
        if (name[0] == 0) {
            if (i > 0) sink.Put("/");
            sink.Put("..");
        } else {
            if (i > 0 || kind == PathKindAbsolute) sink.Put("/");
            sink.PutName(name);
        }
        offset = SkipName(block, size, offset);
    }
}

enum class Form { User, Portable };

MgStatus TextInto(Path path, LStr* buffer, Form form, int32_t syntax) {
    if (buffer == nullptr) return MgBadArgument;
    if (form == Form::Portable ? !FPathValid(path) : (path != nullptr && !FPathValid(path)))
        return MgBadArgument;
    bool measuring = buffer->count < 0;
    if (!FPathUsable(path)) {
        // Writing leaves the length as the caller set it.
        if (measuring)
            buffer->count = gNotAPathText[0];
        else
            BlockMove(gNotAPathText + 1, buffer->text, gNotAPathText[0]);
        return MgNoError;
    }
    TextSink sink{measuring ? nullptr : buffer->text};
    int32_t size = MemHandleSize(path);
    if (form == Form::Portable)
        WritePortable(*path, size, sink, measuring);
    else if (syntax == PathSyntaxPosix)
        WritePosix(*path, size, sink);
    else
        WriteWindows(*path, size, sink);
    buffer->count = sink.length;
    return MgNoError;
}

using NewFn = Handle (*)(int32_t);
using ResizeFn = MgStatus (*)(Handle, int32_t);

MgStatus ToLStr(Path path, Handle* text, Form form, NewFn newHandle, ResizeFn resize) {
    if (text == nullptr) return MgBadArgument;
    int32_t syntax = FHostPathSyntax();
    LStr measure{-1, {0}};
    MgStatus status = TextInto(path, &measure, form, syntax);
    if (status != MgNoError) return status;
    int32_t size = static_cast<int32_t>(sizeof(int32_t)) + measure.count;
    if (*text == nullptr) {
        *text = newHandle(size);
        if (*text == nullptr) return MgNoMemory;
    } else {
        status = resize(*text, size);
        if (status != MgNoError) return status;
    }
    LStr* l = reinterpret_cast<LStr*>(**text);
    l->count = 0;
    // Not-a-path text leaves the count alone when written, so set it from the measure.
    status = TextInto(path, l, form, syntax);
    l->count = measure.count;
    return status;
}

}  // namespace

MgStatus FPathTextIntoSyntax(Path path, LStr* buffer, int32_t syntax) {
    return TextInto(path, buffer, Form::User, syntax);
}

MgStatus FPathTextInto(Path path, LStr* buffer) {
    return TextInto(path, buffer, Form::User, FHostPathSyntax());
}

MgStatus FPathPortableTextInto(Path path, LStr* buffer) {
    return TextInto(path, buffer, Form::Portable, PathSyntaxWindows);
}

MgStatus FPathToLStr(Path path, Handle* text) {
    return ToLStr(path, text, Form::User, MemNewHandle, MemResizeHandle);
}

MgStatus FPathToCompactLStr(Path path, Handle* text) {
    return ToLStr(path, text, Form::User, CompactNewHandle, CompactResizeHandle);
}

MgStatus FPathToPortableLStr(Path path, Handle* text) {
    return ToLStr(path, text, Form::Portable, MemNewHandle, MemResizeHandle);
}

Handle FPathToCHandle(Path path) {
    Handle text = nullptr;
    if (FPathToLStr(path, &text) != MgNoError) return text;
    int32_t length = reinterpret_cast<LStr*>(*text)->count;
    BlockMove(*text + sizeof(int32_t), *text, length);
    (*text)[length] = 0;
    MemResizeHandle(text, length + 1);
    return text;
}

MgStatus FPathToCBuffer(Path path, char** text) {
    if (text == nullptr) return MgBadArgument;
    *text = reinterpret_cast<char*>(MemNewPtrClear(FCBufferSize));
    if (*text == nullptr) return MgNoMemory;
    LStr measure{-1, {0}};
    MgStatus status = FPathTextInto(path, &measure);
    if (status != MgNoError) return status;
    if (measure.count > FCBufferTextMax) return MgNoMemory;
    LStr* l = reinterpret_cast<LStr*>(*text);
    l->count = 0;
    status = FPathTextInto(path, l);
    if (status != MgNoError) {
        MemDisposePtr(reinterpret_cast<Ptr>(*text));
        *text = nullptr;
        return status;
    }
    BlockMove(*text + sizeof(int32_t), *text, measure.count);
    (*text)[measure.count] = 0;
    return MgNoError;
}
