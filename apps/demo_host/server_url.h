// The server's URL as a host must give it to the library.
#pragma once

#include <string>
#include <string_view>

namespace demo_host {

// Nothing when `url` is a base URL that paths can be glued to: http or https, a host, perhaps a
// port and a path. Else what is wrong with it.
std::string faultOfServerUrl(std::string_view url);

// The library glues its paths to the URL as it stands, so the last slash must be there.
std::string withLastSlash(std::string url);

}  // namespace demo_host
