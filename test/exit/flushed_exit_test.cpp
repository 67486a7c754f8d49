// Hosts that end without any care of the library's right after a flush lose nothing. With
// QUORVANCE_EXIT_REPEATS=1000 in the environment they come so often.

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>

#include "test/child_process.h"
#include "test/child_programs.h"
#include "test/real_world_test_support.h"

namespace quorvance {
namespace {

TEST(FlushedExitTest, WhatWasAcceptedIsAnsweredOrStored) {
  const RealWorld world;
  const std::string folder = world.folder.at("data");
  const char* const wanted = std::getenv("QUORVANCE_EXIT_REPEATS");
  const auto times = static_cast<std::uint64_t>(wanted == nullptr ? 10 : std::atoi(wanted));
  // The time that each flush may take, in milliseconds; 0 shows what is lost without.
  const char* const timeout = std::getenv("QUORVANCE_FLUSH_MILLISECONDS");
  std::uint64_t usersForgotten = 0;
  for (std::uint64_t i = 0; i < times; ++i) {
    std::filesystem::remove_all(folder);
    ChildProcess child({kExitChildProgram, "flush_and_exit_at_once", folder, world.server.url(),
                        "/dev/null", timeout == nullptr ? "30000" : timeout},
                       world.folder.at("complaints"));
    EXPECT_EQ(child.waitForEnd().exitStatus, EXIT_SUCCESS) << world.folder.get("complaints");
    if (world.folder.get("data/state.json").find("UNKNOWN") != std::string::npos) {
      ++usersForgotten;
    }
  }
  const auto count = [&](const std::string& path) {
    return world.server.tally().calls["/qrsk-med/3.0/" + path];
  };
  EXPECT_EQ(count("getSdkConfiguration/"), times);
  EXPECT_EQ(count("SendCheckpointEvent/"), times);
  EXPECT_EQ(count("/UpdateTransactionResult/"), times);
  EXPECT_EQ(count("SendSessionData/"), times);
  EXPECT_EQ(usersForgotten, times);
}

}  // namespace
}  // namespace quorvance
