#pragma once

namespace quorvance {

// What the tests of crashes and of exits must know of this build; the values are written by its
// configuration.

/// The program that dies.
extern const char* const kCrashChildProgram;
/// A shared library that faults while it is loaded.
extern const char* const kFaultyModule;
/// The host that ends.
extern const char* const kExitChildProgram;
/// Empty in a build without.
extern const char* const kSanitizers;

}  // namespace quorvance
