// Reading the manifest: JSON through the library, with the line of each resource kept for
// messages, then every field held to what a resource file can store.
#include "mgrsrc/manifest.h"

#include <cstdio>
#include <iterator>
#include <map>
#include <set>

#include "mgrsrc/json.h"
#include "mgrsrc/mgrsrc.h"
#include "mgrsrc/resfile.h"

namespace {

using Parsed = nlohmann::json;
using Event = Parsed::parse_event_t;

// Reads the text for the parser and remembers where it last read, so that an event's line is
// known: the parser reads no further than the character that ends the token it reports.
struct Reading {
    const char* last = nullptr;
};
struct ReadingIterator {
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;
    const char* at;
    Reading* reading;
    const char& operator*() const {
        reading->last = at;
        return *at;
    }
    ReadingIterator& operator++() {
        ++at;
        return *this;
    }
    ReadingIterator operator++(int) {
        ReadingIterator before = *this;
        ++at;
        return before;
    }
    bool operator==(const ReadingIterator& other) const { return at == other.at; }
    bool operator!=(const ReadingIterator& other) const { return at != other.at; }
};

// Lines of one text, counted forward as positions rise.
class LineCounter {
  public:
    explicit LineCounter(const std::string& text) : text_(text) {}
    int LineAt(size_t offset) {
        if (offset > text_.size()) offset = text_.size();
        if (offset < counted_) {
            counted_ = 0;
            line_ = 1;
        }
        for (; counted_ < offset; ++counted_) line_ += text_[counted_] == '\n';
        return line_;
    }

