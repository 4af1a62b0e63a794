// mgrsrc add, remove and set: one edit of a resource file in place, through the library's
// write-back, which puts a new file in the old one's place. What the library refuses is
// refused, with the status in words, and the file stays as it was.
#include <cstdio>

#include "mg/memory.h"
#include "mgrsrc/mgrsrc.h"
#include "mgrsrc/resfile.h"

namespace {

const char kAddHelp[] =
    "usage: mgrsrc add FILE TYPE ID DATAFILE [--name NAME] [--attrs ATTRS]\n"
    "\n"
    "Adds a resource of TYPE (up to four characters, blanks fill) and ID with the bytes of\n"
    "DATAFILE to the resource file FILE, named NAME (up to 255 bytes; none by default), with\n"
    "the attributes ATTRS: words as list prints them (none, protected, changed) or numbers\n"
    "(0x for hexadecimal), joined by commas. An ID the type has already is refused.\n"
    "\n"
    "exit status: 0 added, 1 bad command line, 2 unreadable or unsound file or data file, or\n"
    "an edit or write-back the library refuses (the file is then as it was).\n";

const char kRemoveHelp[] =
    "usage: mgrsrc remove FILE TYPE ID|NAME\n"
    "\n"
    "Removes a resource from FILE. An argument that reads as a whole decimal number is an\n"
    "id, anything else a name (compared without regard to case; the first in id order wins).\n"
    "A protected resource is refused.\n"
    "\n"
    "exit status: 0 removed, 1 bad command line, 2 unreadable or unsound file, no such\n"
    "resource, or an edit or write-back the library refuses (the file is then as it was).\n";

const char kSetHelp[] =
    "usage: mgrsrc set FILE TYPE ID|NAME [--id ID] [--name NAME] [--attrs ATTRS]\n"
    "\n"
    "Changes a resource of FILE, found as remove finds it: its id, its name (an empty NAME\n"
    "takes the name away) or its attributes (as add takes them). A new id or name goes through\n"
    "removing and adding again, so a protected resource keeps both, and an id that the type\n"
    "has already is refused; its data then moves to the end of the data section.\n"
    "\n"
    "exit status: 0 changed, 1 bad command line, 2 unreadable or unsound file, no such\n"
    "resource, or an edit or write-back the library refuses (the file is then as it was).\n";

// A name as the library takes it; false when it is longer than 255 bytes.
bool ToPStr(const std::string& text, uint8_t* pstr) {
    if (text.size() > 255) return false;
    pstr[0] = uint8_t(text.size());
    memcpy(pstr + 1, text.data(), text.size());
    return true;
}

// The resource that `key` names, loaded; reports and gives null when there is none.
Handle Find(const std::string& command, const EditedFile& file, const std::string& name,
            ResType type, const std::string& key) {
    Handle h = nullptr;
    int32_t id = 0;
    uint8_t pstr[256];
    MgStatus status = ParseId(key, &id)   ? RGet(file.id(), type, id, &h)
                      : ToPStr(key, pstr) ? RGetNamed(file.id(), type, pstr, &h)
                                          : MgResourceNotFound;
    if (status == MgResourceNotFound)
        std::fprintf(stderr, "mgrsrc %s: %s has no resource %s %s\n", command.c_str(), name.c_str(),
                     TypeText(type).c_str(), key.c_str());
    else if (status)
        std::fprintf(stderr, "mgrsrc %s: cannot load %s %s of %s: %s\n", command.c_str(),
                     TypeText(type).c_str(), key.c_str(), name.c_str(),
                     StatusWords(status).c_str());
    return status ? nullptr : h;
}

int Refused(const std::string& command, const std::string& what, MgStatus status) {
    std::fprintf(stderr, "mgrsrc %s: cannot %s: %s\n", command.c_str(), what.c_str(),
                 StatusWords(status).c_str());
    return kExitFailed;
}

// TYPE and the options --name and --attrs, checked; the exit status of a usage error, or -1.
int EditOptions(const std::string& command, const CommandLine& line, ResType* type, uint8_t* name,
                int32_t* attrs) {
    if (!ParseType(line.operands[1], type))
        return UsageError(command, "TYPE '" + line.operands[1] + "' isn't one to four characters");
    if (const std::string* n = line.Value("--name"); n && !ToPStr(*n, name))
        return UsageError(command, "a NAME has at most 255 bytes");
    if (const std::string* a = line.Value("--attrs"); a && !ParseAttrs(*a, attrs))
        return UsageError(command, "ATTRS '" + *a + "' aren't words such as protected or numbers");
    return -1;
}

}  // namespace

