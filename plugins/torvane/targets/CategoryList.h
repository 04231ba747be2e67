#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "components/keltransform/Cell.h"
#include "scoring/common/Value.h"

namespace Torvane {

/// A value that a classification can predict.
struct Category {
  KelTransformNS::Cell cell;
  KelCommon_1_3::Value value;  ///< as the prediction shows it: a number for a numeric target, else a text
  std::string text;
  std::string displayValue;
  std::optional<double> priorProbability;
};

/// Categories in their order, each of them once.
class CategoryList {
 public:
  [[nodiscard]] const std::vector<Category>& All() const noexcept { return fCategories; }
  [[nodiscard]] Category& At(std::uint32_t index) noexcept { return fCategories[index]; }
  [[nodiscard]] std::optional<std::uint32_t> Find(const KelTransformNS::Cell& cell) const;
  /// Puts a category behind the others, which it must not be one of. It is shown as a value of the type, also where a
  /// display value is asked for.
  std::uint32_t Add(const KelTransformNS::Cell& cell, KelTransformNS::DataType type);

 private:
  std::vector<Category> fCategories;
  std::unordered_map<std::uint32_t, std::uint32_t> fByText;
  std::map<double, std::uint32_t> fByNumber;
};

/// The categories that the fields of a dictionary declare. All models that predict a field share them, as long as they
/// add nothing: an ensemble may have thousands of models, and a field thousands of values.
class DeclaredCategories {
 public:
  /// The list of a field, null as long as none was kept.
  [[nodiscard]] std::shared_ptr<CategoryList> Find(const std::string& field) const;
  void Keep(const std::string& field, std::shared_ptr<CategoryList> list);

 private:
  std::unordered_map<std::string, std::shared_ptr<CategoryList>> fByField;
};

}  // namespace Torvane
