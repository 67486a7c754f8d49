#include "apps/demo_host/journey_json.h"

#include <algorithm>
#include <fstream>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

namespace demo_host {
namespace {

constexpr std::size_t kMaxQuotedBytes = 60;

// Watches the parser: it takes any depth, and of two members with one name it keeps the last.
class StructureGuard {
 public:
  bool operator()(int depth, Json::parse_event_t event, const Json& parsed) {
    if (depth > kMaxNesting) {
      throw InputError("nested deeper than " + std::to_string(kMaxNesting) + " levels");
    }
    if (event == Json::parse_event_t::object_start) {
      openObjects_.emplace_back();
    } else if (event == Json::parse_event_t::object_end) {
      openObjects_.pop_back();
    } else if (event == Json::parse_event_t::key) {
      takeKey(parsed.get_ref<const std::string&>());
    }
    return true;
  }

 private:
  void takeKey(const std::string& key) {
    if (!openObjects_.back().insert(key).second) {
      throw InputError("an object names \"" + key + "\" twice");
    }
  }

  std::vector<std::set<std::string>> openObjects_;
};

// The parser counts bytes from 1, and points behind what it could not use.
std::string lineAndColumn(std::string_view text, std::size_t byte) {
  const std::string_view before = text.substr(0, byte == 0 ? 0 : byte - 1);
  const auto line = 1 + std::count(before.begin(), before.end(), '\n');
  const auto lineStart = before.rfind('\n');
  const auto column = before.size() - (lineStart == std::string_view::npos ? 0 : lineStart + 1) + 1;
  return std::to_string(line) + ":" + std::to_string(column);
}

// Drops "[json.exception.parse_error.101] parse error at line 2, column 4: ".
std::string reasonOf(const Json::parse_error& error) {
  const std::string message = error.what();
  const auto tag = message.find("] ");
  const auto colon = message.find(": ", tag == std::string::npos ? 0 : tag);
  return colon == std::string::npos ? message : message.substr(colon + 2);
}

// An integer beyond 64 bits signed would wrap in silence.
bool fitsInteger(const Json& value) {
  constexpr std::uint64_t kMost = std::numeric_limits<std::int64_t>::max();
  return value.is_number_unsigned() ? value.get<std::uint64_t>() <= kMost
                                    : value.is_number_integer();
}

std::string readWhole(const std::filesystem::path& file) {
  std::error_code error;
  if (std::filesystem::is_directory(file, error)) throw InputError("is a folder");
  const std::uintmax_t size = std::filesystem::file_size(file, error);
  if (error) throw InputError(error.message());
  if (size > kMaxInputBytes) {
    throw InputError("larger than " + std::to_string(kMaxInputBytes) + " bytes");
  }
  std::ifstream stream(file, std::ios::binary);
  if (!stream) throw InputError("cannot be read");
  std::string text(static_cast<std::size_t>(size), '\0');
  stream.read(text.data(), static_cast<std::streamsize>(text.size()));
  text.resize(static_cast<std::size_t>(stream.gcount()));
  return text;
}

}  // namespace

PlacedError::PlacedError(const Pointer& place, const std::string& fault)
    : InputError(place.empty() ? fault : place.to_string() + ": " + fault) {}

Json parseStrictJson(std::string_view text) {
  try {
    return Json::parse(text, [guard = std::make_shared<StructureGuard>()](
                                 int depth, Json::parse_event_t event, const Json& parsed) {
      return (*guard)(depth, event, parsed);
    });
  } catch (const Json::parse_error& error) {
    throw InputError(lineAndColumn(text, error.byte) + ": " + reasonOf(error));
  } catch (const Json::exception& error) {
    throw InputError(error.what());
  }
}

Json loadStrictJson(const std::filesystem::path& file) {
  try {
    return parseStrictJson(readWhole(file));
  } catch (const InputError& error) {
    throw InputError(file.string() + ": " + error.what());
  }
}

std::string quoted(const Json& value) {
  if (value.is_object()) return "an object";
  if (value.is_array()) return "an array";
  std::string text = value.dump(-1, ' ', false, Json::error_handler_t::replace);
  if (text.size() <= kMaxQuotedBytes) return text;
  // Cut in front of a character, not inside of one.
  std::size_t end = kMaxQuotedBytes;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) --end;
  return text.substr(0, end) + "...";
}

std::string listed(const std::set<std::string>& words) {
  std::string list;
  for (const std::string& word : words) list += (list.empty() ? "" : ", ") + word;
  return list;
}

ObjectReader::ObjectReader(const Json& json, Pointer place)
    : json_(json), place_(std::move(place)) {
  if (!json.is_object()) throw PlacedError(place_, "expected an object, got " + quoted(json));
}

const Json* ObjectReader::find(const std::string& key) {
  known_.insert(key);
  const auto member = json_.find(key);
  return member == json_.end() ? nullptr : &*member;
}

const Json& ObjectReader::require(const std::string& key) {
  const Json* value = find(key);
  if (value == nullptr) throw PlacedError(place_, "\"" + key + "\" is missing");
  return *value;
}

std::optional<std::string> ObjectReader::text(const std::string& key) {
  const Json* value = find(key);
  if (value == nullptr) return std::nullopt;
  if (!value->is_string() || value->get_ref<const std::string&>().empty()) {
    throw PlacedError(placeOf(key), "expected a text, got " + quoted(*value));
  }
  return value->get_ref<const std::string&>();
}

std::optional<bool> ObjectReader::boolean(const std::string& key) {
  const Json* value = find(key);
  if (value == nullptr) return std::nullopt;
  if (!value->is_boolean()) {
    throw PlacedError(placeOf(key), "expected true or false, got " + quoted(*value));
  }
  return value->get<bool>();
}

std::optional<std::int64_t> ObjectReader::integer(const std::string& key, std::int64_t least,
                                                  std::int64_t most) {
  const Json* value = find(key);
  if (value == nullptr) return std::nullopt;
  if (!fitsInteger(*value) || value->get<std::int64_t>() < least ||
      value->get<std::int64_t>() > most) {
    throw PlacedError(placeOf(key), "expected an integer from " + std::to_string(least) + " to " +
                                        std::to_string(most) + ", got " + quoted(*value));
  }
  return value->get<std::int64_t>();
}

void ObjectReader::finish() const {
  for (const auto& [key, value] : json_.items()) {
    if (!known_.contains(key)) {
      throw PlacedError(placeOf(key), "no such key; known are " + listed(known_));
    }
  }
}

}  // namespace demo_host
