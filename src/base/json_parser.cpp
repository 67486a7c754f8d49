#include <cstddef>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "base/json.h"

namespace quorvance {
namespace {

/// From so many members on, the keys of an object are looked up and no longer compared one by one.
constexpr std::size_t kMaxComparedKeys = 32;

/// Builds the value while the parser reads it, in the same way as the JSON library's own builder:
/// of two members with one key the later value stands in the earlier place. Unlike that it compares
/// no member with all others and copies nothing that grows: what is not closed yet stands on one
/// stack of entries, and an object or an array is made when it closes.
class JsonHandler {
 public:
  JsonHandler() = default;
  ~JsonHandler() {
    for (Entry& entry : entries_) discardJson(entry.value);
  }
  JsonHandler(const JsonHandler&) = delete;
  JsonHandler& operator=(const JsonHandler&) = delete;

  // What the parser calls; false ends the reading.
  bool null() { return take(Json()); }
  bool boolean(bool value) { return take(Json(value)); }
  bool number_integer(Json::number_integer_t value) { return take(Json(value)); }
  bool number_unsigned(Json::number_unsigned_t value) { return take(Json(value)); }
  bool number_float(Json::number_float_t value, const std::string&) { return take(Json(value)); }
  bool string(std::string& value) { return take(Json(std::move(value))); }
  bool binary(Json::binary_t&) { return false; }  // JSON text has none
  bool start_object(std::size_t) { return open(true); }
  bool start_array(std::size_t) { return open(false); }
  bool key(std::string& key);
  bool end_object();
  bool end_array();
  template <class Error>
  bool parse_error(std::size_t, const std::string&, const Error&) {
    return false;
  }

  Json takeRoot() { return std::move(entries_.front().value); }

 private:
  struct Entry {
    std::string key;  // empty for what is no member
    Json value;
  };
  using KeyIndex = std::map<std::string, std::size_t, std::less<>>;
  /// An object or an array that is not closed yet.
  struct Container {
    bool isObject = false;
    /// The entry that becomes the container, and the first of those that it holds.
    std::size_t entry = 0;
    std::size_t first = 0;
    /// The entry of the member whose value comes next.
    std::size_t member = 0;
    /// Made when there are many members.
    std::unique_ptr<KeyIndex> index = nullptr;
  };

  bool take(Json value);
  bool open(bool isObject);
  bool close(Json value);
  bool isFull() { return ++values_ > kMaxJsonValues; }
  std::size_t entryOfNextValue();
  std::size_t findMember(Container& object, const std::string& key);
  std::size_t findIndexed(Container& object, const std::string& key);

  std::vector<Entry> entries_;
  std::vector<Container> containers_;
  std::size_t values_ = 0;
};

bool JsonHandler::take(Json value) {
  if (isFull()) return false;
  entries_[entryOfNextValue()].value = std::move(value);
  return true;
}

std::size_t JsonHandler::entryOfNextValue() {
  if (!containers_.empty() && containers_.back().isObject) return containers_.back().member;
  entries_.emplace_back();
  return entries_.size() - 1;
}

bool JsonHandler::open(bool isObject) {
  if (containers_.size() >= kMaxJsonDepth || isFull()) return false;
  const std::size_t entry = entryOfNextValue();
  containers_.push_back({isObject, entry, entries_.size()});
  return true;
}

bool JsonHandler::key(std::string& key) {
  Container& object = containers_.back();
  object.member = findMember(object, key);
  if (object.member == entries_.size()) entries_.push_back({std::move(key), Json()});
  return true;
}

// The member's entry, or where a new one will stand.
std::size_t JsonHandler::findMember(Container& object, const std::string& key) {
  if (entries_.size() - object.first >= kMaxComparedKeys) return findIndexed(object, key);
  std::size_t i = object.first;
  while (i < entries_.size() && entries_[i].key != key) ++i;
  return i;
}

std::size_t JsonHandler::findIndexed(Container& object, const std::string& key) {
  if (object.index == nullptr) {
    object.index = std::make_unique<KeyIndex>();
    for (std::size_t i = object.first; i < entries_.size(); ++i) {
      object.index->emplace(entries_[i].key, i);
    }
  }
  return object.index->try_emplace(key, entries_.size()).first->second;
}

bool JsonHandler::end_object() {
  const std::size_t first = containers_.back().first;
  Json object = makeObject(entries_.size() - first);
  auto& members = object.get_ref<Json::object_t&>();
  for (std::size_t i = first; i < entries_.size(); ++i) {
    members.emplace_back(std::move(entries_[i].key), std::move(entries_[i].value));
  }
  return close(std::move(object));
}

bool JsonHandler::end_array() {
  const std::size_t first = containers_.back().first;
  Json array = Json::array();
  auto& elements = array.get_ref<Json::array_t&>();
  elements.reserve(entries_.size() - first);
  for (std::size_t i = first; i < entries_.size(); ++i) {
    elements.push_back(std::move(entries_[i].value));
  }
  return close(std::move(array));
}

bool JsonHandler::close(Json value) {
  const Container& closed = containers_.back();
  entries_.resize(closed.first);
  entries_[closed.entry].value = std::move(value);
  containers_.pop_back();
  return true;
}

}  // namespace

std::optional<Json> parseJson(std::string_view text) {
  // The parser takes it for the end and does not look at what follows.
  if (text.find('\0') != std::string_view::npos) return std::nullopt;
  JsonHandler builder;
  if (!Json::sax_parse(text.begin(), text.end(), &builder)) return std::nullopt;
  return builder.takeRoot();
}

}  // namespace quorvance