  private:
    const std::string& text_;
    size_t counted_ = 0;
    int line_ = 1;
};

struct Fault {
    int line = 0;
    std::string reason;
};

std::string Quoted(const Parsed& value) {
    return JsonLine(value);
}

// Four bytes of 8-bit text.
bool FourBytes(const Parsed& value, ResType* out) {
    std::string bytes;
    if (!value.is_string() || !JsonBytes(value.get<std::string>(), &bytes) || bytes.size() != 4)
        return false;
    memcpy(out, bytes.data(), 4);
    return true;
}

bool Whole(const Parsed& value, int64_t low, int64_t high, int64_t* out) {
    if (value.is_number_unsigned()) {
        const uint64_t v = value.get<uint64_t>();
        if (v > uint64_t(high)) return false;
        *out = int64_t(v);
        return true;
    }
    if (!value.is_number_integer()) return false;
    *out = value.get<int64_t>();
    return *out >= low && *out <= high;
}

// One resource's object; the empty text when it is sound.
std::string CheckResource(const Parsed& object, ManifestResource* r) {
    static const std::set<std::string> kKeys = {"type", "id",        "name",     "attributes",
                                                "file", "dataOrder", "nameOrder"};
    if (!object.is_object()) return "a resource must be a JSON object";
    for (const auto& [key, value] : object.items())
        if (!kKeys.count(key)) return "unknown key " + Quoted(Parsed(key));
    for (const char* key : {"type", "id", "file"})
        if (!object.contains(key)) return std::string("missing \"") + key + '"';
    if (!FourBytes(object["type"], &r->type))
        return "type " + Quoted(object["type"]) + " is not four bytes";
    int64_t v = 0;
    if (!Whole(object["id"], INT32_MIN, INT32_MAX, &v))
        return "id " + Quoted(object["id"]) +
               (object["id"].is_number_integer() ? " is outside 32 bits (-2147483648 to 2147483647)"
                                                 : " is not a whole number");
    r->id = int32_t(v);
    if (object.contains("name") && !object["name"].is_null()) {
        if (!object["name"].is_string() || !JsonBytes(object["name"].get<std::string>(), &r->name))
            return "name " + Quoted(object["name"]) + " is not 8-bit text (up to \\u00ff)";
        if (r->name.size() > 255) return "name is longer than 255 bytes";
        r->named = !r->name.empty();
    }
    if (object.contains("attributes")) {
        const Parsed& a = object["attributes"];
        if (Whole(a, INT32_MIN, UINT32_MAX, &v))
            r->attrs = int32_t(uint32_t(v));
        else if (!a.is_string() || !ParseAttrs(a.get<std::string>(), &r->attrs))
            return "attributes " + Quoted(a) +
                   " are neither words such as none or protected nor a number";
    }
    if (!object["file"].is_string() || object["file"].get<std::string>().empty())
        return "file must name the data file";
    r->file = object["file"].get<std::string>();
    const std::pair<const char*, int64_t*> orders[] = {{"dataOrder", &r->dataOrder},
                                                       {"nameOrder", &r->nameOrder}};
    for (auto [key, order] : orders)
        if (object.contains(key) && !Whole(object[key], 0, INT32_MAX, order))
            return std::string(key) + " must be a whole number from 0";
    return "";
}

// The header's fields; the empty text when they are sound, else the reason, with the key at
// fault in `key`.
std::string CheckHead(const Parsed& root, Manifest* m, std::string* key) {
    static const std::set<std::string> kKeys = {"version", "fileType", "creator", "emptyNameList",
                                                "resources"};
    auto fault = [key](const std::string& at, const std::string& reason) {
        *key = at;
        return reason;
    };
    for (const auto& [name, value] : root.items())
        if (!kKeys.count(name)) return fault(name, "unknown key " + Quoted(Parsed(name)));
    for (const char* name : {"fileType", "creator", "resources"})
        if (!root.contains(name)) return std::string("missing \"") + name + '"';
    int64_t v = 3;
    if (root.contains("version") && !Whole(root["version"], INT16_MIN, INT16_MAX, &v))
        return fault("version", "version must be a whole number of 16 bits");
    m->version = int16_t(v);
    if (!FourBytes(root["fileType"], &m->fileType))
        return fault("fileType", "fileType " + Quoted(root["fileType"]) + " is not four bytes");
    if (!FourBytes(root["creator"], &m->creator))
        return fault("creator", "creator " + Quoted(root["creator"]) + " is not four bytes");
    if (root.contains("emptyNameList")) {
        if (!root["emptyNameList"].is_boolean())
            return fault("emptyNameList", "emptyNameList must be true or false");
        m->emptyNameList = root["emptyNameList"].get<bool>();
    }
    if (!root["resources"].is_array()) return fault("resources", "resources must be a JSON array");
    return "";
}

// The data files: each there, a plain file, and small enough for a resource.
std::string CheckDataFile(const std::string& dir, ManifestResource* r) {
    r->path = std::filesystem::path(dir) / std::filesystem::path(r->file);
    std::error_code error;
    const auto status = std::filesystem::status(r->path, error);
    if (!std::filesystem::exists(status))
        return "data file " + Quoted(Parsed(r->file)) + " is missing";
    if (!std::filesystem::is_regular_file(status))
        return "data file " + Quoted(Parsed(r->file)) + " is not a regular file";
    const uintmax_t size = std::filesystem::file_size(r->path, error);
    if (error || size > uintmax_t(INT32_MAX - 8))
        return "data file " + Quoted(Parsed(r->file)) + " is too large for a resource";
    r->size = int64_t(size);
    return "";
}

// Parses the text. Each resource is checked as soon as its object ends and then dropped, so
// that a large manifest needs no tree of its own in memory; the first fault is kept.
bool Parse(const std::string& text, const std::string& dir, Manifest* m, Fault* fault) {
    Reading reading;
    LineCounter lines(text);
    std::map<std::string, int> keyLines;
    std::map<std::pair<ResType, int32_t>, int> seen;
    std::string lastKey;
    bool inResources = false;
    int objectLine = 0;
    auto lineNow = [&] { return lines.LineAt(size_t(reading.last - text.data())); };
    auto fail = [&](int line, const std::string& reason) {
        if (fault->reason.empty()) *fault = Fault{line, reason};
    };
    auto each = [&](int depth, Event event, Parsed& parsed) {
        if (depth == 1 && event == Event::key) {
            lastKey = parsed.get<std::string>();
            keyLines[lastKey] = lineNow();
        } else if (depth == 1 && event == Event::array_start) {
            inResources = lastKey == "resources";
        } else if (depth == 1 && event == Event::array_end) {
            inResources = false;
        } else if (depth == 2 && inResources && event == Event::object_start) {
            objectLine = lineNow();
        } else if (depth == 2 && inResources && event == Event::object_end) {
            ManifestResource r;
            r.line = objectLine;
            std::string reason = CheckResource(parsed, &r);
            if (reason.empty()) reason = CheckDataFile(dir, &r);
            if (reason.empty()) {
                auto [at, fresh] = seen.emplace(std::pair(r.type, r.id), r.line);
                if (!fresh)
                    reason = TypeText(r.type) + ' ' + std::to_string(r.id) +
                             " is there already, at line " + std::to_string(at->second);
            }
            if (!reason.empty()) fail(r.line, reason);
            m->resources.push_back(std::move(r));
            return false;
        } else if (depth == 2 && inResources &&
                   (event == Event::value || event == Event::array_start)) {
            fail(lineNow(), "a resource must be a JSON object");
        }
        return true;
    };
    Parsed root;
    try {
        root = Parsed::parse(ReadingIterator{text.data(), &reading},
                             ReadingIterator{text.data() + text.size(), &reading}, each);
    } catch (const Parsed::parse_error& e) {
        // "[json.exception.parse_error.101] parse error at line 3, column 1: syntax error ..."
        std::string what = e.what();
        const size_t column = what.find("column ");
        const size_t colon = what.find(": ", column == std::string::npos ? 0 : column);
        if (colon != std::string::npos) what = what.substr(colon + 2);
        *fault = Fault{lines.LineAt(e.byte ? e.byte - 1 : 0), "not valid JSON: " + what};
        return false;
    }
    if (!fault->reason.empty()) return false;
    if (!root.is_object()) {
        *fault = Fault{1, "the manifest must be a JSON object"};
        return false;
    }
    std::string key;
    const std::string reason = CheckHead(root, m, &key);
    if (!reason.empty()) *fault = Fault{keyLines.count(key) ? keyLines[key] : 1, reason};
    return reason.empty();
}

}  // namespace

