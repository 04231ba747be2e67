#pragma once

#include <iosfwd>
#include <memory>

#include "scoring/common/KelExport.h"
#include "scoring/common/KelStatus.h"

namespace KelCommon_1_3 {
class ValueRecord;
}

namespace KelTransformNS {

/// Computes the derived fields of a PMML document in a record.
///
/// The mining schema of a model isn't known here. So a value of the record is missing if it is null or a value that the
/// data dictionary declares as missing, and every other one is taken as it is, valid or not. Only what can't be
/// converted to its field's type has no use: each derived field that is computed from it becomes null.
///
/// Texts are added first, by one thread; from then on any number of threads may call `Transform` and
/// `GetDerivedVariableInfo` on their own records.
class KEL_EXPORT KelTransformation {
 public:
  KelTransformation();
  virtual ~KelTransformation();
  KelTransformation(const KelTransformation&) = delete;
  KelTransformation& operator=(const KelTransformation&) = delete;

  /// Reads the data dictionary and the transformation dictionary of a PMML text, and adds them to what was read before.
  /// Every derived field is compiled: one that can't be computed is an error. Errors: 104 for malformed XML, 105 for
  /// another root element than "PMML", 109 for everything that is wrong with a field or not supported. An error leaves
  /// the transformation as it was and a reason in `KelDiagnostics`. The flag is reserved; callers pass false. The XML
  /// platform must be up.
  virtual KelCommon_1_3::KelStatus AddPMML(std::istream& stream, bool flag);
  /// Adds the derived fields of a text whose root is a "TransformationDictionary"; they may refer to all fields that
  /// were read before. Errors as above.
  virtual KelCommon_1_3::KelStatus AddTransformationDictionary(std::istream& stream);
  /// Adds every derived field to `record`, as null; a name that is there becomes null. The flag is kept for later.
  virtual KelCommon_1_3::KelStatus GetDerivedVariableInfo(KelCommon_1_3::ValueRecord& record, bool flag) const;
  /// Computes anew those derived fields that `record` names, from its other fields, and writes them in place. Derived
  /// fields that they depend on and that `record` doesn't name are computed on the way and not written. An input that
  /// `record` doesn't name is missing. Always OK; allocates nothing for a record whose layout it has seen before.
  virtual KelCommon_1_3::KelStatus Transform(KelCommon_1_3::ValueRecord& record) const;

 private:
  struct Impl;
  std::unique_ptr<Impl> fImpl;
};

}  // namespace KelTransformNS
