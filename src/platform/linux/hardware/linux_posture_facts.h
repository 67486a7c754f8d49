#pragma once

#include <memory>
#include <utility>

#include "platform/linux/motion/sensor_reader.h"
#include "quorvance/platform/device_facts.h"
#include "quorvance/platform/motion.h"

namespace quorvance {

/// The orientation of a device at rest that reads this acceleration, with the numbers of
/// PostureFacts: flat when the screen is within 30 degrees of the horizontal, else by the edge that
/// points down. "Unknown" for a device that is being moved.
int orientationOf(const MotionSample& acceleration);

/// How the device is held, from one reading of its accelerometer. Fact lane only: a reading may
/// block.
class LinuxPostureFacts : public FactSource<PostureFacts> {
 public:
  explicit LinuxPostureFacts(std::shared_ptr<SensorFinder> finder) : finder_(std::move(finder)) {}

  PostureFacts read() override;
  std::string origin(std::string_view field) const override;

 private:
  const std::shared_ptr<SensorFinder> finder_;
};

}  // namespace quorvance
