// JSON as the risk server reads and writes it: with a nesting limit, and never throwing at a
// request.
#pragma once

#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace risk_server {

using Json = nlohmann::ordered_json;

// A body holds a few levels of its own around what the host attached.
inline constexpr std::size_t kMaxJsonNesting = 200;
inline constexpr std::uintmax_t kMaxInputFileBytes = std::uintmax_t{16} << 20;

// A file, an argument or a control body is wrong. what() names the place and the fault.
class InputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct ParsedJson {
  std::optional<Json> value;
  std::string fault;  // why there is no value
};

ParsedJson parseServerJson(std::string_view text);

// Compact. What is not UTF-8 is replaced by U+FFFD.
std::string dumpServerJson(const Json& value);

bool isUtf8(const std::string& bytes);

// The bytes of a file. Throws InputError naming it.
std::string loadServerText(const std::filesystem::path& file, std::uintmax_t mostBytes);

// Throws InputError naming the file, and the line where the text is no JSON.
Json loadServerJson(const std::filesystem::path& file);

// As loadServerJson, of a text whose origin is `name`.
Json readServerJson(std::string_view text, const std::string& name);

// The member, or null when `object` is no object or has no such member.
const Json* findMember(const Json& object, const std::string& key);

// The text at a dotted path such as "keys.user_id"; absent when there is none or it is no text.
std::optional<std::string> findText(const Json& object, std::string_view path);

// The integer at a dotted path; absent when there is none or it is none.
std::optional<std::int64_t> findInteger(const Json& object, std::string_view path);

// What stands at a dotted path, or null.
const Json* findPath(const Json& object, std::string_view path);

// Where a member stands, for a message: its object's place, a dot, its key.
std::string memberPlace(const std::string& place, std::string_view key);

// A value for a message: compact JSON, shortened.
std::string quoteForMessage(const Json& value);

}  // namespace risk_server
