#include "base/json_exchange.h"

#include <utility>

namespace quorvance {
namespace {

bool isOwn(const JsonSource& source) { return source.type->isSameAs(jsonType<Json>()); }

Json copyOf(const JsonSource& source) {
  return receivedJson([&](JsonSink& sink) { source.tell(source.value, sink); });
}

}  // namespace

JsonSink::~JsonSink() = default;

void give(JsonSink& sink, Json value) {
  const JsonDiscarder discarder(value);
  giveJson(sink, std::move(value));
}

JsonView::JsonView(const JsonSource& source)
    : copy_(isOwn(source) ? Json() : copyOf(source)),
      value_(isOwn(source) ? static_cast<const Json*>(source.value) : &copy_) {}

Json take(const JsonSource& source) {
  // Never copied where it may be moved: a copy of what is nested deep recurses.
  if (isOwn(source) && source.movable != nullptr) {
    return std::move(*static_cast<Json*>(source.movable));
  }
  return copyOf(source);
}

}  // namespace quorvance
