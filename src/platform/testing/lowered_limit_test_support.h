#pragma once

#include <sys/resource.h>
#include <unistd.h>

namespace quorvance {

/// Lets this process have no more of a resource (RLIMIT_...) than so much while it lives.
class LoweredLimit {
 public:
  LoweredLimit(int resource, rlim_t most) : resource_(resource) {
    getrlimit(resource_, &previous_);
    const rlimit limit = {most, previous_.rlim_max};
    setrlimit(resource_, &limit);
  }
  ~LoweredLimit() { setrlimit(resource_, &previous_); }
  LoweredLimit(const LoweredLimit&) = delete;
  LoweredLimit& operator=(const LoweredLimit&) = delete;

 private:
  const int resource_;
  rlimit previous_ = {};
};

/// Lets this process open no further descriptor while it lives.
class NoMoreDescriptors : LoweredLimit {
 public:
  NoMoreDescriptors() : LoweredLimit(RLIMIT_NOFILE, nextDescriptor()) {}

 private:
  static rlim_t nextDescriptor() {
    const int next = dup(STDOUT_FILENO);
    close(next);
    return static_cast<rlim_t>(next);
  }
};

}  // namespace quorvance
