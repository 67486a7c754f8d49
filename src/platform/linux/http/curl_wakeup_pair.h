#pragma once

#include <curl/curl.h>

namespace quorvance {

/// Marks the two sockets by which libcurl can wake this handle close-on-exec: programs that the
/// host starts must not inherit them, and no option of libcurl says so. The handle must be new and
/// known to the calling thread alone. Leaves everything as it is when they cannot be told from the
/// host's own sockets beyond doubt.
void closeWakeupPairOnExec(CURLM* multi);

}  // namespace quorvance
