#pragma once

namespace quorvance {

// What tests must know of this build to start programs; the values are written by its
// configuration.

/// The program that dies.
extern const char* const kCrashChildProgram;
/// The program that shares a data folder with others, and is killed.
extern const char* const kStorageChildProgram;
/// A shared library that faults while it is loaded.
extern const char* const kFaultyModule;
/// The host that ends.
extern const char* const kExitChildProgram;
/// The host whose memory runs out; empty where a sanitizer brings its own allocator.
extern const char* const kMemoryChildProgram;
/// The same with another JSON library than the library's.
extern const char* const kOtherMemoryChildProgram;
/// The interpreter, and the servers over TLS that it runs.
extern const char* const kPython;
extern const char* const kTlsServerScript;
/// Empty in a build without.
extern const char* const kSanitizers;

}  // namespace quorvance
