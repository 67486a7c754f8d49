#include "platform/linux/facts/linux_identity.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "platform/testing/memory_store.h"
#include "platform/testing/temporary_folder_test_support.h"

namespace quorvance {
namespace {

class LinuxIdentityTest : public testing::Test {
 protected:
  void putMachineId(std::string_view text) const { folder_.put("etc/machine-id", text); }
  std::string vendorIdentifier(std::string_view host = "com.bank.app") {
    return LinuxIdentity(RootFiles(folder_.path()), host, store_).vendorIdentifier().value_or("");
  }
  std::string stored() const { return store_->read("vendorIdentifier").text; }

  TemporaryFolder folder_;
  std::shared_ptr<MemoryStore> store_ = std::make_shared<MemoryStore>();
};

// Computed with systemd's own function for the same application identifier.
TEST_F(LinuxIdentityTest, DerivesTheIdentifierAsSystemdDoes) {
  putMachineId("0123456789abcdef0123456789abcdef\n");
  EXPECT_EQ(vendorIdentifier(), "3D8C8D5C-C2D2-44CA-815F-19C0E8294672");
  EXPECT_EQ(stored(), "");
}

TEST_F(LinuxIdentityTest, ApplicationsOfOneVendorAgreeAndOthersDiffer) {
  putMachineId("0123456789abcdef0123456789abcdef");
  EXPECT_EQ(vendorIdentifier("com.bank.app"), vendorIdentifier("com.bank.other"));
  EXPECT_NE(vendorIdentifier("com.bank.app"), vendorIdentifier("com.bank.app.pro"));
  EXPECT_EQ(vendorOf(""), "");
}

TEST_F(LinuxIdentityTest, MachinesWithoutAnIdentifierGetOneForEver) {
  for (const std::string_view text :
       {"", "uninitialized\n", "00000000000000000000000000000000\n",
        "0123456789abcdef0123456789abcdef0", "0123456789abcdef0123456789abcdeg"}) {
    putMachineId(text);
    store_ = std::make_shared<MemoryStore>();
    const std::string first = vendorIdentifier();
    EXPECT_EQ(first.size(), 36U) << text;
    EXPECT_EQ(stored(), first) << text;
    putMachineId("0123456789abcdef0123456789abcdef\n");
    EXPECT_EQ(vendorIdentifier(), first) << text;
  }
}

TEST_F(LinuxIdentityTest, AStoredTextThatIsNoIdentifierIsIgnored) {
  putMachineId("0123456789abcdef0123456789abcdef");
  const std::string derived = vendorIdentifier();
  for (const char* text : {"", "rubbish", "3d8c8d5c-c2d2-44ca-815f-19c0e8294672",
                           "3D8C8D5CC2D244CA815F19C0E8294672"}) {
    store_->write("vendorIdentifier", text);
    EXPECT_EQ(vendorIdentifier(), derived) << text;
  }
}

TEST_F(LinuxIdentityTest, AnswersFromMemoryAfterTheFirstTime) {
  putMachineId("0123456789abcdef0123456789abcdef");
  LinuxIdentity identity(RootFiles(folder_.path()), "com.bank.app", store_);
  const auto first = identity.vendorIdentifier();
  putMachineId("");
  EXPECT_EQ(identity.vendorIdentifier(), first);
  EXPECT_EQ(identity.advertisingIdentifier(), std::nullopt);
}

TEST_F(LinuxIdentityTest, AStoredOneThatBecomesKnownLateIsPreferred) {
  const std::string stored = "3D8C8D5C-C2D2-44CA-815F-19C0E8294672";
  LinuxIdentity identity(RootFiles(folder_.path()), "com.bank.app", store_);
  EXPECT_NE(identity.vendorIdentifier(), stored);
  store_->write("vendorIdentifier", stored);
  EXPECT_EQ(identity.vendorIdentifier(), stored);
}

}  // namespace
}  // namespace quorvance
