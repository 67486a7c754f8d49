// Reading the JSON of a journey: strictly, and with the place of whatever is wrong.
#pragma once

#include <cstdint>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "apps/demo_host/demo_errors.h"
#include "quorvance/json.h"

namespace demo_host {

using quorvance::Json;
using Pointer = Json::json_pointer;

// What a checkpoint may hold is far below both.
inline constexpr std::uintmax_t kMaxInputBytes = std::uintmax_t{4} << 20;
inline constexpr int kMaxNesting = 64;

// A fault at a place (RFC 6901): "/steps/3/ask: ...".
class PlacedError : public InputError {
 public:
  PlacedError(const Pointer& place, const std::string& fault);
};

// Throws InputError: "LINE:COLUMN: ..." for what is no JSON, else the fault; an object that names a
// member twice is refused.
Json parseStrictJson(std::string_view text);

// As parseStrictJson, with the file in front of the message.
Json loadStrictJson(const std::filesystem::path& file);

// A value for a message: "an object", "an array", else compact JSON, shortened.
std::string quoted(const Json& value);

// "A, B, C"
std::string listed(const std::set<std::string>& words);

// The members of one object. What is asked for is known; finish() refuses everything else. Every
// operation throws PlacedError.
class ObjectReader {
 public:
  ObjectReader(const Json& json, Pointer place);

  const Pointer& place() const { return place_; }
  Pointer placeOf(const std::string& key) const { return place_ / key; }

  // Null when there is none.
  const Json* find(const std::string& key);
  const Json& require(const std::string& key);
  // Never an empty text.
  std::optional<std::string> text(const std::string& key);
  std::optional<bool> boolean(const std::string& key);
  std::optional<std::int64_t> integer(const std::string& key, std::int64_t least,
                                      std::int64_t most);
  void finish() const;

 private:
  const Json& json_;
  Pointer place_;
  std::set<std::string> known_;
};

}  // namespace demo_host
