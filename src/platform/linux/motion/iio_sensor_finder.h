#pragma once

#include <memory>
#include <utility>

#include "platform/linux/facts/root_files.h"
#include "platform/linux/motion/sensor_reader.h"

namespace quorvance {

/// The sensors of the kernel's industrial I/O folders, /sys/bus/iio/devices/iio:device*, by the
/// kernel's own description of their files (ABI/testing/sysfs-bus-iio).
///
/// A sensor is a device with a raw file for each of the three axes and scales that are numbers. Of
/// several the first one in this order is taken: one that calls itself a part of the display; one
/// that does not say where it sits; one that sits elsewhere (the base of a folding device, a
/// camera); and of these the lowest device number. Files that are missing, unreadable or rubbish
/// make the device none, where they describe it, or the sample none, where they hold it.
/// Immutable.
class IioSensorFinder : public SensorFinder {
 public:
  explicit IioSensorFinder(RootFiles files) : files_(std::move(files)) {}

  std::shared_ptr<SensorReader> find(SensorKind kind) override;

 private:
  const RootFiles files_;
};

}  // namespace quorvance
