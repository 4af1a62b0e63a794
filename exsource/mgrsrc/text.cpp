// Text forms of types, names and attributes, and file names for extraction.
#include <charconv>
#include <cstdio>
#include <cstring>

#include "mgrsrc/mgrsrc.h"

namespace {

void AppendHex(std::string* out, const char* prefix, uint8_t byte) {
    static const char kDigits[] = "0123456789ABCDEF";
    *out += prefix;
    *out += kDigits[byte >> 4];
    *out += kDigits[byte & 15];
}

void AppendEscaped(std::string* out, const char* bytes, size_t n, char quote) {
    for (size_t i = 0; i < n; ++i) {
        const uint8_t c = uint8_t(bytes[i]);
        if (c == '\\' || (quote && c == uint8_t(quote))) {
            *out += '\\';
            *out += char(c);
        } else if (c < 0x20 || c > 0x7E) {
            AppendHex(out, "\\x", c);
        } else {
            *out += char(c);
        }
    }
}

bool Portable(uint8_t c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-';
}

}  // namespace

void AppendType(std::string* out, ResType type) {
    AppendEscaped(out, reinterpret_cast<const char*>(&type), 4, 0);
}

std::string TypeText(ResType type) {
    std::string out;
    AppendType(&out, type);
    return out;
}

void AppendName(std::string* out, const uint8_t* pstr) {
    if (!pstr) {
        *out += '-';
        return;
    }
    *out += '"';
    AppendEscaped(out, reinterpret_cast<const char*>(pstr + 1), pstr[0], '"');
    *out += '"';
}

std::string QuotedName(const Resource& r) {
    if (!r.named) return "-";
    std::string out = "\"";
    AppendEscaped(&out, r.name.data(), r.name.size(), '"');
    return out + '"';
}

void AppendAttrWords(std::string* out, int32_t attrs) {
    const size_t start = out->size();
    auto add = [out, start](const char* word) {
        if (out->size() > start) *out += ',';
        *out += word;
    };
    if (attrs & RAttrProtected) add("protected");
    if (attrs & RAttrChanged) add("changed");
    if (const uint32_t rest = uint32_t(attrs) & ~uint32_t(RAttrProtected | RAttrChanged)) {
        char hex[16];
        std::snprintf(hex, sizeof hex, "0x%X", rest);
        add(hex);
    }
    if (out->size() == start) *out += "none";
}

std::string AttrWords(int32_t attrs) {
    std::string out;
    AppendAttrWords(&out, attrs);
    return out;
}

std::string SafeFileName(ResType type, int32_t id) {
    std::string out;
    const auto* bytes = reinterpret_cast<const uint8_t*>(&type);
    for (int i = 0; i < 4; ++i) {
        if (Portable(bytes[i]))
            out += char(bytes[i]);
        else
            AppendHex(&out, "%", bytes[i]);
    }
    // The "_id" keeps the stem from ever being a device name such as CON or COM1.
    return out + '_' + std::to_string(id) + ".bin";
}

std::string Count(size_t n, const char* noun) {
    return std::to_string(n) + ' ' + noun + (n == 1 ? "" : "s");
}

std::string FoldedFileName(std::string name) {
    for (char& c : name)
        if (c >= 'A' && c <= 'Z') c = char(c - 'A' + 'a');
    return name;
}

bool ParseType(const std::string& text, ResType* type) {
    if (text.empty() || text.size() > 4) return false;
    char chars[4] = {' ', ' ', ' ', ' '};
    memcpy(chars, text.data(), text.size());
    memcpy(type, chars, 4);
    return true;
}

bool ParseId(const std::string& text, int32_t* id) {
    const char* end = text.data() + text.size();
    auto [at, error] = std::from_chars(text.data(), end, *id);
    return !text.empty() && error == std::errc() && at == end;
}

// The words of AppendAttrWords, and numbers (decimal or 0x hexadecimal), joined by commas.
bool ParseAttrs(const std::string& text, int32_t* attrs) {
    uint32_t bits = 0;
    size_t from = 0;
    do {
        size_t end = text.find(',', from);
        if (end == std::string::npos) end = text.size();
        const std::string word = text.substr(from, end - from);
        uint32_t value = 0;
        const bool hex = word.size() > 2 && word[0] == '0' && (word[1] == 'x' || word[1] == 'X');
        const char* first = word.data() + (hex ? 2 : 0);
        const char* last = word.data() + word.size();
        if (word == "none") {
        } else if (word == "protected") {
            bits |= RAttrProtected;
        } else if (word == "changed") {
            bits |= RAttrChanged;
        } else if (auto [at, error] = std::from_chars(first, last, value, hex ? 16 : 10);
                   first != last && error == std::errc() && at == last) {
            bits |= value;
        } else {
            return false;
        }
        from = end + 1;
    } while (from <= text.size());
    *attrs = int32_t(bits);
    return true;
}
