// mgrsrc list: the header's fields, then one line per resource in the order the map holds
// them (types in type-list order, each type's references as its list stands in the file).
#include <charconv>

#include "mgrsrc/json.h"
#include "mgrsrc/mgrsrc.h"

namespace {

const char kHelp[] =
    "usage: mgrsrc list [--json] FILE\n"
    "\n"
    "Prints the header's fields (version, file type, creator, data and map sizes, where an\n"
    "embedded file starts, the number of resources), a line that names the columns, then one\n"
    "line per resource: type, id, name (- for none), size in bytes (? when the data can't be\n"
    "loaded) and attributes in words, in the order the map holds them. --json prints the same\n"
    "as one JSON object, with the data and map offsets as well.\n"
    "\n"
    "exit status: 0 listed, 1 bad command line, 2 unreadable or unsound file.\n";

constexpr size_t kPiece = 64 * 1024;  // of output, written at once

void AppendNumber(std::string* out, int64_t v) {
    char digits[24];
    auto [end, error] = std::to_chars(digits, digits + sizeof digits, v);
    (void)error;
    out->append(digits, end);
}

void AppendField(std::string* out, const char* name, int64_t v) {
    *out += name;
    AppendNumber(out, v);
    *out += '\n';
}

// One line per resource, made as the check meets them: a listing of many resources keeps
// no record of each.
void AppendLine(std::string* out, const RCheckedRef& r) {
    AppendType(out, r.type);
    *out += ' ';
    AppendNumber(out, r.id);
    *out += ' ';
    AppendName(out, r.name);
    *out += ' ';
    if (r.size < 0)
        *out += '?';
    else
        AppendNumber(out, r.size);
    *out += ' ';
    AppendAttrWords(out, r.attrs);
    *out += '\n';
}

std::string Head(const Image& image) {
    const ResFileHeader& h = image.summary.header;
    std::string out;
    AppendField(&out, "version    ", h.version);
    out += "file type  " + TypeText(h.fileType) + "\ncreator    " + TypeText(h.creator) + '\n';
    AppendField(&out, "data size  ", h.dataSize);
    AppendField(&out, "map size   ", h.mapSize);
    if (image.summary.base) AppendField(&out, "embedded at ", image.summary.base);
    AppendField(&out, "resources  ", image.summary.resources);
    return out + "type id name size attributes\n";
}

void AppendJsonLine(std::string* out, const RCheckedRef& r, bool first) {
    Json attributes = Json::array();
    if (r.attrs & RAttrProtected) attributes.push_back("protected");
    if (r.attrs & RAttrChanged) attributes.push_back("changed");
    const Json line = {
        {"type", JsonText(reinterpret_cast<const char*>(&r.type), 4)},
        {"id", r.id},
        {"name", r.name ? JsonText(reinterpret_cast<const char*>(r.name + 1), r.name[0]) : Json()},
        {"size", r.size < 0 ? Json() : Json(r.size)},
        {"attributes", std::move(attributes)},
        {"attributeBits", uint32_t(r.attrs)},
    };
    *out += first ? "\n" : ",\n";
    *out += JsonLine(line);
}

// The header's fields, and the start of the list of resources that follows in pieces.
std::string JsonHead(const Image& image) {
    const ResFileHeader& h = image.summary.header;
    const Json head = {
        {"version", h.version},
        {"fileType", JsonText(reinterpret_cast<const char*>(&h.fileType), 4)},
        {"creator", JsonText(reinterpret_cast<const char*>(&h.creator), 4)},
        {"dataOffset", h.dataOffset},
        {"dataSize", h.dataSize},
        {"mapOffset", h.mapOffset},
        {"mapSize", h.mapSize},
        {"embeddedAt", image.summary.base},
    };
    std::string out = JsonLine(head);
    out.pop_back();
    return out + ",\"resources\":[";
}

}  // namespace

int ListCommand(const std::vector<std::string>& args) {
    CommandLine line;
    if (int done = SplitArgs("list", kHelp, args, {"--json"}, {}, &line); done >= 0) return done;
    if (line.operands.size() != 1) return UsageError("list", "expects one FILE");
    const bool json = line.Has("--json");
    // The lines go out in pieces as the check meets the resources: every fault that stops
    // opening is known before the first resource, and so is their number.
    Image image;
    std::string body;
    bool started = false, written = true;
    auto start = [&] {
        if (started) return;
        started = true;
        written = WriteOut(json ? JsonHead(image) : Head(image));
        body.reserve(kPiece + 1024);
    };
    EachResource each = [&](const RCheckedRef& r) {
        if (image.summary.openStatus) return;
        const bool first = !started;
        start();
        if (json)
            AppendJsonLine(&body, r, first);
        else
            AppendLine(&body, r);
        if (body.size() >= kPiece) {
            written = written && WriteOut(body);
            body.clear();
        }
    };
    if (!LoadImage("list", line.operands[0], false, false, &image, each)) return kExitFailed;
    if (!RequireSound("list", image)) return kExitFailed;
    start();
    if (json) body += "\n]}\n";
    return written && WriteOut(body) ? kExitOk : kExitFailed;
}
