#include "base/record.h"

#include <gtest/gtest.h>

#include <limits>
#include <utility>

#include "base/json_test_support.h"

namespace quorvance {
namespace {

struct ProbeRecord {
  std::optional<float> single;
};

constexpr auto kProbeFields = RecordTable{field<&ProbeRecord::single>("single")};

TEST(RecordTest, WritesASingleWithItsOwnShortestDigits) {
  const std::vector<std::pair<float, std::string>> rows = {
      {0.1F, "0.1"}, {17.0F, "17.0"}, {1.0F / 3.0F, "0.33333334"}, {-1.0F, "-1.0"}};
  ProbeRecord record;
  for (const auto& [single, text] : rows) {
    record.single = single;
    EXPECT_EQ(compactText(recordToJson(record, kProbeFields).at("single")), text);
  }
  record.single = std::numeric_limits<float>::quiet_NaN();
  // A fact that is no number is left out: it must not cost the whole body.
  EXPECT_FALSE(recordToJson(record, kProbeFields).contains("single"));
}

}  // namespace
}  // namespace quorvance
