#include "state/keys_data.h"

#include <gtest/gtest.h>

#include "base/json_test_support.h"
#include "state/session.h"

namespace quorvance {
namespace {

TEST(KeysDataTest, WritesPresentKeysInOrder) {
  EXPECT_EQ(compactText(KeysData{}.getJson()), "{}");
  EXPECT_EQ(compactText(KeysData{.deviceId = "d"}.getJson()), R"({"device_id":"d"})");
  const KeysData whole{"u", "d", "r", "a", "v", CheckPointType::UPDATE_DETAILS};
  EXPECT_EQ(compactText(whole.getJson()),
            R"({"user_id":"u","device_id":"d","requestID":"r","app_uuid":"a",)"
            R"("checkpoint":"UPDATE_DETAILS","version":"v"})");
}

TEST(SessionTest, AlwaysWritesItsTwoKeys) {
  EXPECT_EQ(compactText(Session{}.getJson()), R"({"idSession":"","timeSession":0})");
  EXPECT_EQ(compactText(Session{"s", 1'700'000'000'000}.getJson()),
            R"({"idSession":"s","timeSession":1700000000000})");
}

}  // namespace
}  // namespace quorvance
