#pragma once

#include <memory>

#include "quorvance/check_point_type.h"
#include "quorvance/json.h"
#include "quorvance/platform_error.h"

#pragma GCC visibility push(default)

namespace quorvance {

/// One moment of the user's journey. The host builds one, hands it to the manager and may change it
/// until then: it is read during the call and not kept. Not locked: the host must not change it
/// while the manager reads it.
///
/// Only the kinds without a class of their own are made from a bare type; a checkpoint without a
/// type does not exist, and the subclasses fix theirs.
class CheckPoint {
 public:
  explicit CheckPoint(CheckPointType type);
  virtual ~CheckPoint();
  CheckPoint(const CheckPoint&) = delete;
  CheckPoint& operator=(const CheckPoint&) = delete;

  /// Null unless "checkpoint_type" is a text of the vocabulary. "additionalData" is taken when it
  /// is an object.
  static std::unique_ptr<CheckPoint> fromJson(const Json& json);

  /// The checkpoint of the class that "checkpoint_type" names. Null for what is no object, for a
  /// missing or unknown type and for the types that are not rebuilt: UPDATE_DETAILS,
  /// UPDATE_USER_INFO, PASSWORD_CHANGE, NONE. Then `error`, when given, is set to an error of empty
  /// domain and code 0.
  static std::unique_ptr<CheckPoint> parse(const Json& value, PlatformError* error = nullptr);

  /// Decides the key under which the checkpoint is sent.
  CheckPointType type() const { return type_; }
  void setType(CheckPointType type) { type_ = type; }

  /// Free-form data of the host; null when absent. Valid until it is set again.
  const Json* additionalData() const { return additionalData_.get(); }
  /// Replaces what was set; a JSON null clears it, and any other value but an object leaves it.
  /// Data nested deeper than 128 levels makes a checkpoint that cannot be sent.
  void setAdditionalData(Json additionalData);

  /// "checkpoint_type", the class's own keys, and "additionalData" when present.
  virtual Json getJson() const;

 protected:
  /// Takes "additionalData" when it is an object.
  void readAdditionalData(const Json& json);

 private:
  CheckPointType type_;
  std::shared_ptr<const Json> additionalData_;
};

}  // namespace quorvance

#pragma GCC visibility pop
