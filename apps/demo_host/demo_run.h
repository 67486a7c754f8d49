// One run of the demo, from its arguments to its exit status.
#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace demo_host {

// Plays the journey on the process's one manager: once a process. Prints the journey to `out` and
// every fault to `error`; throws nothing of its own. Returns the exit status.
int runDemo(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& error);

}  // namespace demo_host
