#pragma once

// What the desktop knows rather than the kernel: fonts, the user's settings.

#include <optional>
#include <span>
#include <string>

#include "quorvance/platform/device_facts.h"

namespace quorvance {

inline constexpr const char* kFontconfigNames[] = {"libfontconfig.so.1"};

/// The fonts that fontconfig finds for this process, each family with the PostScript names of its
/// faces. A configuration of our own is read and thrown away: the host's current one stays as it
/// is. fontconfig may renew its own cache meanwhile, as in every program that uses it. Without the
/// library, and in an address space whose limit leaves too little, there are no facts. Fact lane
/// only: without a cache, thousands of fonts take seconds.
class LinuxFontFacts : public FactSource<FontFacts> {
 public:
  explicit LinuxFontFacts(std::span<const char* const> libraryNames = kFontconfigNames)
      : libraryNames_(libraryNames) {}

  FontFacts read() override;
  std::string origin(std::string_view field) const override;

 private:
  const std::span<const char* const> libraryNames_;
};

}  // namespace quorvance
