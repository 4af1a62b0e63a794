// Writing the manifest: the header's fields one a line, then one resource a line, with the
// keys of a layout other than a fresh pack's only where the file has one.
#include <algorithm>

#include "mgrsrc/json.h"
#include "mgrsrc/manifest.h"
#include "mgrsrc/mgrsrc.h"

namespace {

Json ResourceLine(const Resource& r, const std::string& file, int64_t dataOrder,
                  int64_t nameOrder) {
    Json line = {
        {"type", JsonText(reinterpret_cast<const char*>(&r.type), 4)},
        {"id", r.id},
        {"name", r.named ? JsonText(r.name) : Json()},
        {"attributes", AttrWords(r.attrs)},
        {"file", file},
    };
    if (dataOrder >= 0) line["dataOrder"] = dataOrder;
    if (nameOrder >= 0) line["nameOrder"] = nameOrder;
    return line;
}

// An object on one line, with a blank after each colon and comma, as people write it.
std::string Spaced(const Json& object) {
    std::string out = "{";
    for (const auto& [key, value] : object.items()) {
        if (out.size() > 1) out += ", ";
        out += JsonLine(Json(key)) + ": " + JsonLine(value);
    }
    return out + '}';
}

// Each resource's place when the resources are sorted by `key` (stable), or nothing when that
// is the order they already stand in.
template <typename Key>
std::vector<int64_t> Places(const std::vector<Resource>& resources, Key key) {
    std::vector<size_t> order;
    for (size_t i = 0; i < resources.size(); ++i)
        if (key(resources[i]) >= 0) order.push_back(i);
    std::vector<size_t> sorted = order;
    std::stable_sort(sorted.begin(), sorted.end(),
                     [&](size_t a, size_t b) { return key(resources[a]) < key(resources[b]); });
    std::vector<int64_t> places;
    if (sorted == order) return places;
    places.assign(resources.size(), -1);
    for (size_t place = 0; place < sorted.size(); ++place) places[sorted[place]] = int64_t(place);
    return places;
}

uint32_t Big32(const uint8_t* p) {
    return uint32_t(p[0]) << 24 | uint32_t(p[1]) << 16 | uint32_t(p[2]) << 8 | p[3];
}

}  // namespace

std::string ManifestText(const Image& image, const std::vector<std::string>& files) {
    const ResFileHeader& h = image.summary.header;
    const std::vector<Resource>& resources = image.resources;
    const std::vector<int64_t> dataPlaces =
        Places(resources, [](const Resource& r) { return r.dataAt; });
    const std::vector<int64_t> namePlaces =
        Places(resources, [](const Resource& r) { return r.named ? r.nameAt : -1; });
    std::string out = "{\n  \"version\": " + std::to_string(h.version) + ",\n";
    out += "  \"fileType\": " + JsonLine(JsonText(reinterpret_cast<const char*>(&h.fileType), 4));
    out += ",\n  \"creator\": " + JsonLine(JsonText(reinterpret_cast<const char*>(&h.creator), 4));
    // A map whose names have all gone keeps its name list, empty, at its end.
    bool named = false;
    for (const Resource& r : resources) named = named || r.named;
    const uint8_t* map = image.bytes.get() + image.summary.base + h.mapOffset;
    if (!named && !resources.empty() && Big32(map + 48) == uint32_t(h.mapSize))
        out += ",\n  \"emptyNameList\": true";
    out += ",\n  \"resources\": [";
    for (size_t i = 0; i < resources.size(); ++i) {
        out += i ? ",\n    " : "\n    ";
        out += Spaced(ResourceLine(resources[i], files[i], dataPlaces.empty() ? -1 : dataPlaces[i],
                                   namePlaces.empty() ? -1 : namePlaces[i]));
    }
    return out + (resources.empty() ? "]\n}\n" : "\n  ]\n}\n");
}
