// What the commands of mgrsrc share: a resource file read whole and checked by the library,
// the text forms of its parts, and the command line's small helpers.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "mg/rescheck.h"

// Exit statuses, the same for every command.
enum ExitStatus {
    kExitOk = 0,
    kExitUsage = 1,
    kExitFailed = 2,     // the file can't be read, isn't sound, or has no such resource
    kExitDifferent = 3,  // diff: the files differ
};

struct Resource {
    ResType type = 0;
    int32_t id = 0;
    int32_t attrs = 0;
    bool named = false;
    std::string name;
    int64_t nameAt = -1;  // of its count byte; -1: no name
    int64_t entryAt = 0;
    int64_t dataAt = -1;  // -1: the data can't be loaded
    int32_t size = -1;
};

// A resource file in memory, as the library's check sees it.
struct Image {
    std::string path;
    std::unique_ptr<uint8_t[]> bytes;
    int64_t length = 0;
    RCheckSummary summary{};
    std::vector<Resource> resources;      // unless each resource went to a callback
    std::vector<RCheckFinding> findings;  // all when asked for, else the first fault
    const uint8_t* Data(const Resource& r) const { return bytes.get() + r.dataAt; }
};

// Reads `path` whole and checks it; `notices` also looks for the suspicious. Each resource
// goes to `each` when given, else into image->resources. False, with a message on standard
// error, when the file can't be read or memory runs out.
using EachResource = std::function<void(const RCheckedRef&)>;
bool LoadImage(const std::string& command, const std::string& path, bool keepFindings, bool notices,
               Image* image, const EachResource& each = nullptr);
// False, with a message naming the first fault, when the reader wouldn't open the file.
bool RequireSound(const std::string& command, const Image& image);
// False, with a message naming the first fault, when verify would call the file unsound.
bool RequireVerified(const std::string& command, const Image& image);
// The first fault of an image, as a text with its offset.
std::string FirstFault(const Image& image);

// Text forms. A type is its four characters, with \xHH for any that isn't printable ASCII.
std::string TypeText(ResType type);
// The same forms appended, for long listings.
void AppendType(std::string* out, ResType type);
void AppendName(std::string* out, const uint8_t* pstr);  // "name", or - for null
void AppendAttrWords(std::string* out, int32_t attrs);
std::string QuotedName(const Resource& r);  // "name" with escapes, or - for none
std::string AttrWords(int32_t attrs);       // none, or e.g. protected,changed,0x40
// Attributes as AttrWords writes them, or as numbers (0x for hexadecimal), joined by commas.
bool ParseAttrs(const std::string& text, int32_t* attrs);
// A file name from type and id that every host accepts: TYPE_ID.bin with every byte of the
// type outside [A-Za-z0-9-] as %HH; never a reserved device name, never a separator.
std::string SafeFileName(ResType type, int32_t id);
// A file name as hosts that don't tell case apart see it: A-Z lower-cased.
std::string FoldedFileName(std::string name);
// "1 resource", "2 resources".
std::string Count(size_t n, const char* noun);
// A TYPE argument: up to four characters, blanks fill. False when longer or empty.
bool ParseType(const std::string& text, ResType* type);
bool ParseId(const std::string& text, int32_t* id);

// Command entry points; `args` are the words after the command's name.
int ListCommand(const std::vector<std::string>& args);
int ExtractCommand(const std::vector<std::string>& args);
int VerifyCommand(const std::vector<std::string>& args);
int DiffCommand(const std::vector<std::string>& args);
int UnpackCommand(const std::vector<std::string>& args);
int PackCommand(const std::vector<std::string>& args);
int AddCommand(const std::vector<std::string>& args);
int RemoveCommand(const std::vector<std::string>& args);
int SetCommand(const std::vector<std::string>& args);

// extract --all and unpack: the file name of each resource's data, in the order of
// image.resources.
std::vector<std::string> DataFileNames(const Image& image);
// Writes `size` bytes to the file `path`, or to standard output for "-".
bool WriteBytes(const std::string& path, const uint8_t* data, int32_t size);

// Usage errors: the message and a pointer to --help on standard error; returns kExitUsage.
int UsageError(const std::string& command, const std::string& message);
// Writes all of `text` to standard output; false when it can't.
bool WriteOut(const std::string& text);

// A command's words split into options and operands.
struct CommandLine {
    std::vector<std::string> operands;
    std::vector<std::string> flags;                           // given flags, e.g. --json
    std::vector<std::pair<std::string, std::string>> values;  // options with a value, e.g. -o
    bool Has(const std::string& flag) const;
    const std::string* Value(const std::string& option) const;  // the last one given
};
// Splits `args`: `flags` and `valued` name the options the command knows; --help prints
// `help` on standard output; "--" ends the options. -1 when the command is to run, else the
// exit status to end with (0 after --help, 1 after a usage error).
int SplitArgs(const std::string& command, const char* help, const std::vector<std::string>& args,
              const std::vector<std::string>& flags, const std::vector<std::string>& valued,
              CommandLine* out);
