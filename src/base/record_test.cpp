#include "base/record.h"

#include <gtest/gtest.h>

#include <limits>
#include <utility>

#include "base/json_test_support.h"

namespace quorvance {
namespace {

struct ProbeRecord {
  std::optional<double> number;
  std::optional<float> single;
  std::string requiredText = "kept";
  std::int64_t requiredInteger = 7;
  std::optional<std::vector<std::string>> list;
};

constexpr auto kProbeFields = RecordTable{
    field<&ProbeRecord::number>("number"),
    field<&ProbeRecord::single>("single"),
    field<&ProbeRecord::requiredText>("requiredText"),
    field<&ProbeRecord::requiredInteger>("requiredInteger"),
    field<&ProbeRecord::list>("list"),
};

std::string rewrittenProbe(const Json& json) {
  ProbeRecord record;
  readRecord(json, record, kProbeFields);
  return compactText(recordToJson(record, kProbeFields));
}

TEST(RecordTest, WritesPresentFieldsInTheOrderOfItsTable) {
  for (const std::string_view text : {"{}", "null", "[]", "7"}) {
    EXPECT_EQ(rewrittenProbe(parsedJson(text)), R"({"requiredText":"kept","requiredInteger":7})");
  }
  expectRecordText(
      R"({"number":0.5,"single":0.25,"requiredText":"","requiredInteger":0,"list":[]})",
      &rewrittenProbe);
}

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
