#pragma once

#include <string>
#include <vector>

#include "scoring/common/ValueRecord.h"

namespace KelScoring_20 {

/// The identifiers of an ensemble's members, in order; two may be equal. Finds a member's place in a composite value.
class MemberIds {
 public:
  void Add(std::string id);

  /// The place of the member at `position` in `value`. What is composite already keeps its members; anything else
  /// starts anew.
  [[nodiscard]] KelCommon_1_3::Value& MemberOf(KelCommon_1_3::Value& value, std::size_t position) const;

 private:
  struct Id {
    KelCommon_1_3::FieldKey key;
    int place;  // among the members of a value that every member has written to
  };

  std::vector<Id> fIds;
  KelCommon_1_3::ValueRecord fAll;  // the members of such a value
};

}  // namespace KelScoring_20
