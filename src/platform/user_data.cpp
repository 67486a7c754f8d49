#include "quorvance/platform/user_data.h"

namespace quorvance {

UserDataSourceBase::~UserDataSourceBase() = default;

}  // namespace quorvance
