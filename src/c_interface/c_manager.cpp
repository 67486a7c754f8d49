#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

#include "base/json.h"
#include "c_interface/c_calls.h"
#include "c_interface/host_motion.h"
#include "quorvance/account_check_points.h"
#include "quorvance/platform/linux_platform.h"
#include "quorvance/quorvance_manager.h"
#include "quorvance/version.h"

namespace quorvance {
namespace {

/// Those of the first version.
constexpr std::size_t kLeastOptionsSize = sizeof(quorvance_options);

std::optional<std::string> textOrNothing(const char* text) {
  return text == nullptr ? std::nullopt : std::optional<std::string>(text);
}

LinuxPlatformOptions platformOptions(const quorvance_options& options) {
  LinuxPlatformOptions made;
  if (options.application != nullptr) made.hostApplication.identifier = options.application;
  made.hostApplication.shortVersion = textOrNothing(options.application_version);
  made.dataFolder = textOrNothing(options.data_folder);
  made.mayStartServices = options.may_start_services != 0;
  return made;
}

int useOptions(const quorvance_options& options) {
  Platform platform = makeLinuxPlatform(platformOptions(options));
  std::shared_ptr<HostMotionSource> motion;
  if (options.has_own_motion != 0) {
    motion = std::make_shared<HostMotionSource>(platform.mainQueue);
    platform.motion = motion;
  }
  if (!QuorvanceManager::usePlatform(std::move(platform))) return QUORVANCE_TOO_LATE;
  HostMotionSource::install(motion);
  return QUORVANCE_OK;
}

// CheckPoint::parse leaves four types to the host.
std::unique_ptr<CheckPoint> rebuild(CheckPointType type, const Json& json) {
  switch (type) {
    case CheckPointType::UPDATE_USER_INFO:
      return UpdateUserInfo::fromJson(json);
    case CheckPointType::PASSWORD_CHANGE:
      return PasswordChange::fromJson(json);
    case CheckPointType::UPDATE_DETAILS:
    case CheckPointType::NONE:
      return CheckPoint::fromJson(json);
    default:
      return CheckPoint::parse(json);
  }
}

/// Null for what is no checkpoint.
std::unique_ptr<CheckPoint> checkPointOf(const char* text) {
  std::optional<Json> json = parseJson(text);
  const JsonDiscarder discarder(json);
  if (!json) return nullptr;
  const std::string* const word = findText(*json, "checkpoint_type");
  const auto type =
      word == nullptr ? std::nullopt : CheckPointTypeToString::fromNillableString(*word);
  return type ? rebuild(*type, *json) : nullptr;
}

void tell(quorvance_verdict_callback callback, void* context, const Verdict& verdict) {
  const std::string level = verdict.risk.stringValue();
  const std::string reason(toString(verdict.reason));
  quorvance_verdict told{};
  told.size = sizeof told;
  told.level = level.c_str();
  told.level_number = static_cast<std::int32_t>(verdict.risk.riskLevel);
  told.http_status = verdict.httpStatus.value_or(0);
  told.signed_risk = verdict.signedRisk.c_str();
  told.request_id = verdict.requestID.c_str();
  told.reason = reason.c_str();
  told.elapsed_ms = verdict.elapsed.count();
  callback(&told, context);
}

int askForRisk(const char* text, std::int64_t deadlineMs, quorvance_verdict_callback callback,
               void* context) {
  const auto checkPoint = checkPointOf(text);
  if (!checkPoint) return QUORVANCE_INVALID_JSON;
  VerdictOptions options;
  if (deadlineMs >= 0) options.deadline = std::chrono::milliseconds(deadlineMs);
  QuorvanceManager::shared()->getRiskForCheckPoint(
      *checkPoint, options,
      [callback, context](const Verdict& verdict) { tell(callback, context, verdict); });
  return QUORVANCE_OK;
}

int setPendingUserData(const char* text) {
  std::optional<Json> json = parseJson(text);
  if (!json || !(json->is_object() || json->is_null())) return QUORVANCE_INVALID_JSON;
  QuorvanceManager::shared()->setPendingUserData(std::move(*json));
  return QUORVANCE_OK;
}

}  // namespace
}  // namespace quorvance

using quorvance::answerOf;
using quorvance::QuorvanceManager;
using quorvance::valueOfWord;

