#pragma once

#include "quorvance/standard_library.h"

#pragma GCC visibility push(default)

extern "C" {
/// The library's own version text, the one that every request carries under "version".
extern const char QuorvanceSDKVersionString[];
/// Major and minor number of the same version, for a comparison.
extern const double QuorvanceSDKVersionNumber;
}

#pragma GCC visibility pop
