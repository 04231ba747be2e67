#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "components/keltransform/DataDictionary.h"
#include "plugins/torvane/fields/FieldScope.h"
#include "plugins/torvane/models/ComparisonMeasure.h"

namespace Torvane {

/// What a field lists: its values, or the intervals that its numbers fall into.
struct ListedValues {
  std::vector<KelTransformNS::Cell> values;
  std::vector<KelTransformNS::Interval> intervals;  ///< only where there are no values

  [[nodiscard]] std::size_t Count() const noexcept { return values.empty() ? intervals.size() : values.size(); }
};

/// The values or intervals that the document declares for a field, in their order. Throws if there are none.
[[nodiscard]] ListedValues DeclaredValues(const Element& referrer, std::string_view name, const Field& field,
                                          const FieldScope& scope);

/// Reads a "ComparisonMeasure" element, the fields that it compares ("ClusteringField", "KNNInput"), and then its
/// points, into a measure. Throws `PmmlError`.
class ComparisonReader {
 public:
  /// `model` holds the measure's element.
  ComparisonReader(const Element& model, FieldScope& scope, ComparisonMeasure& measure);

  /// Adds a field whose points are values. `settings` has its weight and compare function as attributes.
  void AddField(const Element& settings, std::string_view name, const Field& field);
  /// Adds a field whose points are distributions over `listed`.
  void AddDistribution(const Element& settings, std::string_view name, const Field& field, const ListedValues& listed);
  /// Q of each field, in their order; without it each is 1.
  void SetMissingWeights(const Element& element, const std::vector<double>& weights);

  /// A point whose fields are values of an "Array".
  void AddPoint(const Element& array);
  /// A point whose fields are cells, some of which may be missing.
  void AddPoint(const Element& element, std::span<const KelTransformNS::Cell> cells);
  /// A point of distributions: the share of each listed value, field by field.
  void AddPoint(std::span<const double> shares) { fMeasure.AddPoint(shares); }
  /// No more points follow.
  void Finish() { fMeasure.fPoints.shrink_to_fit(); }

 private:
  using Function = ComparisonMeasure::Function;
  using Aggregation = ComparisonMeasure::Aggregation;
  using ComparedField = ComparisonMeasure::ComparedField;

  struct PointField {
    std::string name;
    KelTransformNS::DataType type;
  };

  static Function ReadFunction(const Element& element, Function absent);
  void ReadMeasure(const Element& element);
  void ReadBinary(const Element& measure);
  ComparedField ReadField(const Element& settings, std::string_view name, const Field& field) const;
  void ReadTable(const Element& settings, std::string_view name, const ListedValues& listed, ComparedField& compared);
  void SetPositions(const ListedValues& listed, ComparedField& compared);
  void Add(ComparedField compared, std::uint32_t rowCount, std::string_view name, const Field& field);
  [[nodiscard]] double CheckedCode(const Element& element, std::size_t field, const KelTransformNS::Cell& cell) const;

  Element fModel;
  FieldScope& fScope;
  ComparisonMeasure& fMeasure;
  Function fFunction = Function::kAbsDiff;
  std::vector<PointField> fPointFields;
  std::vector<double> fPoint;  // that is being read
};

}  // namespace Torvane
