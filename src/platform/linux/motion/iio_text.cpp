#include "platform/linux/motion/iio_text.h"

#include <charconv>
#include <cmath>
#include <cstddef>
#include <system_error>

#include "platform/linux/facts/root_files.h"

namespace quorvance {
namespace {

// Device trees round their entries.
constexpr double kMountingTolerance = 0.02;

/// The numbers of a text that has exactly so many, with a separator between them.
std::optional<std::array<double, 3>> threeNumbersIn(std::string_view text) {
  std::array<double, 3> numbers;
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    const bool isLast = i + 1 == numbers.size();
    const std::size_t end = isLast ? text.size() : text.find(',');
    if (end == std::string_view::npos) return std::nullopt;
    const auto number = numberIn(cleanFact(text.substr(0, end)).value_or(""));
    if (!number) return std::nullopt;
    numbers[i] = *number;
    text.remove_prefix(isLast ? end : end + 1);
  }
  return numbers;
}

double product(const std::array<double, 3>& a, const std::array<double, 3>& b) {
  // Begins with zero, which added to a negative zero gives a positive one.
  return 0.0 + a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

/// Each row has the length 1 and stands at right angles to the others.
bool isRotation(const MountMatrix& matrix) {
  for (std::size_t i = 0; i < matrix.size(); ++i) {
    for (std::size_t j = i; j < matrix.size(); ++j) {
      const double expected = i == j ? 1 : 0;
      if (!(std::abs(product(matrix[i], matrix[j]) - expected) <= kMountingTolerance)) return false;
    }
  }
  return true;
}

}  // namespace

std::optional<double> numberIn(std::string_view text) {
  double number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end || !std::isfinite(number)) return std::nullopt;
  return number;
}

std::optional<MountMatrix> mountMatrixIn(std::string_view text) {
  MountMatrix matrix;
  for (std::size_t i = 0; i < matrix.size(); ++i) {
    const bool isLast = i + 1 == matrix.size();
    const std::size_t end = isLast ? text.size() : text.find(';');
    if (end == std::string_view::npos) return std::nullopt;
    const auto row = threeNumbersIn(text.substr(0, end));
    if (!row) return std::nullopt;
    matrix[i] = *row;
    text.remove_prefix(isLast ? end : end + 1);
  }
  if (!isRotation(matrix)) return std::nullopt;
  return matrix;
}

MotionSample inDeviceAxes(const MountMatrix& mounting, const std::array<double, 3>& reading) {
  return {product(mounting[0], reading), product(mounting[1], reading),
          product(mounting[2], reading)};
}

}  // namespace quorvance
