#include "network/responce_object.h"

namespace quorvance {
namespace {

std::string optionalForm(const std::optional<std::string>& text) {
  return text ? "Optional(" + *text + ")" : "nil";
}

std::string optionalForm(const std::optional<std::int64_t>& number) {
  return number ? optionalForm(std::optional(std::to_string(*number))) : "nil";
}

}  // namespace

std::string ResponceObject::text() const {
  const std::string errorText = optionalForm(error);
  return "reqID: " + requestId + " url: " + optionalForm(url) +
         " statusCode: " + optionalForm(statusCode) + " error: " + errorText +
         " error: " + errorText +
         " output: " + optionalForm(output ? std::optional(debugTextOf(*output)) : std::nullopt);
}

}  // namespace quorvance
