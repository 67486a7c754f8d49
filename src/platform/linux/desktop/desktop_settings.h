#pragma once

#include <optional>
#include <string_view>

namespace quorvance {

/// Settings of the desktop that concern the user interface.
struct DesktopSettings {
  /// Of the font of labels and buttons, in points, scaled as the user wants text scaled.
  std::optional<float> fontSize;
  /// The whole screen is shown with inverted lightness.
  std::optional<bool> isInverted;
  std::optional<bool> isScreenReaderOn;
};

/// Reads GSettings, if the host uses them: only through a library that it has loaded already, since
/// loading it would bring two threads and some megabytes into its process. Fact lane only.
DesktopSettings readDesktopSettings();

/// The size at the end of a font's description ("Cantarell Bold 11"); absent without one.
std::optional<float> fontSizeIn(std::string_view description);

}  // namespace quorvance
