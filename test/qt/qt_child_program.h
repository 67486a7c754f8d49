#pragma once

namespace quorvance {

/// The application that ends; the value is written by the configuration of the build.
extern const char* const kQtChildProgram;
/// Empty in a build without.
extern const char* const kQtSanitizers;

}  // namespace quorvance
