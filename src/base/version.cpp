#include "quorvance/version.h"

#include <string_view>

extern "C" {
constexpr char QuorvanceSDKVersionString[] = "1.0.0";
const double QuorvanceSDKVersionNumber = 1.0;
}

#define QUORVANCE_TEXT_OF(number) #number
#define QUORVANCE_TEXT(number) QUORVANCE_TEXT_OF(number)
static_assert(std::string_view(QuorvanceSDKVersionString) ==
                  QUORVANCE_TEXT(QUORVANCE_VERSION_MAJOR) "." QUORVANCE_TEXT(
                      QUORVANCE_VERSION_MINOR) "." QUORVANCE_TEXT(QUORVANCE_VERSION_PATCH),
              "the text is of another version than the macros");
