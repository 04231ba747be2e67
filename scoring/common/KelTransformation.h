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
/// Texts are added first, by one thread; from then on any number of threads may call `Transform` and
/// `GetDerivedVariableInfo` on their own records.
class KEL_EXPORT KelTransformation {
 public:
  KelTransformation();
  virtual ~KelTransformation();
  KelTransformation(const KelTransformation&) = delete;
  KelTransformation& operator=(const KelTransformation&) = delete;

  /// Reads the data dictionary and the transformation dictionary of a PMML text. An error leaves the transformation
  /// as it was and a reason in `KelDiagnostics`. The flag is reserved; callers pass false.
  virtual KelCommon_1_3::KelStatus AddPMML(std::istream& stream, bool flag);
  /// Adds the derived fields of a text whose root is a "TransformationDictionary". Errors as above.
  virtual KelCommon_1_3::KelStatus AddTransformationDictionary(std::istream& stream);
  /// Adds every derived field to `record`, as null; a name that is there becomes null. The flag is kept for later.
  virtual KelCommon_1_3::KelStatus GetDerivedVariableInfo(KelCommon_1_3::ValueRecord& record, bool flag) const;
  /// Computes anew those derived fields that `record` names, from its other fields, and writes them in place. Derived
  /// fields that they depend on and that `record` doesn't name are computed on the way and not written.
  virtual KelCommon_1_3::KelStatus Transform(KelCommon_1_3::ValueRecord& record) const;

 private:
  struct Impl;
  std::unique_ptr<Impl> fImpl;
};

}  // namespace KelTransformNS
