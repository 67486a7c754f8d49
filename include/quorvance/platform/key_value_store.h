#pragma once

#include "quorvance/standard_library.h"

#include <optional>
#include <string>
#include <string_view>

#pragma GCC visibility push(default)

namespace quorvance {

/// What a key holds.
struct StoredEntry {
  enum class Kind { absent, text, other };
  Kind kind = Kind::absent;
  /// Set for Kind::text. A value of another type was put there by someone else and is kept as is.
  std::string text;
};

/// The small state of one application that survives restarts. Called from any thread; throws
/// nothing. A read sees every earlier write of the process at once, whatever the disk does.
class KeyValueStore {
 public:
  virtual ~KeyValueStore() = default;
  virtual StoredEntry read(std::string_view key) = 0;
  /// Returns without waiting for the disk. Replaces a value of another type.
  virtual void write(std::string_view key, std::string_view text) = 0;
  /// Asks for what was written to reach the disk; returns without waiting for it.
  virtual void synchronize() = 0;

  // What a host's own store may leave as it is.

  /// Gives a key that was read as absent its first value. Where the store has one meanwhile, or
  /// finds one that another process has stored, that stays and later reads answer it.
  virtual void writeDefault(std::string_view key, std::string_view text) { write(key, text); }
  /// Forgets every key at once, as if nothing had ever been written; the disk follows as it does
  /// after a write. False: the store cannot, and its keys are overwritten one by one.
  virtual bool forget() { return false; }
  /// Whether the disk has nothing any more of what was forgotten. Asked on the file lane.
  virtual bool isForgotten() { return true; }
  /// Whether the disk has all that was written; a store that cannot tell says yes. Never waits.
  virtual bool isSynchronized() { return true; }
};

}  // namespace quorvance

#pragma GCC visibility pop
