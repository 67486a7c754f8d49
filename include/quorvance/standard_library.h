#pragma once

// Included before anything else: what the library takes and gives are types of libstdc++.

#include <version>

#if defined(_LIBCPP_VERSION)
#error "QuorvanceSDK is built with libstdc++; a host must be too (with clang++: -stdlib=libstdc++)"
#endif
