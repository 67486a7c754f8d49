#include "base/json_exchange.h"

#include <utility>

namespace quorvance {

JsonSink::~JsonSink() = default;

Json take(const JsonSource& source) {
  // Never copied where it may be moved: a copy of what is nested deep recurses.
  if (source.movable != nullptr && source.type->isSameAs(jsonType<Json>())) {
    return std::move(*static_cast<Json*>(source.movable));
  }
  return writtenJson<Json>([&](JsonSink& sink) { source.tell(source.value, sink); });
}

}  // namespace quorvance
