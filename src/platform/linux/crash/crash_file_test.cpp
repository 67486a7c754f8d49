#include "platform/linux/crash/crash_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <vector>

#include "platform/testing/temporary_folder_test_support.h"

namespace quorvance {
namespace {

std::vector<std::string> namesIn(const std::string& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    names.push_back(entry.path().filename());
  }
  return names;
}

TEST(CrashFileTest, SecondWritingIsOfTheSameReportUnlessThatWasSentMeanwhile) {
  for (const bool isSent : {false, true}) {
    const TemporaryFolder root;
    CrashFile file(root.at("made/again"), "crash", 50);
    ASSERT_EQ(file.open(), CrashFile::State::ready);
    ASSERT_TRUE(file.replace("first"));
    const auto names = namesIn(root.at("made/again"));
    ASSERT_EQ(names.size(), 1U);
    if (isSent) std::filesystem::remove(root.at("made/again/" + names[0]));
    EXPECT_EQ(file.replace("second"), !isSent);
    EXPECT_EQ(namesIn(root.at("made/again")).size(), isSent ? 0U : 1U);
    EXPECT_EQ(root.get("made/again/" + names[0]), isSent ? "" : "second");
    file.synchronize();
  }
}

}  // namespace
}  // namespace quorvance
