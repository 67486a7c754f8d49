#pragma once

// The JSON value of the interface, declared only: a host that builds or reads values includes
// <nlohmann/json.hpp> itself, and headers of plain records cost it nothing.
//
// The host's JSON library need not be the one that the library was built with: another version, or
// another configuration of it, is another type. What is compiled into the library knows no such
// type; functions of it are templates or inline, so that they are the host's own.

#include "quorvance/standard_library.h"

#include <nlohmann/json_fwd.hpp>

#ifndef NLOHMANN_JSON_VERSION_MAJOR
#error "the JSON library must be nlohmann-json 3.11 or later"
#endif

namespace quorvance {

/// Objects keep the order in which their members were inserted.
using Json = nlohmann::ordered_json;

static_assert(NLOHMANN_JSON_VERSION_MAJOR == 3 && NLOHMANN_JSON_VERSION_MINOR >= 11,
              "the JSON library must be 3.11 or a later 3");

}  // namespace quorvance

// The inline namespace of classes that have a virtual function which takes or gives JSON, after the
// JSON library's version and the switches that change its types: parts of a process that were
// compiled with different ones do not share such classes.
#ifdef JSON_DIAGNOSTIC_POSITIONS
#define QUORVANCE_JSON_POSITIONS JSON_DIAGNOSTIC_POSITIONS
#else
#define QUORVANCE_JSON_POSITIONS 0
#endif
#define QUORVANCE_JSON_NAME_OF(major, minor, patch, diagnostics, positions) \
  json_##major##_##minor##_##patch##_##diagnostics##positions
#define QUORVANCE_JSON_NAME(...) QUORVANCE_JSON_NAME_OF(__VA_ARGS__)
#define QUORVANCE_JSON_NAMESPACE                                                \
  QUORVANCE_JSON_NAME(NLOHMANN_JSON_VERSION_MAJOR, NLOHMANN_JSON_VERSION_MINOR, \
                      NLOHMANN_JSON_VERSION_PATCH, JSON_DIAGNOSTICS, QUORVANCE_JSON_POSITIONS)
