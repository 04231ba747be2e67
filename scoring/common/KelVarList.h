#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "scoring/common/IKelVariable.h"
#include "scoring/common/KelCatVar.h"
#include "scoring/common/KelExport.h"

namespace KelXML_1_3 {

/// The variables of a model, in order, with distinct names. Owns them; copies are deep.
///
/// One list belongs to one thread at a time; several threads may read one that none of them changes.
class KEL_EXPORT KelVarList {
 public:
  KelVarList();
  KelVarList(const KelVarList& other);
  KelVarList(KelVarList&&) noexcept;
  KelVarList& operator=(const KelVarList& other);
  KelVarList& operator=(KelVarList&&) noexcept;
  ~KelVarList();

  // Each of these gives the new variable's index, or a negative number for an empty or a duplicate name. `labels`
  // stand beside `values`; an empty entry is no label.
  int AddCatVar(const std::string& name, const std::string& label, const std::vector<std::string>& values,
                const std::vector<std::string>& labels, VariableRole role);
  int AddCatVar(const std::string& name, const std::string& label, const std::vector<double>& values,
                const std::vector<std::string>& labels, VariableRole role);
  int AddCatVar(const std::string& name, const std::string& label, const std::vector<std::string>& values,
                VariableRole role);
  int AddCatVar(const std::string& name, const std::string& label, const std::vector<double>& values,
                VariableRole role);
  /// With a bare number of categories; the encoder is empty and its kind follows the level.
  int AddCatVar(const std::string& name, const std::string& label, int categoryCount, MeasureLevel level,
                VariableRole role);

  int AddContVar(const std::string& name, const std::string& label, VariableRole role);
  /// With a closed valid range. `binned` and `binCount` describe a binning without cut points; -1 is none.
  int AddContVar(const std::string& name, const std::string& label, double minimum, double maximum, VariableRole role,
                 bool binned, int binCount);
  /// With cut points between adjoining bins.
  int AddContVar(const std::string& name, const std::string& label, double minimum, double maximum,
                 const std::vector<double>& cutPoints, bool binned, VariableRole role);

  [[nodiscard]] int Size() const noexcept { return static_cast<int>(fVariables.size()); }
  /// Null outside the list. Variables live until the list goes or is assigned to.
  [[nodiscard]] IKelVariable* GetVarAt(int index);
  [[nodiscard]] const IKelVariable* GetVarAt(int index) const;
  /// Null if there is none of that name.
  [[nodiscard]] IKelVariable* GetVariable(const std::string& name);
  [[nodiscard]] const IKelVariable* GetVariable(const std::string& name) const;
  /// The index of the name, or a negative number.
  [[nodiscard]] int FindVariable(const std::string& name) const;
  /// Does nothing for an index outside the list.
  void SetVariableRole(int index, VariableRole role);
  /// The first variable in the role of a target, null if none.
  [[nodiscard]] IKelVariable* GetTargetRespVariable();
  [[nodiscard]] const IKelVariable* GetTargetRespVariable() const;
  /// Null outside the list.
  [[nodiscard]] IKelEncoder* GetEncoderAt(int index);
  /// The indices of all targets in list order, worked out from the roles when asked.
  [[nodiscard]] std::vector<int> GetTargetIndices() const;

 private:
  // Seeded by the process, so that no document can make names collide on purpose.
  struct NameHash {
    std::size_t operator()(const std::string& name) const;
  };

  int Append(std::unique_ptr<IKelVariable> variable);

  std::vector<std::unique_ptr<IKelVariable>> fVariables;
  std::unordered_map<std::string, int, NameHash> fIndexByName;
};

}  // namespace KelXML_1_3
