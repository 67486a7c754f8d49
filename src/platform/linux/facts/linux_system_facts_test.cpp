#include "platform/linux/facts/linux_system_facts.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "platform/linux/facts/linux_environment.h"
#include "platform/testing/temporary_folder_test_support.h"

namespace quorvance {
namespace {

class LinuxSystemFactsTest : public testing::Test {
 protected:
  SystemFacts read(LinuxEnvironment::Variables variables = {}) const {
    return LinuxSystemFacts(RootFiles(folder_.path() + "/"),
                            std::make_shared<LinuxEnvironment>(std::move(variables)))
        .read();
  }
  void linkLocaltime(const std::string& target) const {
    std::filesystem::create_directories(folder_.at("etc"));
    std::filesystem::create_symlink(target, folder_.at("etc/localtime"));
  }

  TemporaryFolder folder_;
};

TEST_F(LinuxSystemFactsTest, AnEmptyRootLeavesWhatTheKernelKnows) {
  const SystemFacts facts = read();
  EXPECT_EQ(facts.systemName, std::nullopt);
  EXPECT_EQ(facts.kindModel, std::nullopt);
  EXPECT_EQ(facts.model, LinuxEnvironment({}).machine());
  EXPECT_TRUE(facts.deviceName);
  EXPECT_GT(facts.memoryBytes.value_or(0), 64 << 20);
  EXPECT_EQ(facts.isMultitaskingSupported, true);
}

TEST(LinuxStorageFactsTest, AreAllOfTheHomesFileSystem) {
  const auto bytesOf = [](LinuxEnvironment::Variables variables) {
    return LinuxStorageFacts(std::make_shared<LinuxEnvironment>(std::move(variables)))
        .read()
        .totalBytes;
  };
  EXPECT_GT(bytesOf({{"HOME", "/"}}).value_or(0), 1 << 20);
  EXPECT_EQ(bytesOf({{"HOME", "/no/such/folder"}}), std::nullopt);
  EXPECT_EQ(bytesOf({{"HOME", "/proc"}}), std::nullopt) << "a file system without a size";
  EXPECT_EQ(bytesOf({}), std::nullopt);
}

TEST_F(LinuxSystemFactsTest, TheAdministratorsReleaseFileHidesTheVendors) {
  folder_.put("usr/lib/os-release", "NAME=\"Vendor OS\"\nVERSION_ID='1'\n");
  EXPECT_EQ(read().systemName, "Vendor OS");
  EXPECT_EQ(read().systemVersion, "1");
  folder_.put("etc/os-release", "NAME=Own\n");
  EXPECT_EQ(read().systemName, "Own");
  EXPECT_EQ(read().systemVersion, std::nullopt);
}

TEST_F(LinuxSystemFactsTest, TheModelComesFromTheMostTellingSource) {
  folder_.put("sys/class/dmi/id/product_name", "Book 14\n");
  EXPECT_EQ(read().model, "Book 14");
  folder_.put("proc/device-tree/model", std::string("Phone X\0", 8));
  EXPECT_EQ(read().model, "Phone X");
}

TEST_F(LinuxSystemFactsTest, TextThatNobodyCanReadIsNone) {
  // Octal where a digit or a letter follows.
  const std::string_view unreadable[] = {"\177ELF\x02\x01\x01", "Book\x1b[2J14", "B\xff\xfeok",
                                         "Tab\tbook", "Book\xc2\23314"};
  for (const std::string_view text : unreadable) {
    folder_.put("proc/device-tree/model", text);
    folder_.put("sys/class/dmi/id/product_name", "Book 14\n");
    folder_.put("etc/os-release", "NAME='" + std::string(text) + "'\nVERSION_ID=12\n");
    EXPECT_EQ(read().model, "Book 14");
    EXPECT_EQ(read().systemName, std::nullopt);
    EXPECT_EQ(read().systemVersion, "12");
    folder_.put("sys/class/dmi/id/product_name", "Line 1\nLine 2\n");
    EXPECT_EQ(read().model, LinuxEnvironment({}).machine());
  }
}

TEST_F(LinuxSystemFactsTest, TheKindOfDeviceComesFromItsChassis) {
  const std::pair<const char*, std::optional<std::string>> cases[] = {
      {"3\n", "desktop"}, {"10\n", "laptop"}, {"11", "handset"}, {"23\n", "server"},
      {"30", "tablet"},   {"0", {}},          {"37", {}},        {"3x", {}}};
  for (const auto& [type, kind] : cases) {
    folder_.put("sys/class/dmi/id/chassis_type", type);
    EXPECT_EQ(read().kindModel, kind) << type;
    EXPECT_EQ(read().localizedModel, kind) << type;
  }
}

TEST_F(LinuxSystemFactsTest, MachineInfoIsTheUsersOwnWord) {
  folder_.put("proc/device-tree/chassis-type", std::string("handset\0", 8));
  EXPECT_EQ(read().kindModel, "handset");
  folder_.put("sys/class/dmi/id/chassis_type", "3\n");
  EXPECT_EQ(read().kindModel, "desktop");
  folder_.put("etc/machine-info", "PRETTY_HOSTNAME=\"Till no. 5\"\nCHASSIS=tablet\n");
  EXPECT_EQ(read().deviceName, "Till no. 5");
  EXPECT_EQ(read().kindModel, "tablet");
}

TEST_F(LinuxSystemFactsTest, TheEnvironmentsLocaleHidesTheSystems) {
  folder_.put("etc/locale.conf", "LANG=\"de_AT.UTF-8\"\nLANGUAGE=de:en\n");
  EXPECT_EQ(read().locale, "de_AT");
  EXPECT_EQ(read().region, "AT");
  EXPECT_EQ(read().language, "de");
  EXPECT_EQ(read({{"LANG", "fr_CA"}}).locale, "fr_CA");
  EXPECT_EQ(read({{"LANG", "C"}}).locale, std::nullopt);
}

TEST_F(LinuxSystemFactsTest, TheTimeZoneComesFromTheVariableTheLinkOrTheFile) {
  folder_.put("etc/timezone", "Asia/Tokyo\n");
  EXPECT_EQ(read().timeZone, "Asia/Tokyo");
  linkLocaltime("/usr/share/zoneinfo/Europe/Berlin");
  EXPECT_EQ(read().timeZone, "Europe/Berlin");
  EXPECT_EQ(read({{"TZ", ":America/Lima"}}).timeZone, "America/Lima");
  EXPECT_EQ(read({{"TZ", "PET5"}}).timeZone, std::nullopt);
}

}  // namespace
}  // namespace quorvance
