// mgrsrc list: the header's fields, then one line per resource in the order the map holds
// them (types in type-list order, each type's references as its list stands in the file).
#include <charconv>

#include "mgrsrc/mgrsrc.h"

namespace {

const char kHelp[] =
    "usage: mgrsrc list [--json] FILE\n"
    "\n"
    "Prints the header's fields (version, file type, creator, data and map sizes and\n"
    "offsets), then one line per resource: type, id, name (- for none), size in bytes\n"
    "(? when the data can't be loaded) and attributes in words, in the order the map holds\n"
    "them. --json prints the same as one JSON object.\n"
    "\n"
    "exit status: 0 listed, 1 bad command line, 2 unreadable or unsound file.\n";

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

std::string Text(const Image& image) {
    const ResFileHeader& h = image.summary.header;
    std::string out;
    out.reserve(64 + image.resources.size() * 40);
    AppendField(&out, "version    ", h.version);
    out += "file type  " + TypeText(h.fileType) + "\ncreator    " + TypeText(h.creator) + '\n';
    AppendField(&out, "data size  ", h.dataSize);
    AppendField(&out, "map size   ", h.mapSize);
    if (image.summary.base) AppendField(&out, "embedded at ", image.summary.base);
    AppendField(&out, "resources  ", int64_t(image.resources.size()));
    for (const Resource& r : image.resources) {
        out += TypeText(r.type);
        out += ' ';
        AppendNumber(&out, r.id);
        out += ' ';
        out += QuotedName(r);
        out += ' ';
        if (r.size < 0)
            out += '?';
        else
            AppendNumber(&out, r.size);
        out += ' ';
        out += AttrWords(r.attrs);
        out += '\n';
    }
    return out;
}

std::string TypeJson(ResType type) {
    return JsonString(std::string(reinterpret_cast<const char*>(&type), 4));
}

std::string Json(const Image& image) {
    const ResFileHeader& h = image.summary.header;
    std::string out = "{\"version\":";
    AppendNumber(&out, h.version);
    out += ",\"fileType\":" + TypeJson(h.fileType) + ",\"creator\":" + TypeJson(h.creator);
    out += ",\"dataOffset\":";
    AppendNumber(&out, h.dataOffset);
    out += ",\"dataSize\":";
    AppendNumber(&out, h.dataSize);
    out += ",\"mapOffset\":";
    AppendNumber(&out, h.mapOffset);
    out += ",\"mapSize\":";
    AppendNumber(&out, h.mapSize);
    out += ",\"embeddedAt\":";
    AppendNumber(&out, image.summary.base);
    out += ",\"resources\":[";
    const char* separator = "\n";
    for (const Resource& r : image.resources) {
        out += separator;
        separator = ",\n";
        out += "{\"type\":" + TypeJson(r.type) + ",\"id\":";
        AppendNumber(&out, r.id);
        out += ",\"name\":";
        out += r.named ? JsonString(r.name) : "null";
        out += ",\"size\":";
        if (r.size < 0)
            out += "null";
        else
            AppendNumber(&out, r.size);
        out += ",\"attributes\":[";
        if (r.attrs & RAttrProtected) out += "\"protected\"";
        if (r.attrs & RAttrChanged)
            out += (r.attrs & RAttrProtected) ? ",\"changed\"" : "\"changed\"";
        out += "],\"attributeBits\":";
        AppendNumber(&out, uint32_t(r.attrs));
        out += '}';
    }
    out += "\n]}\n";
    return out;
}

}  // namespace

int ListCommand(const std::vector<std::string>& args) {
    CommandLine line;
    if (int done = SplitArgs("list", kHelp, args, {"--json"}, {}, &line); done >= 0) return done;
    if (line.operands.size() != 1) return UsageError("list", "expects one FILE");
    Image image;
    if (!LoadImage("list", line.operands[0], false, false, &image)) return kExitFailed;
    if (!RequireSound("list", image)) return kExitFailed;
    return WriteOut(line.Has("--json") ? Json(image) : Text(image)) ? kExitOk : kExitFailed;
}
