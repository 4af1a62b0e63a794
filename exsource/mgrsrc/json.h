// JSON through nlohmann/json, for list --json and the manifest of unpack and pack. Keys keep
// the order they were put in.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

using Json = nlohmann::ordered_json;

// 8-bit text as a JSON string. Each byte stands for the code point of the same number: the
// format's text is 8-bit and no code page is recorded in the file, so that JsonBytes gives
// back the exact bytes.
Json JsonText(const char* bytes, size_t n);
Json JsonText(const std::string& bytes);
// The bytes of such a string; false when it holds a character above U+00FF.
bool JsonBytes(const std::string& utf8, std::string* bytes);
// A value on one line, with every character that isn't printable ASCII escaped.
std::string JsonLine(const Json& value);
std::string JsonLine(const nlohmann::json& value);
