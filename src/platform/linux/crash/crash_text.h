#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace quorvance {

/// A text in memory that was there before; what does not fit is cut off. Everything but making one
/// is async-signal-safe. Not thread-safe.
class CrashText {
 public:
  CrashText() = default;
  explicit CrashText(std::span<char> memory) : memory_(memory) {}

  void clear() { size_ = 0; }
  std::string_view view() const { return {memory_.data(), size_}; }
  std::size_t room() const { return memory_.size() - size_; }

  void append(std::string_view bytes);
  /// Takes over what was written into the memory directly.
  void resize(std::size_t size) { size_ = size < memory_.size() ? size : memory_.size(); }
  void appendDecimal(std::int64_t number);
  /// As "0x1f".
  void appendHexadecimal(std::uintptr_t number);
  /// As the inside of a JSON string, like every stored report: what is not UTF-8 becomes U+FFFD.
  /// At most `maxBytes` come to it, and no character is cut in two.
  void appendEscaped(std::string_view text, std::size_t maxBytes);

 private:
  std::span<char> memory_;
  std::size_t size_ = 0;
};

}  // namespace quorvance
