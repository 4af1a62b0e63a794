// mgrsrc diff: what changed between two resource files, resource by resource, matched by
// type and id.
#include <cstring>
#include <map>

#include "mgrsrc/mgrsrc.h"

namespace {

const char kHelp[] =
    "usage: mgrsrc diff A B\n"
    "\n"
    "Compares two resource files, matching resources by type and id, and prints one line per\n"
    "difference, ordered by type and id:\n"
    "  - TYPE ID NAME SIZE        only in A\n"
    "  + TYPE ID NAME SIZE        only in B\n"
    "  ~ TYPE ID NAME SIZE -> SIZE, and what else changed: content, name, attributes\n"
    "Differences of file type or creator come first. Nothing is printed when the files hold\n"
    "the same resources.\n"
    "\n"
    "exit status: 0 no differences, 1 bad command line, 2 unreadable or unsound file,\n"
    "3 differences found.\n";

using Key = std::pair<std::string, int32_t>;  // the type's bytes, so that types sort as text

std::map<Key, const Resource*> ByKey(const Image& image) {
    std::map<Key, const Resource*> out;
    for (const Resource& r : image.resources)
        out.emplace(Key(std::string(reinterpret_cast<const char*>(&r.type), 4), r.id), &r);
    return out;
}

std::string SizeText(const Resource& r) {
    return r.size < 0 ? std::string("?") : std::to_string(r.size);
}

std::string Head(char mark, const Resource& r) {
    return std::string(1, mark) + ' ' + TypeText(r.type) + ' ' + std::to_string(r.id) + ' ' +
           QuotedName(r) + ' ';
}

bool SameContent(const Image& a, const Resource& x, const Image& b, const Resource& y) {
    if (x.size < 0 || y.size < 0) return x.size == y.size;
    return x.size == y.size && memcmp(a.Data(x), b.Data(y), size_t(x.size)) == 0;
}

std::string Changes(const Image& a, const Resource& x, const Image& b, const Resource& y) {
    std::string what;
    auto add = [&what](const std::string& part) { what += (what.empty() ? "" : ", ") + part; };
    if (!SameContent(a, x, b, y)) add("content");
    if (x.named != y.named || x.name != y.name)
        add("name " + QuotedName(x) + " -> " + QuotedName(y));
    if (x.attrs != y.attrs) add("attributes " + AttrWords(x.attrs) + " -> " + AttrWords(y.attrs));
    if (what.empty()) return what;
    return Head('~', x) + SizeText(x) + " -> " + SizeText(y) + " bytes: " + what + '\n';
}

}  // namespace

int DiffCommand(const std::vector<std::string>& args) {
    CommandLine line;
    if (int done = SplitArgs("diff", kHelp, args, {}, {}, &line); done >= 0) return done;
    if (line.operands.size() != 2) return UsageError("diff", "expects two files, A and B");
    Image a, b;
    if (!LoadImage("diff", line.operands[0], false, false, &a) || !RequireSound("diff", a) ||
        !LoadImage("diff", line.operands[1], false, false, &b) || !RequireSound("diff", b))
        return kExitFailed;
    std::string out;
    const ResFileHeader &ha = a.summary.header, &hb = b.summary.header;
    if (ha.fileType != hb.fileType)
        out += "~ file type " + TypeText(ha.fileType) + " -> " + TypeText(hb.fileType) + '\n';
    if (ha.creator != hb.creator)
        out += "~ creator " + TypeText(ha.creator) + " -> " + TypeText(hb.creator) + '\n';
    const auto inA = ByKey(a), inB = ByKey(b);
    auto ia = inA.begin();
    auto ib = inB.begin();
    while (ia != inA.end() || ib != inB.end()) {
        if (ib == inB.end() || (ia != inA.end() && ia->first < ib->first)) {
            out += Head('-', *ia->second) + SizeText(*ia->second) + " bytes\n";
            ++ia;
        } else if (ia == inA.end() || ib->first < ia->first) {
            out += Head('+', *ib->second) + SizeText(*ib->second) + " bytes\n";
            ++ib;
        } else {
            out += Changes(a, *ia->second, b, *ib->second);
            ++ia;
            ++ib;
        }
    }
    if (!WriteOut(out)) return kExitFailed;
    return out.empty() ? kExitOk : kExitDifferent;
}
