#pragma once

#include <memory>
#include <string>

#include "scoring/common/IKelEncoder.h"
#include "scoring/common/KelExport.h"
#include "scoring/common/XMLElement.h"

namespace KelXML_1_3 {

/// How a variable measures.
enum MeasureLevel : int {
  kContinuous = 1,
  kCategoricalNumeric = 2,
  kCategoricalString = 3,
};

/// What a variable is to a model.
enum VariableRole : int {
  kRoleNone = 0,
  kRoleTarget = 2,
  kRoleInput = 4,
};

/// A variable of a `KelVarList`, which owns it. The order of the virtual operations is fixed.
class KEL_EXPORT IKelVariable {
 public:
  virtual ~IKelVariable();
  [[nodiscard]] virtual MeasureLevel GetMeasureLevel() const = 0;
  [[nodiscard]] virtual const std::string& GetName() const = 0;
  [[nodiscard]] virtual const std::string& GetLabel() const = 0;
  /// The number of categories: the larger of a count that was given and the number of values in the encoder.
  [[nodiscard]] virtual int GetCategoryCount() const = 0;
  [[nodiscard]] virtual VariableRole GetVariableRole() const = 0;
  virtual void SetVariableRole(VariableRole role) = 0;
  /// 1 integer, 2 real, 3 string, 4 date, 5 time, 6 date and time.
  virtual void SetStorageType(int storageType) = 0;
  /// Takes over a display format; an earlier one is destroyed.
  virtual void SetFormat(XMLElement* format) = 0;
  /// The variable's encoder; the variable owns it. Every variable has one.
  virtual IKelEncoder* GetEncoder() = 0;
  [[nodiscard]] virtual const IKelEncoder* GetEncoder() const = 0;

  // Behind the fixed operations.
  /// 0 until set.
  [[nodiscard]] virtual int GetStorageType() const = 0;
  /// Null until set.
  [[nodiscard]] virtual const XMLElement* GetFormat() const = 0;
  /// The valid range of a continuous variable (the extreme finite doubles mean no bound); false for a categorical one.
  virtual bool GetRange(double& low, double& high) const = 0;
  [[nodiscard]] virtual std::unique_ptr<IKelVariable> Clone() const = 0;
};

}  // namespace KelXML_1_3
