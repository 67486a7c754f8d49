#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/linux/facts/root_files.h"
#include "quorvance/platform/device_facts.h"
#include "quorvance/platform/environment.h"

namespace quorvance {

/// The size of the file system of the user's home. Fact lane only: a home on a network may hang.
class LinuxStorageFacts : public FactSource<StorageFacts> {
 public:
  explicit LinuxStorageFacts(std::shared_ptr<EnvironmentSource> environment)
      : environment_(std::move(environment)) {}

  StorageFacts read() override;
  std::string origin(std::string_view field) const override;

 private:
  const std::shared_ptr<EnvironmentSource> environment_;
};

/// Hardware, operating system and locale from the files of the system and from the environment.
/// Fact lane only; may wait for the disk.
class LinuxSystemFacts : public FactSource<SystemFacts> {
 public:
  LinuxSystemFacts(RootFiles files, std::shared_ptr<EnvironmentSource> environment);

  SystemFacts read() override;
  std::string origin(std::string_view field) const override;

 private:
  void readOperatingSystem(SystemFacts& facts) const;
  void readMachine(SystemFacts& facts) const;
  void readLocale(SystemFacts& facts) const;
  std::optional<std::string> model() const;
  std::optional<std::string> timeZone() const;
  std::optional<std::string> variable(std::string_view name) const;

  const RootFiles files_;
  const std::shared_ptr<EnvironmentSource> environment_;
};

}  // namespace quorvance
