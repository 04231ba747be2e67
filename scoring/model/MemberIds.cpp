#include "scoring/model/MemberIds.h"

#include <utility>

namespace KelScoring_20 {

using KelCommon_1_3::FieldKey;
using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;

void MemberIds::Add(std::string id) {
  FieldKey key(std::move(id));
  const int place = fAll.Add(key, Value::NULL_VALUE);
  fIds.push_back({std::move(key), place});
}

// An output record that is used again holds all members in order. Then there is no need to look for one, nor to touch
// the names, which makes out half of the memory that large ensembles go through.
Value& MemberIds::MemberOf(Value& value, std::size_t position) const {
  const Id& id = fIds[position];
  if (value.GetType() != Value::kMembers) return value[id.key.Name()];
  ValueRecord& members = value.MakeMembers();
  return members.Layout() == fAll.Layout() ? members[id.place] : members[id.key];
}

}  // namespace KelScoring_20
