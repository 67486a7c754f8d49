#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>

namespace quorvance {

/// How a child ends in which all went well.
inline constexpr int kChildIsWell = 7;

/// Forks; whether the child ended by itself, as it should, and soon. In the child `body` runs.
inline testing::AssertionResult childEndsWell(const std::function<void()>& body) {
  const pid_t child = fork();
  if (child == 0) {
    alarm(30);  // a hang ends the child by a signal
    body();
    _exit(kChildIsWell);
  }
  int status = 0;
  if (waitpid(child, &status, 0) != child) return testing::AssertionFailure() << "no child";
  if (WIFSIGNALED(status)) return testing::AssertionFailure() << "signal " << WTERMSIG(status);
  if (WEXITSTATUS(status) == kChildIsWell) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "status " << WEXITSTATUS(status);
}

}  // namespace quorvance
