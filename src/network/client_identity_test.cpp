#include "network/client_identity.h"

#include <gtest/gtest.h>

#include <new>

#include "platform/testing/test_world.h"

namespace quorvance {
namespace {

struct IdentityWorld : TestWorld {
  ClientIdentity identity{std::make_shared<InnerQuorvanceData>(time, store, nullptr)};

  std::string current() {
    const ClientIdentity::Values values = identity.current();
    return values.serverUrl + " " + values.userId + " " + values.deviceId;
  }
  std::string stored() const {
    return store->read("serverUrl").text + " " + store->read("user_id").text + " " +
           store->read("deviceId").text;
  }
};

TEST(ClientIdentityTest, MemoryComesBeforeTheStoreAndTheLastUrlBeforeNone) {
  IdentityWorld world;
  EXPECT_EQ(world.current(), " UNKNOWN no_device_id");
  // What another process or an earlier run has stored counts while nothing else is known.
  world.store->write("user_id", "stored");
  world.store->write("deviceId", "elsewhere");
  EXPECT_EQ(world.current(), " stored elsewhere");
  world.identity.configureServerUrl("a/");
  world.identity.configureUserId("u");
  world.identity.configureDeviceId("d");
  EXPECT_EQ(world.current(), "a/ u d");
  EXPECT_EQ(world.stored(), "a/ u d");
  world.store->write("deviceId", "elsewhere");
  // The host's properties change the memory alone.
  world.identity.setServerUrl("b/");
  world.identity.setUserId("v");
  EXPECT_EQ(world.current(), "b/ v d");
  EXPECT_EQ(world.stored(), "a/ u elsewhere");
  world.identity.configureServerUrl(std::nullopt);
  world.identity.setUserId(std::nullopt);
  EXPECT_EQ(world.current(), "b/ u d");
  EXPECT_EQ(world.stored(), "a/ u elsewhere");
  // A URL that no call carried is none to go back to.
  world.identity.setServerUrl("c/");
  world.identity.setServerUrl(std::nullopt);
  world.identity.configureUserId("w");
  world.identity.forgetUser();
  EXPECT_EQ(world.current(), "b/ UNKNOWN d");
  EXPECT_EQ(world.stored(), "a/ UNKNOWN elsewhere");
}

TEST(ClientIdentityTest, AUserIsForgottenAlsoWhenTheStoreHasNoMemory) {
  class FullStore : public MemoryStore {
   public:
    bool isFull = false;
    void write(std::string_view key, std::string_view text) override {
      if (isFull) throw std::bad_alloc();
      MemoryStore::write(key, text);
    }
  };
  const TestWorld world;
  const auto store = std::make_shared<FullStore>();
  ClientIdentity identity{std::make_shared<InnerQuorvanceData>(world.time, store, nullptr)};
  identity.configureUserId("u");
  store->isFull = true;
  EXPECT_THROW(identity.configureUserId("v"), std::bad_alloc);
  EXPECT_EQ(identity.userId(), "u") << "a user that is not stored is none";
  identity.forgetUser();
  EXPECT_EQ(identity.userId(), std::nullopt);
}

}  // namespace
}  // namespace quorvance
