#pragma once

// The library's side of JSON values that pass between it and its host.

#include "base/json.h"
#include "quorvance/json_conversion.h"

namespace quorvance {

/// Gives the value away; it is discarded at any rate.
void give(JsonSink& sink, Json value);

// As JsonReader and writtenJson of the host's side, save that what was made is discarded where the
// memory ends half-way.

/// A lent value for reading: itself, or a copy of one of another type. Valid as long as both.
class JsonView {
 public:
  explicit JsonView(const JsonSource& source);
  ~JsonView() { discardJson(copy_); }
  JsonView(const JsonView&) = delete;
  JsonView& operator=(const JsonView&) = delete;

  const Json& operator*() const { return *value_; }

 private:
  Json copy_;
  const Json* value_;
};

/// What the host gives to a sink; null when it gives nothing.
template <class Write>
Json receivedJson(const Write& write) {
  Json value;
  JsonDiscarder discarder(value);
  JsonBuilder<Json> builder(value);
  write(builder);
  discarder.keep();
  return value;
}

/// Takes a lent value as far as it may be taken, else a copy.
Json take(const JsonSource& source);

}  // namespace quorvance
