#pragma once

#include <exception>
#include <new>
#include <stdexcept>
#include <utility>

#include "base/library_code.h"

namespace quorvance {

/// Runs a step of the library's own work; false when there was no memory to go on, which costs what
/// the step had not done. Every other exception goes on: it is a defect and ends the process.
template <class Step>
bool hasMemoryFor(Step&& step) {
  try {
    std::forward<Step>(step)();
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  } catch (const std::length_error&) {  // of a size that no memory could hold
    return false;
  }
}

/// The step as a task for a queue, be it the host's: its want of memory ends with it.
template <class Step>
auto withinMemory(Step step) {
  return [step = std::move(step)]() mutable { hasMemoryFor(step); };
}

/// Calls code of the host's: whatever that throws ends the process, as on a thread of the host's.
/// Its want of memory must not pass for the library's; for other exceptions nobody has a handler,
/// and they keep the stack on which they were thrown.
template <class Call>
void callHost(Call&& call) {
  const LibraryCode mark;
  try {
    std::forward<Call>(call)();
  } catch (const std::bad_alloc&) {
    std::terminate();
  } catch (const std::length_error&) {
    std::terminate();
  }
}

}  // namespace quorvance