int ReadManifest(const std::string& dir, Manifest* manifest) {
    const std::string name = (std::filesystem::path(dir) / kManifestName).string();
    std::string text, why;
    if (!ReadWholeFile(name, &text, &why)) {
        std::fprintf(stderr, "mgrsrc pack: cannot read %s: %s\n", name.c_str(), why.c_str());
        return kExitFailed;
    }
    Fault fault;
    if (Parse(text, dir, manifest, &fault)) return kExitOk;
    std::fprintf(stderr, "mgrsrc pack: %s:%d: %s\n", name.c_str(), fault.line,
                 fault.reason.c_str());
    return kExitUsage;
}

std::vector<std::string> ManifestFiles(const std::string& dir) {
    std::string text, why;
    std::vector<std::string> files;
    if (!ReadWholeFile((std::filesystem::path(dir) / kManifestName).string(), &text, &why))
        return files;
    const Parsed root = Parsed::parse(text, nullptr, false);
    if (!root.is_object() || !root.contains("resources") || !root["resources"].is_array())
        return files;
    for (const Parsed& r : root["resources"]) {
        if (!r.is_object() || !r.contains("file") || !r["file"].is_string()) continue;
        const std::string file = r["file"].get<std::string>();
        // Only names of files right in the folder, and never the manifest itself.
        if (std::filesystem::path(file).filename().string() == file && file != kManifestName &&
            file != "." && file != "..")
            files.push_back(file);
    }
    return files;
}
