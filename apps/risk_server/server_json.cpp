#include "apps/risk_server/server_json.h"

#include <fstream>
#include <utility>

namespace risk_server {
namespace {

constexpr std::size_t kMaxQuotedBytes = 80;

// The parser itself takes any depth, but copies and dumps recurse.
bool nestsTooDeep(std::string_view text) {
  std::size_t depth = 0;
  bool inText = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (inText) {
      if (c == '\\') {
        ++i;
      } else if (c == '"') {
        inText = false;
      }
    } else if (c == '"') {
      inText = true;
    } else if (c == '[' || c == '{') {
      if (++depth > kMaxJsonNesting) return true;
    } else if ((c == ']' || c == '}') && depth > 0) {
      --depth;
    }
  }
  return false;
}

// Drops the library's "[json.exception.parse_error.101] " in front of its message.
std::string withoutExceptionTag(const std::string& message) {
  const auto end = message.find("] ");
  return end == std::string::npos ? message : message.substr(end + 2);
}

}  // namespace

ParsedJson parseServerJson(std::string_view text) {
  if (nestsTooDeep(text)) {
    return {std::nullopt, "nested deeper than " + std::to_string(kMaxJsonNesting) + " levels"};
  }
  try {
    return {Json::parse(text), ""};
  } catch (const Json::exception& error) {
    // The message quotes the input, which need not be UTF-8.
    return {std::nullopt, withoutExceptionTag(error.what())};
  }
}

std::string dumpServerJson(const Json& value) {
  return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

bool isUtf8(const std::string& bytes) {
  try {
    (void)Json(bytes).dump();
    return true;
  } catch (const Json::type_error&) {
    return false;
  }
}

Json readServerJson(std::string_view text, const std::string& name) {
  ParsedJson parsed = parseServerJson(text);
  if (!parsed.value) throw InputError(name + ": " + parsed.fault);
  return std::move(*parsed.value);
}

std::string loadServerText(const std::filesystem::path& file, std::uintmax_t mostBytes) {
  std::error_code error;
  if (std::filesystem::is_directory(file, error)) throw InputError(file.string() + ": is a folder");
  const std::uintmax_t size = std::filesystem::file_size(file, error);
  if (error) throw InputError(file.string() + ": " + error.message());
  if (size > mostBytes) {
    throw InputError(file.string() + ": larger than " + std::to_string(mostBytes >> 20U) + " MiB");
  }
  std::ifstream stream(file, std::ios::binary);
  if (!stream) throw InputError(file.string() + ": cannot be read");
  std::string text(static_cast<std::size_t>(size), '\0');
  stream.read(text.data(), static_cast<std::streamsize>(text.size()));
  if (stream.bad()) throw InputError(file.string() + ": reading failed");
  text.resize(static_cast<std::size_t>(stream.gcount()));
  return text;
}

Json loadServerJson(const std::filesystem::path& file) {
  return readServerJson(loadServerText(file, kMaxInputFileBytes), file.string());
}

const Json* findMember(const Json& object, const std::string& key) {
  if (!object.is_object()) return nullptr;
  const auto found = object.find(key);
  return found == object.end() ? nullptr : &*found;
}

const Json* findPath(const Json& object, std::string_view path) {
  const Json* value = &object;
  while (value != nullptr && !path.empty()) {
    const auto dot = path.find('.');
    value = findMember(*value, std::string(path.substr(0, dot)));
    path = dot == std::string_view::npos ? std::string_view() : path.substr(dot + 1);
  }
  return value;
}

std::optional<std::int64_t> findInteger(const Json& object, std::string_view path) {
  const Json* value = findPath(object, path);
  if (value == nullptr || !value->is_number_integer()) return std::nullopt;
  return value->get<std::int64_t>();
}

std::optional<std::string> findText(const Json& object, std::string_view path) {
  const Json* value = findPath(object, path);
  if (value == nullptr || !value->is_string()) return std::nullopt;
  return value->get<std::string>();
}

std::string memberPlace(const std::string& place, std::string_view key) {
  return std::string(place).append(1, '.').append(key);
}

std::string quoteForMessage(const Json& value) {
  if (value.is_object()) return "an object";
  if (value.is_array()) return "an array of " + std::to_string(value.size());
  std::string text = dumpServerJson(value);
  if (text.size() > kMaxQuotedBytes) {
    // Cut in front of a character, not inside of one.
    std::size_t end = kMaxQuotedBytes;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) --end;
    text = text.substr(0, end) + "...";
  }
  return text;
}

}  // namespace risk_server
