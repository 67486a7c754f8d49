#include "apps/demo_host/journey_check_point.h"

#include <optional>
#include <set>
#include <string>

#include "quorvance/account_check_points.h"
#include "quorvance/check_point_type.h"

namespace demo_host {
namespace {

using quorvance::CheckPoint;
using quorvance::CheckPointType;

constexpr const char* kTypeKey = "checkpoint_type";
// A transaction takes its type under either name and always sends it under the second.
constexpr const char* kReadOnlyKey = "actType";
constexpr const char* kWrittenKey = "transactionType";

CheckPointType typeOf(const Json& json, const Pointer& place) {
  ObjectReader reader(json, place);
  const Json& word = reader.require(kTypeKey);
  const auto type = word.is_string() ? quorvance::CheckPointTypeToString::fromNillableString(
                                           word.get_ref<const std::string&>())
                                     : std::nullopt;
  if (type) return *type;
  std::set<std::string> known;
  for (const auto& [name, raw] : quorvance::CheckPointTypeEnumerator::dictionary()) {
    known.insert(name);
  }
  throw PlacedError(reader.placeOf(kTypeKey),
                    quoted(word) + " is no checkpoint type; known are " + listed(known));
}

// CheckPoint::parse leaves four types to the host.
std::unique_ptr<CheckPoint> rebuild(CheckPointType type, const Json& json) {
  switch (type) {
    case CheckPointType::UPDATE_USER_INFO:
      return quorvance::UpdateUserInfo::fromJson(json);
    case CheckPointType::PASSWORD_CHANGE:
      return quorvance::PasswordChange::fromJson(json);
    case CheckPointType::UPDATE_DETAILS:
    case CheckPointType::NONE:
      return CheckPoint::fromJson(json);
    default:
      return CheckPoint::parse(json);
  }
}

// What the library would send must hold what the journey says.
class KeptCheck {
 public:
  KeptCheck(CheckPointType type, const Json& given, Pointer place)
      : type_(type), given_(given), place_(std::move(place)) {}

  void compare(const Json& given, const Json& kept, const Pointer& within) const {
    if (given == kept) return;
    if (given.is_object() && kept.is_object()) return compareMembers(given, kept, within);
    if (given.is_string() && kept.is_string()) {
      fail(within, quoted(given) + " is not known here; the library would send " + quoted(kept));
    }
    fail(within, "expected " + kindOf(kept) + ", got " + quoted(given));
  }

 private:
  void compareMembers(const Json& given, const Json& kept, const Pointer& within) const {
    for (const auto& [key, value] : given.items()) {
      const auto member = kept.find(key == kReadOnlyKey ? kWrittenKey : key);
      if (member == kept.end()) failDropped(within / key, value);
      compare(value, *member, within / key);
    }
  }

  [[noreturn]] void fail(const Pointer& within, const std::string& fault) const {
    throw PlacedError(place_ / within, fault);
  }

  // The library does not say what it expects, so every kind of value is tried in its place.
  [[noreturn]] void failDropped(const Pointer& within, const Json& value) const {
    for (const Json& probe : {Json("a text"), Json(1), Json(Json::object())}) {
      Json changed = given_;
      changed[within] = probe;
      const Pointer sent =
          within.back() == kReadOnlyKey ? within.parent_pointer() / kWrittenKey : within;
      if (rebuild(type_, changed)->getJson().contains(sent)) {
        fail(within, "expected " + kindOf(probe) + ", got " + quoted(value));
      }
    }
    fail(within, "no such key here");
  }

  static std::string kindOf(const Json& value) {
    if (value.is_object()) return "an object";
    if (value.is_string()) return "a text";
    return value.is_number_integer() ? "a 64-bit integer" : "a number";
  }

  CheckPointType type_;
  const Json& given_;
  Pointer place_;
};

}  // namespace

std::unique_ptr<CheckPoint> buildCheckPoint(const Json& json, const Pointer& place) {
  const CheckPointType type = typeOf(json, place);
  auto checkPoint = rebuild(type, json);
  KeptCheck(type, json, place).compare(json, checkPoint->getJson(), Pointer());
  return checkPoint;
}

}  // namespace demo_host
