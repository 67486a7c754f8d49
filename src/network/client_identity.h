#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "state/inner_quorvance_data.h"

namespace quorvance {

/// Whose calls these are: the server's URL, the user and the device, in memory and in the store.
/// What this run was told stands in memory; the store has what the last run knew. Any thread;
/// guarded by one mutex, and the store is asked outside of it. What memory has of the user and the
/// device goes when the store is erased.
class ClientIdentity {
 public:
  /// The identity of one call.
  struct Values {
    std::string serverUrl;
    std::string userId;
    std::string deviceId;
  };

  explicit ClientIdentity(std::shared_ptr<InnerQuorvanceData> state);

  // Memory alone, as the host's properties set it; absent in a new run.
  std::optional<std::string> serverUrl() const;
  void setServerUrl(std::optional<std::string> serverUrl);
  std::optional<std::string> userId() const;
  void setUserId(std::optional<std::string> userId);

  // Memory and store. An absent URL leaves the stored one alone.
  void configureServerUrl(const std::optional<std::string>& serverUrl);
  void configureUserId(const std::string& userId);
  void configureDeviceId(const std::string& deviceId);
  /// From now on the user is the default one.
  void forgetUser();

  /// Of now. What memory lacks comes from the store, the device also while it is the default one;
  /// an absent URL is the one that the last call had, empty before any.
  Values current();

 private:
  void dropErasedLocked();

  const std::shared_ptr<InnerQuorvanceData> state_;
  mutable std::mutex mutex_;
  std::optional<std::string> serverUrl_;
  std::string lastServerUrl_;
  std::optional<std::string> userId_;
  std::string deviceId_;
  /// Of the state, when user and device were last looked at.
  std::uint64_t erasures_ = 0;
};

}  // namespace quorvance
