#pragma once

#include <string>
#include <vector>

#include "scoring/common/ValueRecord.h"

namespace kelscore {

/// The columns of the outputs: one for each output, or one for each member of an output that has members.
///
/// Shapes come from what the model announces, from the target's categories, and from a first scored record. After that
/// the columns stand, whatever rows come. One thread uses a layout at a time; copies are independent.
class OutputLayout {
 public:
  /// `scorable` is what the model announces. `chosen` names the outputs to write, in this order; empty means all.
  /// Throws `Failure` (bad usage) for a name that the model doesn't have.
  OutputLayout(const KelCommon_1_3::ValueRecord& scorable, const std::vector<std::string>& chosen);

  /// Gives "probcategory" a column for each category, if the model announced no members of it.
  void AddCategories(const std::vector<std::string>& categories);
  /// Takes up members that a scored record has and the layout doesn't know yet.
  void LearnFrom(const KelCommon_1_3::ValueRecord& scored);

  /// The record that a model fills: the outputs to write, and those that a chosen propensity is computed from.
  [[nodiscard]] const KelCommon_1_3::ValueRecord& Prototype() const { return fPrototype; }
  /// The names of the columns.
  [[nodiscard]] std::vector<std::string> Columns() const;

  /// Appends the columns of one record, each behind a delimiter. A null gives an empty column. False, and the reason,
  /// when the record has a value without a column; `to` then holds a part of the columns.
  [[nodiscard]] bool Append(const KelCommon_1_3::ValueRecord& scored, char delimiter, std::string& to,
                            std::string& reason);
  /// Appends as many empty columns.
  void AppendEmpty(char delimiter, std::string& to) const;

 private:
  struct Output {
    std::string name;
    bool announced = false;                  // the model told the members: nothing is to be learned
    std::vector<Output> members;             // none for a plain value
    int position = -1;                       // in its record; of a member: in the record with `layout`
    KelCommon_1_3::RecordLayout layout = 0;  // for which the positions of members hold; 0 before the first row
    std::vector<int> others;                 // positions of members without a column, which may only be null
  };

  static void Announce(const KelCommon_1_3::Value& value, Output& output);
  static void Learn(const KelCommon_1_3::Value& value, Output& output);
  static void AddColumns(const Output& output, const std::string& prefix, std::vector<std::string>& columns);
  static void AppendNulls(const Output& output, char delimiter, std::string& to);
  static bool AppendValue(const KelCommon_1_3::Value& value, Output& output, char delimiter, std::string& to,
                          std::string& reason);
  static void BindMembers(const KelCommon_1_3::ValueRecord& members, Output& output);
  void AddToRecord(const std::string& name);

  std::vector<Output> fOutputs;
  KelCommon_1_3::ValueRecord fPrototype;
};

}  // namespace kelscore
