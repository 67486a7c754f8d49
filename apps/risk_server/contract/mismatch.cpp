#include "apps/risk_server/contract/mismatch.h"

#include <algorithm>
#include <utility>

namespace risk_server {

std::string placeText(const Place& place) {
  std::string text;
  for (const PlaceStep& step : place) {
    if (const auto* key = std::get_if<std::string>(&step)) {
      text += (text.empty() ? "" : ".") + *key;
    } else {
      text += "[" + std::to_string(std::get<std::size_t>(step)) + "]";
    }
  }
  return text;
}

Json placeToJson(const Place& place) {
  Json steps = Json::array();
  for (const PlaceStep& step : place) {
    std::visit([&](const auto& value) { steps.push_back(value); }, step);
  }
  return steps;
}

std::string Mismatch::text() const {
  return place.empty() ? reason : placeText(place) + ": " + reason;
}

std::string Mismatch::textUnder(const std::string& key) const {
  Place whole = {key};
  whole.insert(whole.end(), place.begin(), place.end());
  return Mismatch{std::move(whole), reason}.text();
}

Place CheckedPlace::steps() const {
  Place steps;
  for (const CheckedPlace* at = this; at->parent_ != nullptr; at = at->parent_) {
    if (at->key_ != nullptr) {
      steps.emplace_back(*at->key_);
    } else {
      steps.emplace_back(at->index_);
    }
  }
  std::reverse(steps.begin(), steps.end());
  return steps;
}

void MismatchList::add(const CheckedPlace& place, std::string reason) {
  addBelow(place, {}, std::move(reason));
}

void MismatchList::addBelow(const CheckedPlace& place, std::string_view path, std::string reason) {
  if (isFull()) return;
  Place steps = place.steps();
  while (!path.empty()) {
    const auto dot = path.find('.');
    steps.emplace_back(std::string(path.substr(0, dot)));
    path = dot == std::string_view::npos ? std::string_view() : path.substr(dot + 1);
  }
  found_.push_back({std::move(steps), std::move(reason)});
}

}  // namespace risk_server
