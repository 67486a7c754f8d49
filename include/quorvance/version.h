#pragma once

#include "quorvance/standard_library.h"

// The version of these headers, for #if; the library that runs may be a later one of the same major
// number. QUORVANCE_VERSION grows with each release: 1002003 is 1.2.3.
#define QUORVANCE_VERSION_MAJOR 1
#define QUORVANCE_VERSION_MINOR 0
#define QUORVANCE_VERSION_PATCH 0
#define QUORVANCE_VERSION_OF(major, minor, patch) ((major)*1000000 + (minor)*1000 + (patch))
#define QUORVANCE_VERSION \
  QUORVANCE_VERSION_OF(QUORVANCE_VERSION_MAJOR, QUORVANCE_VERSION_MINOR, QUORVANCE_VERSION_PATCH)

#pragma GCC visibility push(default)

extern "C" {
/// The library's own version text, the one that every request carries under "version".
extern const char QuorvanceSDKVersionString[];
/// Major and minor number of the same version as a decimal fraction, 1.2 for 1.2.3. Tells majors
/// apart; it cannot tell 1.10 from 1.1, which the text and the macros can.
extern const double QuorvanceSDKVersionNumber;
}

#pragma GCC visibility pop
