// What the library tells of this device, as a table for people or as JSON for programs.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "apps/demo_host/demo_arguments.h"
#include "quorvance/inspection.h"

namespace demo_host {

// Reads this device and prints what was read. The exit status; throws RunError.
int printInspection(const DemoOptions& options, std::ostream& out);

std::string inspectionTable(const std::vector<quorvance::InspectedField>& fields);
// The records as they would be sent, under their names, and under "fields" all that is known of
// each field.
std::string inspectionJson(const std::vector<quorvance::InspectedField>& fields);

}  // namespace demo_host
