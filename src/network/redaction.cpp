#include "network/redaction.h"

#include <exception>
#include <optional>
#include <string>
#include <utility>

#include "base/debug.h"

namespace quorvance {
namespace {

/// The last word of the path: every service's ends in a slash.
std::string_view serviceWordOf(std::string_view url) {
  if (url.ends_with('/')) url.remove_suffix(1);
  return url.substr(url.rfind('/') + 1);
}

}  // namespace

Redaction::Redaction(BeforeSend hook) : hook_(std::move(hook)) {}

bool Redaction::drop(std::string_view service, std::string_view reason) {
  const std::uint64_t count = ++dropped_;
  if (reason.empty()) return false;
  logMessage(LogLevel::error, "beforeSend " + std::string(reason) + ": the call of " +
                                  std::string(service) + " is dropped, " + std::to_string(count) +
                                  " so far");
  return false;
}

bool Redaction::apply(std::string_view url, Json& body) {
  const std::string_view service = serviceWordOf(url);
  const std::optional<std::string> text = writeJson(body);
  if (!text) return true;  // whoever sends it finds out as well, and says so
  std::optional<std::string> changed;
  try {
    changed = hook_(service, *text);
  } catch (const std::exception& fault) {
    const char* const what = fault.what();
    return drop(service, std::string("threw ") + (what == nullptr ? "" : what));
  } catch (...) {
    return drop(service, "threw");
  }
  if (!changed) return drop(service, {});
  if (*changed == *text) return true;
  std::optional<Json> parsed = parseJson(*changed);
  const JsonDiscarder discarder(parsed);
  if (!parsed || !parsed->is_object()) return drop(service, "returned no JSON object");
  body.swap(*parsed);
  reserveMembers(body, 1);  // "version"
  return true;
}

}  // namespace quorvance
