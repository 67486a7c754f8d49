#include "quorvance/version.h"

extern "C" {
const char QuorvanceSDKVersionString[] = "1.0.0";
const double QuorvanceSDKVersionNumber = 1.0;
}
