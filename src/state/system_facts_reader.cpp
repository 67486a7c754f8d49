#include "state/system_facts_reader.h"

#include <chrono>
#include <utility>

namespace quorvance {
namespace {

constexpr std::chrono::seconds kMaxReadWait{2};

void takeSettings(SystemFacts& facts, SystemFacts& now) {
  facts.deviceName = std::move(now.deviceName);
  facts.locale = std::move(now.locale);
  facts.region = std::move(now.region);
  facts.language = std::move(now.language);
  facts.timeZone = std::move(now.timeZone);
}

}  // namespace

SystemFactsReader::SystemFactsReader(std::shared_ptr<FactSource<SystemFacts>> source)
    : source_(std::move(source)) {}

std::optional<SystemFacts> SystemFactsReader::first() const {
  const std::lock_guard lock(mutex_);
  return first_;
}

// Under the lock of the reading.
SystemFacts SystemFactsReader::readSource() {
  SystemFacts now = source_ ? source_->read() : SystemFacts();
  const std::lock_guard lock(mutex_);
  if (!first_) first_ = now;
  SystemFacts facts = *first_;
  takeSettings(facts, now);
  return facts;
}

// A later reading that hangs keeps nobody from the first one's answer.
std::optional<SystemFacts> SystemFactsReader::read() {
  if (auto known = first()) return known;
  const std::unique_lock reading(reading_, std::chrono::steady_clock::now() + kMaxReadWait);
  if (!reading) return std::nullopt;
  if (auto known = first()) return known;
  return readSource();
}

std::optional<SystemFacts> SystemFactsReader::readAgain() {
  const std::unique_lock reading(reading_, std::chrono::steady_clock::now() + kMaxReadWait);
  if (!reading) return std::nullopt;
  return readSource();
}

}  // namespace quorvance
