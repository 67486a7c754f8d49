#include "network/url_text.h"

#include <algorithm>
#include <cstddef>

namespace quorvance {
namespace {

bool isHexDigit(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

bool beginsWith(std::string_view text, std::string_view lowerCase) {
  return text.size() >= lowerCase.size() &&
         std::equal(lowerCase.begin(), lowerCase.end(), text.begin(), [](char lower, char c) {
           return c == lower || (c >= 'A' && c <= 'Z' && c - 'A' + 'a' == lower);
         });
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

std::string_view faultOfServerUrl(std::string_view url) {
  if (!parsesAsUrl(url)) return "it is no URL";
  const bool isPlain = beginsWith(url, "http://");
  if (!isPlain && !beginsWith(url, "https://"))
    return "it begins neither with https:// nor http://";
  url.remove_prefix(isPlain ? 7 : 8);
  const std::string_view authority = url.substr(0, url.find_first_of("/?#"));
  if (authority.find('@') != std::string_view::npos) return "it names a user";
  if (authority.empty() || authority.front() == ':') return "it has no host";
  if (!url.ends_with('/')) return "it does not end in \"/\", which paths are glued to";
  return {};
}

}  // namespace quorvance
