#include "device/check_point_additional_data.h"

#include "base/record.h"

namespace quorvance {
namespace {

constexpr auto kLocationFields = RecordTable{
    field<&LocationFix::accuracy>("accuracy"),
    field<&LocationFix::altitude>("altitude"),
    field<&LocationFix::latitude>("latitude"),
    field<&LocationFix::longitude>("longitude"),
};

Json permissionWords(const std::vector<MobilePermission>& permissions) {
  Json words = Json::array();
  words.get_ref<Json::array_t&>().reserve(permissions.size());
  for (const MobilePermission permission : permissions) {
    words.push_back(MobilePermissionToString::toString(permission));
  }
  return words;
}

}  // namespace

Json CheckPointAdditionalData::getJson() const {
  Json object = makeObject(5);
  JsonDiscarder discarder(object);
  if (collectTime) putMember(object, "collectTime", *collectTime);
  if (location) putMember(object, "location", recordToJson(*location, kLocationFields));
  putMember(object, "permissions", permissionWords(permissions));
  putMember(object, "ignorePermissions", permissionWords(ignorePermissions));
  putMember(object, "askedPermissions", permissionWords(askPermissions));
  discarder.keep();
  return object;
}

}  // namespace quorvance
