#include "network/url_text.h"

#include <algorithm>
#include <cstddef>

namespace quorvance {
namespace {

bool isHexDigit(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

}  // namespace

bool parsesAsUrl(std::string_view text) {
  if (text.empty()) return false;
  const auto isPrintable = [](char c) { return c > ' ' && c < '\x7F'; };
  if (!std::all_of(text.begin(), text.end(), isPrintable)) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') continue;
    if (i + 2 >= text.size() || !isHexDigit(text[i + 1]) || !isHexDigit(text[i + 2])) return false;
  }
  return true;
}

}  // namespace quorvance
