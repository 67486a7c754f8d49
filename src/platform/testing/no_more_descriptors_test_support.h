#pragma once

#include <sys/resource.h>
#include <unistd.h>

namespace quorvance {

/// Lets this process open no further descriptor while it lives.
class NoMoreDescriptors {
 public:
  NoMoreDescriptors() {
    getrlimit(RLIMIT_NOFILE, &previous_);
    rlimit limit = previous_;
    const int next = dup(STDOUT_FILENO);
    limit.rlim_cur = static_cast<rlim_t>(next);
    close(next);
    setrlimit(RLIMIT_NOFILE, &limit);
  }
  ~NoMoreDescriptors() { setrlimit(RLIMIT_NOFILE, &previous_); }
  NoMoreDescriptors(const NoMoreDescriptors&) = delete;
  NoMoreDescriptors& operator=(const NoMoreDescriptors&) = delete;

 private:
  rlimit previous_ = {};
};

}  // namespace quorvance
