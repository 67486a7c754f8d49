#pragma once

#include <errno.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <system_error>
#include <thread>

#include "platform/testing/temporary_folder_test_support.h"

namespace quorvance {

/// Runs `body` on a thread of its own in a new network namespace; it is given a root folder whose
/// /proc/net and /sys are those of that namespace. What the body starts lives there too. Needs
/// root: false, and nothing ran, where the kernel refuses.
inline bool runInNetworkNamespace(const std::function<void(const std::string& root)>& body) {
  bool hasRun = false;
  std::thread([&] {
    if (unshare(CLONE_NEWNET | CLONE_NEWNS) != 0) return;
    hasRun = true;
    const TemporaryFolder root;
    std::filesystem::create_directories(root.at("proc"));
    std::filesystem::create_directories(root.at("sys"));
    // Of the thread that reads, not of the process.
    std::filesystem::create_directory_symlink("/proc/thread-self/net", root.at("proc/net"));
    ASSERT_EQ(mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr), 0) << errno;
    ASSERT_EQ(mount("sysfs", root.at("sys").c_str(), "sysfs", MS_RDONLY, nullptr), 0) << errno;
    body(root.path());
    umount2(root.at("sys").c_str(), MNT_DETACH);
  }).join();
  return hasRun;
}

/// Runs a command of ip(8) in the calling thread's namespace.
inline void ip(const std::string& arguments) {
  ASSERT_EQ(std::system(("ip " + arguments).c_str()), 0) << arguments;
}

}  // namespace quorvance
