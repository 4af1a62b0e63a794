// 8-bit text to and from JSON strings, and values as one line of printable ASCII.
#include "mgrsrc/json.h"

Json JsonText(const char* bytes, size_t n) {
    std::string utf8;
    utf8.reserve(n);
    for (size_t i = 0; i < n; ++i) {
        const uint8_t c = uint8_t(bytes[i]);
        if (c < 0x80) {
            utf8 += char(c);
        } else {
            utf8 += char(0xC0 | (c >> 6));
            utf8 += char(0x80 | (c & 0x3F));
        }
    }
    return Json(std::move(utf8));
}

Json JsonText(const std::string& bytes) {
    return JsonText(bytes.data(), bytes.size());
}

// The parser has checked that the text is well-formed UTF-8: U+0080 to U+00FF are the two-byte
// sequences that start with C2 or C3, and anything else above 7F is a character beyond them.
bool JsonBytes(const std::string& utf8, std::string* bytes) {
    bytes->clear();
    for (size_t i = 0; i < utf8.size(); ++i) {
        const uint8_t c = uint8_t(utf8[i]);
        if (c < 0x80) {
            *bytes += char(c);
        } else if ((c == 0xC2 || c == 0xC3) && i + 1 < utf8.size()) {
            *bytes += char(((c & 0x03) << 6) | (uint8_t(utf8[++i]) & 0x3F));
        } else {
            return false;
        }
    }
    return true;
}

namespace {

// The library escapes control characters and, asked to, everything above 7F; DEL it leaves as
// it is, and it can only stand inside a string.
template <typename Value>
std::string Line(const Value& value) {
    std::string text = value.dump(-1, ' ', true);
    for (size_t at = 0; (at = text.find('\x7F', at)) != std::string::npos;)
        text.replace(at, 1, "\\u007f");
    return text;
}

}  // namespace

std::string JsonLine(const Json& value) {
    return Line(value);
}

std::string JsonLine(const nlohmann::json& value) {
    return Line(value);
}