int AddCommand(const std::vector<std::string>& args) {
    const std::string command = "add";
    CommandLine line;
    if (int done = SplitArgs(command, kAddHelp, args, {}, {"--name", "--attrs"}, &line); done >= 0)
        return done;
    const auto& ops = line.operands;
    if (ops.size() != 4) return UsageError(command, "expects FILE TYPE ID DATAFILE");
    ResType type = 0;
    int32_t id = 0, attrs = 0;
    uint8_t name[256] = {};
    if (int done = EditOptions(command, line, &type, name, &attrs); done >= 0) return done;
    if (!ParseId(ops[2], &id))
        return UsageError(command, "ID '" + ops[2] + "' isn't a 32-bit number");
    std::string data, why;
    if (!ReadWholeFile(ops[3], &data, &why)) {
        std::fprintf(stderr, "mgrsrc add: cannot read %s: %s\n", ops[3].c_str(), why.c_str());
        return kExitFailed;
    }
    EditedFile file;
    if (!file.Open(command, ops[0])) return kExitFailed;
    Handle h = MemNewHandle(int32_t(data.size()));
    if (!h) return Refused(command, "add " + ops[3], MgNoMemory);
    memcpy(*h, data.data(), data.size());
    const std::string what = "add " + TypeText(type) + ' ' + ops[2] + " to " + ops[0];
    if (MgStatus status = RAdd(h, file.id(), type, id, name)) {
        MemDisposeHandle(h);
        return Refused(command, what, status);
    }
    // The word is replaced whole; the changed bit has the write-back write the new data.
    if (MgStatus status = RSetAttrs(h, attrs | RAttrChanged)) return Refused(command, what, status);
    if (!file.Commit(command)) return kExitFailed;
    std::printf("added %s %d, %s, to %s\n", TypeText(type).c_str(), id,
                Count(data.size(), "byte").c_str(), ops[0].c_str());
    return kExitOk;
}

int RemoveCommand(const std::vector<std::string>& args) {
    const std::string command = "remove";
    CommandLine line;
    if (int done = SplitArgs(command, kRemoveHelp, args, {}, {}, &line); done >= 0) return done;
    const auto& ops = line.operands;
    if (ops.size() != 3) return UsageError(command, "expects FILE TYPE ID|NAME");
    ResType type = 0;
    int32_t attrs = 0;
    uint8_t name[256];
    if (int done = EditOptions(command, line, &type, name, &attrs); done >= 0) return done;
    EditedFile file;
    if (!file.Open(command, ops[0])) return kExitFailed;
    Handle h = Find(command, file, ops[0], type, ops[2]);
    if (!h) return kExitFailed;
    int32_t id = 0;
    RGetInfo(h, &id, &type, name);
    if (MgStatus status = RRemove(h, file.id()))
        return Refused(command, "remove " + TypeText(type) + ' ' + ops[2] + " from " + ops[0],
                       status);
    MemDisposeHandle(h);
    if (!file.Commit(command)) return kExitFailed;
    std::printf("removed %s %d from %s\n", TypeText(type).c_str(), id, ops[0].c_str());
    return kExitOk;
}

int SetCommand(const std::vector<std::string>& args) {
    const std::string command = "set";
    CommandLine line;
    if (int done = SplitArgs(command, kSetHelp, args, {}, {"--id", "--name", "--attrs"}, &line);
        done >= 0)
        return done;
    const auto& ops = line.operands;
    if (ops.size() != 3) return UsageError(command, "expects FILE TYPE ID|NAME");
    ResType type = 0;
    int32_t newId = 0, attrs = 0;
    uint8_t oldName[256] = {}, newName[256] = {};
    if (int done = EditOptions(command, line, &type, newName, &attrs); done >= 0) return done;
    const std::string* idText = line.Value("--id");
    if (idText && !ParseId(*idText, &newId))
        return UsageError(command, "ID '" + *idText + "' isn't a 32-bit number");
    EditedFile file;
    if (!file.Open(command, ops[0])) return kExitFailed;
    Handle h = Find(command, file, ops[0], type, ops[2]);
    if (!h) return kExitFailed;
    int32_t oldId = 0, oldAttrs = 0;
    RGetInfo(h, &oldId, &type, oldName);
    RGetAttrs(h, &oldAttrs);
    if (!idText) newId = oldId;
    if (!line.Value("--name")) memcpy(newName, oldName, size_t(oldName[0]) + 1);
    if (!line.Value("--attrs")) attrs = oldAttrs;
    const std::string what = "change " + TypeText(type) + ' ' + ops[2] + " of " + ops[0];
    const bool renamed = newId != oldId || memcmp(newName, oldName, size_t(oldName[0]) + 1) != 0;
    if (renamed) {
        if (MgStatus status = RRemove(h, file.id())) return Refused(command, what, status);
        if (MgStatus status = RAdd(h, file.id(), type, newId, newName)) {
            MemDisposeHandle(h);
            return Refused(command, what, status);
        }
    }
    if (!renamed && attrs == oldAttrs) {
        std::printf("%s %d of %s is already so\n", TypeText(type).c_str(), oldId, ops[0].c_str());
        return kExitOk;
    }
    // A resource added again keeps the changed bit, so that its data is written back.
    const int32_t keep = renamed ? RAttrChanged : 0;
    if (MgStatus status = RSetAttrs(h, attrs | keep)) return Refused(command, what, status);
    if (!file.Commit(command)) return kExitFailed;
    std::string now = "set " + TypeText(type) + ' ' + std::to_string(oldId) + " of " + ops[0] +
                      ": id " + std::to_string(newId) + ", name ";
    AppendName(&now, newName[0] ? newName : nullptr);
    now += ", attributes " + AttrWords(attrs) + '\n';
    return WriteOut(now) ? kExitOk : kExitFailed;
}
