#pragma once

#include <memory>
#include <string>

#include "scoring/common/IKelVariable.h"
#include "scoring/common/KelExport.h"

namespace KelXML_1_3 {

/// A categorical variable, of numbers (level 2) or of texts (level 3). Made by `KelVarList::AddCatVar`.
class KEL_EXPORT KelCatVar : public IKelVariable {
 public:
  KelCatVar(std::string name, std::string label, int categoryCount, MeasureLevel level, VariableRole role);
  KelCatVar(const KelCatVar& other);
  KelCatVar& operator=(const KelCatVar&) = delete;
  ~KelCatVar() override;

  /// Whether the variable is a flag with a true category, and the index of that category (-1 until set).
  [[nodiscard]] bool GetBinaryFlag() const noexcept { return fBinaryFlag; }
  [[nodiscard]] int GetBinaryFlagTrueIndex() const noexcept { return fBinaryFlagTrueIndex; }
  void SetBinaryFlag(bool flag, int trueIndex) noexcept;
  void SetOrdinalFlag(bool ordinal) noexcept { fOrdinalFlag = ordinal; }
  [[nodiscard]] bool GetOrdinalFlag() const noexcept { return fOrdinalFlag; }

  [[nodiscard]] MeasureLevel GetMeasureLevel() const override;
  [[nodiscard]] const std::string& GetName() const override;
  [[nodiscard]] const std::string& GetLabel() const override;
  [[nodiscard]] int GetCategoryCount() const override;
  [[nodiscard]] VariableRole GetVariableRole() const override;
  void SetVariableRole(VariableRole role) override;
  void SetStorageType(int storageType) override;
  void SetFormat(XMLElement* format) override;
  IKelEncoder* GetEncoder() override;
  [[nodiscard]] const IKelEncoder* GetEncoder() const override;
  [[nodiscard]] int GetStorageType() const override;
  [[nodiscard]] const XMLElement* GetFormat() const override;
  bool GetRange(double& low, double& high) const override;
  [[nodiscard]] std::unique_ptr<IKelVariable> Clone() const override;

 private:
  struct Common;  // what all kinds of variable hold
  std::unique_ptr<Common> fCommon;
  int fGivenCategoryCount;
  MeasureLevel fLevel;
  bool fBinaryFlag = false;
  int fBinaryFlagTrueIndex = -1;
  bool fOrdinalFlag = false;
};

}  // namespace KelXML_1_3
