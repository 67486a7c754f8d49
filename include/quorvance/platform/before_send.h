#pragma once

#include "quorvance/standard_library.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#pragma GCC visibility push(default)

namespace quorvance {

/// A host's last word over what is sent: given the service, the last word of its path as in
/// "GetCheckpointRisk", and the body as JSON text, it returns the text to send, an object, or
/// nothing to drop the call. Of every call, stored reports included; "version" is added afterwards.
///
/// Runs on a background thread of the library, call after call in the order in which they are sent;
/// one that does not return holds up every further call. What it throws and what is no JSON object
/// (or has more than 65 536 values, or nests deeper than 128) drops the call, with an error in the
/// log. A dropped call is not asked again before its next occasion; its verdict comes without an
/// answer, a stored report stays stored.
using BeforeSend =
    std::function<std::optional<std::string>(std::string_view service, const std::string& body)>;

}  // namespace quorvance

#pragma GCC visibility pop
