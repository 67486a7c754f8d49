#pragma once

// Whoever makes a checkpoint has its virtual functions compiled, and so needs JSON values whole.

#include <memory>
#include <nlohmann/json.hpp>
#include <type_traits>
#include <utility>

#include "quorvance/check_point_base.h"
#include "quorvance/json_conversion.h"
#include "quorvance/platform_error.h"

namespace quorvance {
inline namespace QUORVANCE_JSON_NAMESPACE {

/// One moment of the user's journey. The host builds one, hands it to the manager and may change it
/// until then: it is read during the call and not kept. Not locked: the host must not change it
/// while the manager reads it.
///
/// Only the kinds without a class of their own are made from a bare type; a checkpoint without a
/// type does not exist, and the subclasses fix theirs.
class CheckPoint : public CheckPointBase {
 public:
  explicit CheckPoint(CheckPointType type) : CheckPointBase(type) {}

  /// Null unless "checkpoint_type" is a text of the vocabulary. "additionalData" is taken when it
  /// is an object.
  static std::unique_ptr<CheckPoint> fromJson(const Json& json);

  /// The checkpoint of the class that "checkpoint_type" names. Null for what is no object, for a
  /// missing or unknown type and for the types that are not rebuilt: UPDATE_DETAILS,
  /// UPDATE_USER_INFO, PASSWORD_CHANGE, NONE. Then `error`, when given, is set to an error of empty
  /// domain and code 0.
  template <class Value = Json>
  static std::unique_ptr<CheckPoint> parse(const std::type_identity_t<Value>& value,
                                           PlatformError* error = nullptr);

  /// Free-form data of the host; null when absent. Valid until it is set again.
  const Json* additionalData() const { return additionalData_.get(); }
  /// Replaces what was set; a JSON null clears it, and any other value but an object leaves it.
  /// Data nested deeper than 126 levels makes a checkpoint that cannot be sent: a request has 128.
  void setAdditionalData(Json additionalData);

  /// "checkpoint_type", the class's own keys, and "additionalData" when present. This is what is
  /// sent: a class of the host that derives from one of these may add to it. What it throws, a
  /// std::exception at most, costs that report or verdict alone.
  virtual Json getJson() const;

  void writeJson(JsonSink& sink) const override { giveJson(sink, getJson()); }

 protected:
  /// Takes "additionalData" when it is an object.
  void readAdditionalData(const Json& json);

  /// A checkpoint of that class, made of these parts, with the "additionalData" of the JSON.
  template <class Class, class... Parts>
  static std::unique_ptr<Class> rebuilt(const Json& json, Parts&&... parts) {
    auto checkPoint = std::make_unique<Class>(std::forward<Parts>(parts)...);
    checkPoint->readAdditionalData(json);
    return checkPoint;
  }

  /// What `write` gives to a sink for a checkpoint of that type.
  template <class Write>
  Json contentOf(CheckPointType type, const Write& write) const;

 private:
  std::shared_ptr<const Json> additionalData_;
};

inline std::unique_ptr<CheckPoint> CheckPoint::fromJson(const Json& json) {
  const auto type = CheckPointContent::readType(jsonSource(json));
  return type ? rebuilt<CheckPoint>(json, *type) : nullptr;
}

inline void CheckPoint::setAdditionalData(Json additionalData) {
  if (additionalData.is_null()) additionalData_.reset();
  if (!additionalData.is_object()) return;
  additionalData_ = std::make_shared<const Json>(std::move(additionalData));
}

inline void CheckPoint::readAdditionalData(const Json& json) {
  const auto* const members = json.get_ptr<const Json::object_t*>();
  if (members == nullptr) return;
  const auto found = members->find("additionalData");
  if (found == members->end() || !found->second.is_object()) return;
  // One that is nested too deep to be copied is replaced by one that cannot be sent either.
  const bool fits = fitsJsonDepth(found->second);
  setAdditionalData(fits ? found->second : Json{{"additionalData", notJson()}});
}

template <class Write>
Json CheckPoint::contentOf(CheckPointType type, const Write& write) const {
  return writtenJson<Json>([&](JsonSink& sink) {
    if (!additionalData_) return write(CheckPointContent{type}, sink);
    const JsonSource data = jsonSource(*additionalData_);
    write(CheckPointContent{type, &data}, sink);
  });
}

inline Json CheckPoint::getJson() const {
  return contentOf(type(), [](const auto& content, JsonSink& sink) { content.write(sink); });
}

}  // namespace QUORVANCE_JSON_NAMESPACE
}  // namespace quorvance

#include "quorvance/check_point_parser.h"
