#pragma once

namespace quorvance {

// What the crash tests must know of this build; the values are written by its configuration.

/// The program that dies.
extern const char* const kCrashChildProgram;
/// A shared library that faults while it is loaded.
extern const char* const kFaultyModule;
/// Empty in a build without.
extern const char* const kSanitizers;

}  // namespace quorvance
