#pragma once

#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "components/kelcommon/VariableCommon.h"
#include "scoring/common/IKelVariable.h"

namespace KelXML_1_3 {

/// The valid range of a continuous variable and how it is binned. The extreme finite doubles mean no bound.
struct ContinuousRange {
  double fMinimum = std::numeric_limits<double>::lowest();
  double fMaximum = std::numeric_limits<double>::max();
  bool fBinned = false;
  int fBinCount = -1;              // -1: none
  std::vector<double> fCutPoints;  // between adjoining bins
};

/// A continuous variable. Made by `KelVarList::AddContVar`.
class KelContVar : public IKelVariable {
 public:
  KelContVar(std::string name, std::string label, ContinuousRange range, VariableRole role);
  ~KelContVar() override;

  [[nodiscard]] MeasureLevel GetMeasureLevel() const override;
  [[nodiscard]] const std::string& GetName() const override;
  [[nodiscard]] const std::string& GetLabel() const override;
  /// The number of bins if the variable is binned.
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
  VariableCommon fCommon;
  ContinuousRange fRange;
};

}  // namespace KelXML_1_3
