#pragma once

namespace quorvance {

/// Ends another thread's wait for descriptors: readable from signal() until reset(). A signal that
/// comes before the wait ends it at once. Not thread-safe before it is open, any thread afterwards.
class WakeUpEvent {
 public:
  WakeUpEvent() = default;
  ~WakeUpEvent();
  WakeUpEvent(const WakeUpEvent&) = delete;
  WakeUpEvent& operator=(const WakeUpEvent&) = delete;

  /// True when it is open; false when the process or the system has no descriptor to give.
  bool open();
  /// What to wait for; -1 when it is not open.
  int descriptor() const { return descriptor_; }
  void signal() const;
  /// For so many milliseconds at most.
  void wait(int milliseconds) const;
  void reset() const;

 private:
  int descriptor_ = -1;
};

}  // namespace quorvance
