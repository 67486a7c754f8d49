#include "apps/risk_server/http/request_target.h"

#include <charconv>

#include "apps/risk_server/http/text_codecs.h"

namespace risk_server {

std::string pathOfTarget(std::string_view target) {
  return std::string(target.substr(0, target.find_first_of("?#")));
}

std::optional<std::string> queryValue(std::string_view target, std::string_view name) {
  const auto mark = target.find('?');
  std::string_view rest = mark == std::string_view::npos ? "" : target.substr(mark + 1);
  while (!rest.empty()) {
    const std::string_view pair = rest.substr(0, rest.find('&'));
    rest.remove_prefix(std::min(pair.size() + 1, rest.size()));
    if (pair.substr(0, pair.find('=')) != name) continue;
    const auto equals = pair.find('=');
    return percentDecode(equals == std::string_view::npos ? "" : pair.substr(equals + 1));
  }
  return std::nullopt;
}

std::optional<std::uint64_t> numberFromText(std::string_view text) {
  std::uint64_t number = 0;
  const char* end = text.data() + text.size();
  const auto [stopped, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stopped != end) return std::nullopt;
  return number;
}

}  // namespace risk_server