extern "C" {

const char* quorvance_version(void) { return QuorvanceSDKVersionString; }

int quorvance_use_options(const quorvance_options* options) {
  return answerOf([=]() -> int {
    const bool isKnown = options != nullptr && options->size >= quorvance::kLeastOptionsSize;
    return isKnown ? quorvance::useOptions(*options) : QUORVANCE_INVALID_ARGUMENT;
  });
}

int quorvance_setup(const char* server_url, const char* user_id) {
  return answerOf([=]() -> int {
    if (server_url == nullptr || *server_url == '\0') return QUORVANCE_INVALID_ARGUMENT;
    const auto manager = QuorvanceManager::shared();
    const bool isDone = manager->setupWithServerUrl(server_url, quorvance::textOrNothing(user_id));
    return isDone ? QUORVANCE_OK : QUORVANCE_UNAVAILABLE;
  });
}

int quorvance_initialize_device_id(void) {
  return answerOf([]() -> int {
    QuorvanceManager::shared()->initializeDeviceId();
    return QUORVANCE_OK;
  });
}

size_t quorvance_device_id(char* buffer, size_t size) {
  std::size_t length = 0;
  answerOf([&]() -> int {
    const std::string text = QuorvanceManager::shared()->getDeviceId().value_or("");
    length = text.size();
    if (buffer == nullptr || size == 0) return QUORVANCE_OK;
    const std::size_t kept = std::min(length, size - 1);
    std::memcpy(buffer, text.data(), kept);
    buffer[kept] = '\0';
    return QUORVANCE_OK;
  });
  return length;
}

int quorvance_logout(void) {
  return answerOf([]() -> int {
    QuorvanceManager::shared()->logout();
    return QUORVANCE_OK;
  });
}

int quorvance_get_risk(const char* check_point, int64_t deadline_ms,
                       quorvance_verdict_callback callback, void* context) {
  return answerOf([=]() -> int {
    if (check_point == nullptr || callback == nullptr) return QUORVANCE_INVALID_ARGUMENT;
    return quorvance::askForRisk(check_point, deadline_ms, callback, context);
  });
}

int quorvance_arrive_to_check_point(const char* check_point) {
  return answerOf([=]() -> int {
    if (check_point == nullptr) return QUORVANCE_INVALID_ARGUMENT;
    const auto made = quorvance::checkPointOf(check_point);
    if (!made) return QUORVANCE_INVALID_JSON;
    QuorvanceManager::shared()->arriveToCheckPoint(*made);
    return QUORVANCE_OK;
  });
}

int quorvance_update_check_point_status(const char* type, const char* request_id,
                                        const char* status, const char* transaction_id) {
  return answerOf([=]() -> int {
    const auto knownType = valueOfWord<quorvance::CheckPointType>(type);
    const auto knownStatus = valueOfWord<quorvance::CheckPointStatus>(status);
    if (!knownType || !knownStatus || request_id == nullptr) return QUORVANCE_INVALID_ARGUMENT;
    QuorvanceManager::shared()->updateCheckPointStatus(*knownType, request_id, *knownStatus,
                                                       quorvance::textOrNothing(transaction_id));
    return QUORVANCE_OK;
  });
}

int quorvance_set_pending_user_data(const char* user_data) {
  return answerOf([=]() -> int {
    if (user_data == nullptr) return QUORVANCE_INVALID_ARGUMENT;
    return quorvance::setPendingUserData(user_data);
  });
}

int quorvance_on_request_access(const char* permission) {
  return answerOf([=]() -> int {
    const auto known = valueOfWord<quorvance::MobilePermission>(permission);
    if (!known) return QUORVANCE_INVALID_ARGUMENT;
    QuorvanceManager::shared()->onRequestAccessWithTypeMobilePermission(*known);
    return QUORVANCE_OK;
  });
}

int quorvance_flush(int64_t timeout_ms) {
  return answerOf([=]() -> int {
    const std::chrono::milliseconds timeout(timeout_ms);
    return QuorvanceManager::shared()->flush(timeout) ? QUORVANCE_OK : QUORVANCE_TIMED_OUT;
  });
}

int quorvance_shutdown(int64_t timeout_ms) {
  return answerOf([=]() -> int {
    const std::chrono::milliseconds timeout(timeout_ms);
    return QuorvanceManager::shared()->shutdown(timeout) ? QUORVANCE_OK : QUORVANCE_TIMED_OUT;
  });
}

int quorvance_set_collection_enabled(int32_t on) {
  return answerOf([=]() -> int {
    QuorvanceManager::setCollectionEnabled(on != 0);
    return QUORVANCE_OK;
  });
}

int quorvance_erase_stored_data(void) {
  return answerOf([]() -> int {
    QuorvanceManager::shared()->eraseStoredData();
    return QUORVANCE_OK;
  });
}

int quorvance_set_debug_mode(int32_t on) {
  return answerOf([=]() -> int {
    QuorvanceManager::setIsInDebugMode(on != 0);
    return QUORVANCE_OK;
  });
}

}  // extern "C"
