#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "components/kelcommon/Hashing.h"
#include "plugins/torvane/Reading.h"

namespace Torvane {

/// The rows of "TrainingInstances", one after the other.
///
///     InstanceTable table(trainingInstances);
///     const std::optional<std::size_t> age = table.FindColumn("age");
///     while (table.ReadRow()) Use(table.Row(), table.Text(*age));
class InstanceTable {
 public:
  /// Throws `PmmlError` if the instances aren't written in the document.
  explicit InstanceTable(const Element& trainingInstances);

  /// Whether the columns hold derived fields, and other fields as they are after the mining schema's treatment.
  [[nodiscard]] bool IsTransformed() const noexcept { return fIsTransformed; }
  /// The column of a field; nothing if the instances don't have the field.
  [[nodiscard]] std::optional<std::size_t> FindColumn(std::string_view field) const;
  /// The same for a field that `referrer` needs.
  [[nodiscard]] std::size_t RequiredColumn(const Element& referrer, std::string_view field) const;
  /// False behind the last row. Throws for two values in one column.
  bool ReadRow();
  [[nodiscard]] const Element& Row() const noexcept { return fRow; }
  /// The current row's text in a column; nothing if it has none there, or an empty one.
  [[nodiscard]] std::optional<std::string_view> Text(std::size_t column) const noexcept { return fTexts[column]; }
  /// The same for a column, that of `field`, which needs a text in each row.
  [[nodiscard]] std::string_view RequiredText(std::size_t column, std::string_view field) const;

 private:
  using Names = std::unordered_map<std::string, std::size_t, KelCommon_1_3::NameHash, std::equal_to<>>;

  Names fByField;
  Names fByColumn;
  bool fIsTransformed;
  Element fNextRow;
  Element fRow;
  std::vector<std::optional<std::string_view>> fTexts;
};

}  // namespace Torvane
