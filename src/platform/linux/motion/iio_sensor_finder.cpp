#include "platform/linux/motion/iio_sensor_finder.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/linux/motion/iio_text.h"

namespace quorvance {
namespace {

using std::chrono::microseconds;

constexpr std::string_view kDevicesFolder = "/sys/bus/iio/devices";
constexpr std::string_view kDevicePrefix = "iio:device";
constexpr std::array<std::string_view, 3> kAxes = {"_x", "_y", "_z"};

constexpr double kStandardGravity = 9.80665;  // m/s^2
constexpr double kMicroteslaPerGauss = 100;

/// A reading of files costs three transfers over the sensor's bus: more often is not worth them,
/// whatever rate the device could fill a buffer with.
constexpr microseconds kShortestInterval{5'000};
// In Hz; outside of them the device does not mean the rate of its samples.
constexpr double kLowestRate = 1;
constexpr double kHighestRate = 1e6;

/// How the kernel calls a kind of sensor, and what makes its unit the seam's.
struct Channel {
  std::string_view name;
  double factor;
};

/// The one place where signs are turned: a device at rest has +1 g on the axis that points up for
/// the kernel, -1 g for the seam. Both count rotation and field alike.
Channel channelOf(SensorKind kind) {
  switch (kind) {
    case SensorKind::gravity:
      return {"in_gravity", -1 / kStandardGravity};
    case SensorKind::gyroscope:
      return {"in_anglvel", 1};
    case SensorKind::magnetometer:
      return {"in_magn", kMicroteslaPerGauss};
    case SensorKind::accelerometer:
      break;
  }
  return {"in_accel", -1 / kStandardGravity};
}

std::string joined(std::initializer_list<std::string_view> parts) {
  std::string whole;
  for (const std::string_view part : parts) whole.append(part);
  return whole;
}

struct Axis {
  std::string rawFile;
  double offset = 0;
  double scale = 1;  // into the seam's unit
};

struct Description {
  std::array<Axis, 3> axes;
  MountMatrix mounting = kMountedStraight;
  microseconds shortestInterval = kUsualSensorInterval;
};

/// Opens its files for each reading: a descriptor kept open would outlive the device.
class IioSensorReader : public SensorReader {
 public:
  IioSensorReader(RootFiles files, Description description)
      : files_(std::move(files)), description_(std::move(description)) {}

  std::optional<MotionSample> read() override {
    std::array<double, 3> reading;
    for (std::size_t i = 0; i < reading.size(); ++i) {
      const Axis& axis = description_.axes[i];
      const auto raw = numberIn(files_.fact(axis.rawFile).value_or(""));
      if (!raw) return std::nullopt;
      reading[i] = (*raw + axis.offset) * axis.scale;
    }
    const MotionSample sample = inDeviceAxes(description_.mounting, reading);
    const bool isFinite =
        std::isfinite(sample.x) && std::isfinite(sample.y) && std::isfinite(sample.z);
    return isFinite ? std::optional(sample) : std::nullopt;
  }

  microseconds shortestInterval() const override { return description_.shortestInterval; }

 private:
  const RootFiles files_;
  const Description description_;
};

/// A device folder as one kind of sensor.
class Candidate {
 public:
  /// Where the device sits, then its number; lower is better.
  using Rank = std::pair<int, std::uint32_t>;

  Candidate(const RootFiles& files, std::string folder, std::uint32_t number, Channel channel)
      : files_(files),
        folder_(std::move(folder)),
        number_(number),
        channel_(channel),
        names_(files.names(folder_)) {}

  bool hasAllAxes() const {
    return std::all_of(kAxes.begin(), kAxes.end(),
                       [&](std::string_view axis) { return has(rawName(axis)); });
  }
  Rank rank() const { return {placeRank(), number_}; }
  /// Absent when a file that describes the sensor is no description.
  std::optional<Description> describe() const;

 private:
  bool has(const std::string& name) const {
    return std::binary_search(names_.begin(), names_.end(), name);
  }
  std::string rawName(std::string_view axis) const { return joined({channel_.name, axis, "_raw"}); }
  std::optional<std::string> fact(const std::string& name) const {
    return files_.fact(joined({folder_, "/", name}));
  }
  std::optional<std::string> attributeName(std::string_view axis, std::string_view attribute) const;
  std::optional<double> number(std::string_view axis, std::string_view attribute,
                               double whenMissing) const;
  int placeRank() const;
  MountMatrix mounting() const;
  microseconds shortestInterval() const;

  const RootFiles& files_;
  std::string folder_;
  std::uint32_t number_;
  Channel channel_;
  std::vector<std::string> names_;
};

/// The name of the file that holds an attribute of an axis. What several channels share stands in
/// one file, without the part of the name in which they differ: of the axes of a type, of all
/// inputs, of all channels.
std::optional<std::string> Candidate::attributeName(std::string_view axis,
                                                    std::string_view attribute) const {
  for (const std::string& name :
       {joined({channel_.name, axis, "_", attribute}), joined({channel_.name, "_", attribute}),
        joined({"in_", attribute}), std::string(attribute)}) {
    if (has(name)) return name;
  }
  return std::nullopt;
}

/// Absent when the file is there and holds no number.
std::optional<double> Candidate::number(std::string_view axis, std::string_view attribute,
                                        double whenMissing) const {
  const auto name = attributeName(axis, attribute);
  return name ? numberIn(fact(*name).value_or("")) : whenMissing;
}

int Candidate::placeRank() const {
  const std::string place = fact("label").value_or("") + " " + fact("location").value_or("");
  const auto says = [&](std::string_view word) { return place.find(word) != std::string::npos; };
  if (says("display") || says("lid")) return 0;
  return says("base") || says("camera") ? 2 : 1;
}

/// One that is broken is better ignored than the sensor.
MountMatrix Candidate::mounting() const {
  const auto name = attributeName(kAxes.front(), "mount_matrix");
  if (!name) return kMountedStraight;
  return mountMatrixIn(fact(*name).value_or("")).value_or(kMountedStraight);
}

microseconds Candidate::shortestInterval() const {
  const double rate = number(kAxes.front(), "sampling_frequency", 0).value_or(0);
  if (rate < kLowestRate || rate > kHighestRate) return kUsualSensorInterval;
  return std::max(kShortestInterval, microseconds(std::llround(1e6 / rate)));
}

std::optional<Description> Candidate::describe() const {
  Description description;
  for (std::size_t i = 0; i < kAxes.size(); ++i) {
    const auto scale = number(kAxes[i], "scale", 1);
    const auto offset = number(kAxes[i], "offset", 0);
    // A sensor that knows no scale of its own would read zero for ever.
    if (!scale || !offset || *scale == 0) return std::nullopt;
    description.axes[i] = {joined({folder_, "/", rawName(kAxes[i])}), *offset,
                           *scale * channel_.factor};
  }
  description.mounting = mounting();
  description.shortestInterval = shortestInterval();
  return description;
}

std::optional<std::uint32_t> deviceNumber(std::string_view name) {
  if (!name.starts_with(kDevicePrefix)) return std::nullopt;
  name.remove_prefix(kDevicePrefix.size());
  std::uint32_t number = 0;
  const auto [stop, error] = std::from_chars(name.data(), name.data() + name.size(), number);
  const bool isWhole = error == std::errc() && stop == name.data() + name.size();
  return isWhole ? std::optional(number) : std::nullopt;
}

/// In the order of their ranks.
std::map<Candidate::Rank, Candidate> candidates(const RootFiles& files, SensorKind kind) {
  std::map<Candidate::Rank, Candidate> ranked;
  for (const std::string& name : files.names(kDevicesFolder)) {
    const auto number = deviceNumber(name);
    if (!number) continue;
    std::string folder = joined({kDevicesFolder, "/", name});
    Candidate candidate(files, std::move(folder), *number, channelOf(kind));
    if (candidate.hasAllAxes()) ranked.emplace(candidate.rank(), std::move(candidate));
  }
  return ranked;
}

}  // namespace

std::shared_ptr<SensorReader> IioSensorFinder::find(SensorKind kind) {
  for (const auto& [rank, candidate] : candidates(files_, kind)) {
    if (auto description = candidate.describe()) {
      return std::make_shared<IioSensorReader>(files_, std::move(*description));
    }
  }
  return nullptr;
}

}  // namespace quorvance
