#include "state/session.h"

#include "base/record.h"

namespace quorvance {
namespace {

constexpr RecordField kSessionFields[] = {
    field<&Session::idSession>("idSession"),
    field<&Session::timeSession>("timeSession"),
};

}  // namespace

Json Session::getJson() const { return recordToJson(this, kSessionFields); }

}  // namespace quorvance
