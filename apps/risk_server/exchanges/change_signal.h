// Wakes those who show the server's state when some of it has changed.
#pragma once

#include <mutex>
#include <set>

namespace risk_server {

// Any thread, guarded by mutex_. It must outlive its watchers.
class ChangeSignal {
 public:
  // Called with no lock held that a watcher might need.
  void notify();

  // Life: readable (poll) from the first notify() after it was made or cleared. Each has one owner.
  class Watcher {
   public:
    // Throws std::system_error when there is no descriptor left.
    explicit Watcher(ChangeSignal& signal);
    ~Watcher();
    Watcher(const Watcher&) = delete;
    Watcher& operator=(const Watcher&) = delete;

    int descriptor() const { return descriptor_; }
    void clear() const;

   private:
    ChangeSignal& signal_;
    const int descriptor_;
  };

 private:
  std::mutex mutex_;
  std::set<int> descriptors_;
};

}  // namespace risk_server
