#include "base/json_exchange.h"

#include <utility>

namespace quorvance {

JsonSink::~JsonSink() = default;

void give(JsonSink& sink, Json value) {
  const JsonDiscarder discarder(value);
  giveJson(sink, std::move(value));
}

Json take(const JsonSource& source) {
  const bool isMovable = source.movable != nullptr && source.type->isSameAs(jsonType<Json>());
  return isMovable ? std::move(*static_cast<Json*>(source.movable)) : *JsonView(source);
}

}  // namespace quorvance
