#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/testing/taken_samples.h"
#include "test/real_world_test_support.h"

namespace quorvance {

/// A screen on a device that lies still. Returns its last motion row as the server got it and found
/// it right: made when each of these sensors had given a sample.
inline std::vector<double> lastRowAtServer(const RealWorld& world, const Platform& platform,
                                           const std::vector<std::string>& sensors = {
                                               "chb_gra", "chb_gyr_unc", "mag"}) {
  const TakenSamples samples;
  QuorvanceManager manager(platform);
  manager.setServerUrl(world.server.url());
  const auto listener = manager.startNewScreenListener(ScreenListenerType::PINCODE, 7, nullptr);
  listener->resumeListen();
  for (const std::string& sensor : sensors) {
    EXPECT_TRUE(samples.waitForAnother(sensor, kTestPatience)) << sensor;
  }
  EXPECT_TRUE(samples.waitForAnother("chb_lin_acc", kTestPatience));
  listener->finishScreenListener();
  if (!world.sees("qrsk-med/3.0/BiometricData/")) return {};
  const auto body = nlohmann::json::parse(world.server.exchanges().back().request);
  return body.at("bio_sensor_event_data").at("sensorsData").back().get<std::vector<double>>();
}

}  // namespace quorvance
