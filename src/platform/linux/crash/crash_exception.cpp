#include "platform/linux/crash/crash_exception.h"

#include <cxxabi.h>

#include <cstdlib>
#include <exception>
#include <memory>
#include <typeinfo>

namespace quorvance {
namespace {

struct MallocDeleter {
  void operator()(char* text) const { std::free(text); }
};

std::string readableName(const std::type_info& type) {
  int status = 0;
  const std::unique_ptr<char, MallocDeleter> name(
      abi::__cxa_demangle(type.name(), nullptr, nullptr, &status));
  return status == 0 && name ? name.get() : type.name();
}

std::string reasonOfCurrentException() {
  try {
    throw;
  } catch (const std::exception& exception) {
    return exception.what();
  } catch (const std::string& text) {
    return text;
  } catch (const char* text) {
    return text != nullptr ? text : "";
  } catch (...) {
    return "";
  }
}

}  // namespace

bool describeUncaughtException(UncaughtException& exception) {
  const std::type_info* const type = abi::__cxa_current_exception_type();
  if (type == nullptr) return false;
  exception.name = readableName(*type);
  exception.reason = reasonOfCurrentException();
  return true;
}

}  // namespace quorvance
