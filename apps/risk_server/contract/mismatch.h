// What is wrong with a body, and where.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "apps/risk_server/server_json.h"

namespace risk_server {

// A body that is wrong all over need not be told in full.
inline constexpr std::size_t kMaxMismatches = 100;

// The keys and indexes that lead to a value from the root; no step for the root itself.
using PlaceStep = std::variant<std::string, std::size_t>;
using Place = std::vector<PlaceStep>;

// "tracingData[3].date"; "" for the root.
std::string placeText(const Place& place);
// ["tracingData", 3, "date"]
Json placeToJson(const Place& place);

struct Mismatch {
  Place place;
  std::string reason;

  // "keys.requestID: missing"; the reason alone for the root.
  std::string text() const;
  // As text(), of a value that stands under the key.
  std::string textUnder(const std::string& key) const;
};

// The way to the value that is being checked. It lives on the stack of the check and refers to what
// is checked, so that a place costs nothing until something is wrong there.
class CheckedPlace {
 public:
  CheckedPlace() = default;
  CheckedPlace(const CheckedPlace& parent, const std::string& key) : parent_(&parent), key_(&key) {}
  CheckedPlace(const CheckedPlace& parent, std::size_t index) : parent_(&parent), index_(index) {}

  Place steps() const;

 private:
  const CheckedPlace* parent_ = nullptr;
  const std::string* key_ = nullptr;
  std::size_t index_ = 0;
};

// One check's faults, the first ones found up to kMaxMismatches.
class MismatchList {
 public:
  void add(const CheckedPlace& place, std::string reason);
  // Of what stands at, or is missing at, a dotted path below the place.
  void addBelow(const CheckedPlace& place, std::string_view path, std::string reason);
  bool isFull() const { return found_.size() >= kMaxMismatches; }
  std::vector<Mismatch> take() { return std::move(found_); }

 private:
  std::vector<Mismatch> found_;
};

}  // namespace risk_server
