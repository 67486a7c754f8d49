#pragma once

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

namespace quorvance {

struct SignalName {
  int number;
  std::string_view name;
};

/// The server's vocabulary of signals: its numbers are not the kernel's.
inline constexpr std::array<SignalName, 12> kSignalNames = {{
    {3, "SIGQUIT"},
    {4, "SIGILL"},
    {6, "SIGABRT"},
    {7, "SIGEMT"},
    {8, "SIGFPE"},
    {10, "SIGBUS"},
    {11, "SIGSEGV"},
    {12, "SIGSYS"},
    {13, "SIGPIPE"},
    {14, "SIGALRM"},
    {24, "SIGXCPU"},
    {25, "SIGXFSZ"},
}};

/// "OTHER" for a number that is not in the vocabulary.
constexpr std::string_view signalName(int number) {
  const auto found = std::find_if(kSignalNames.begin(), kSignalNames.end(),
                                  [&](const SignalName& row) { return row.number == number; });
  return found == kSignalNames.end() ? "OTHER" : found->name;
}

constexpr std::optional<int> signalNumber(std::string_view name) {
  const auto found = std::find_if(kSignalNames.begin(), kSignalNames.end(),
                                  [&](const SignalName& row) { return row.name == name; });
  return found == kSignalNames.end() ? std::nullopt : std::optional(found->number);
}

}  // namespace quorvance
