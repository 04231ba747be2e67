#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "components/keltransform/Cell.h"
#include "components/keltransform/DataDictionary.h"
#include "plugins/torvane/fields/ValueSets.h"
#include "plugins/torvane/models/Prediction.h"

namespace Torvane {

/// The positions of a field's values, or of the intervals that its numbers fall into. `Seal` `ranks` after the last
/// value.
struct ValuePositions {
  ValueRanks ranks;
  std::vector<KelTransformNS::Interval> intervals;

  /// Nothing for a value that is in neither.
  [[nodiscard]] std::optional<std::uint32_t> Find(const KelTransformNS::Cell& cell) const noexcept;
};

/// How far records are from points, or how alike they are: the centres of clusters, or the instances of a training set.
///
/// c_i is the comparison of record and point in field i, W_i the weight of the field. Over the fields that both have:
///
///     euclidean (A sum W_i c_i^2)^(1/2)   squaredEuclidean A sum W_i c_i^2   minkowski (A sum W_i c_i^p)^(1/p)
///     cityBlock A sum W_i c_i             chebychev A max W_i c_i
///
/// where A = sum of all Q_i / sum of the Q_i of those fields makes up for what is missing. A binary measure counts the
/// fields in which both are 1 (a11), only the record is (a10), only the point is (a01), or neither is (a00).
///
/// A field of the points may also be a distribution: c_i is then the mean of the comparisons with each of its values.
///
/// Points stand in blocks, field by field, so that the points of a block are compared side by side while each sum is
/// built in the order of the fields. Immutable once its reader is done with it.
class ComparisonMeasure {
 public:
  /// The numbers that a record takes, see `ReadRecord`.
  [[nodiscard]] std::size_t RecordSize() const noexcept { return fFields.size() + 1; }
  [[nodiscard]] std::size_t FieldCount() const noexcept { return fFields.size(); }
  [[nodiscard]] std::uint32_t PointCount() const noexcept { return fPointCount; }
  [[nodiscard]] bool IsDistance() const noexcept { return fIsDistance; }

  /// Prepares a record for `ForEachPoint`. Missing: no field has a value that counts. Invalid: a value can't be
  /// compared, being no number, none of the listed values, or for a binary measure neither 0 nor 1.
  [[nodiscard]] Outcome ReadRecord(const KelTransformNS::Cell* frame, double* record) const noexcept;

  /// Calls `take(point, affinity)` for the points in their order. The affinity is NaN where the measure isn't defined;
  /// a point that has no field in common with the record is left out.
  template <typename Take>
  void ForEachPoint(const double* record, Take&& take) const {
    Block block;
    for (std::uint32_t first = 0; first < fPointCount; first += kLanes) {
      CompareBlock(record, first, block);
      const std::uint32_t count = std::min(kLanes, fPointCount - first);
      for (std::uint32_t lane = 0; lane < count; ++lane) {
        if (!fHasGaps || block.known[lane] > 0.0) take(first + lane, block.affinities[lane]);
      }
    }
  }

  /// Whether an affinity is that of the nearer, or more similar, point.
  [[nodiscard]] bool IsBetter(double affinity, double other) const noexcept {
    return fIsDistance ? affinity < other : affinity > other;
  }
  /// The same for entities, of which the earlier one goes before on a tie.
  [[nodiscard]] bool IsBetter(const RankedEntity& a, const RankedEntity& b) const noexcept {
    if (a.affinity == b.affinity) return a.entity < b.entity;
    return IsBetter(a.affinity, b.affinity);
  }

 private:
  friend class ComparisonReader;

  static constexpr std::uint32_t kLanes = 8;
  static constexpr std::uint32_t kNone = Prediction::kNone;

  enum class Function : std::uint8_t { kAbsDiff, kGaussSim, kDelta, kEqual, kTable };
  enum class Aggregation : std::uint8_t { kEuclidean, kSquaredEuclidean, kChebychev, kCityBlock, kMinkowski, kBinary };

  struct ComparedField {
    std::uint32_t slot = 0;
    Function function = Function::kAbsDiff;
    double weight = 1.0;
    double missingWeight = 1.0;          // Q
    double gaussFactor = 0.0;            // ln 2 / s^2
    std::uint32_t positions = kNone;     // values are replaced by their positions there
    std::size_t table = 0;               // the first cell of its square matrix
    std::uint32_t tableSize = 0;         // the rows of the matrix
    std::uint32_t row = 0;               // of the field in a block
    std::uint32_t distributionSize = 0;  // the rows of a distribution; 0: one row of values
    std::size_t distributionFirst = 0;   // its first value
  };

  // c and d of (c11 a11 + c10 a10 + c01 a01 + c00 a00) / (d11 a11 + ...), in the order 11, 10, 01, 00.
  struct BinaryParameters {
    double c[4] = {};
    double d[4] = {};
  };

  struct Block {
    double affinities[kLanes];
    double known[kLanes];  // the sum of Q over the fields that record and point have in common
  };

  [[nodiscard]] double CodeOf(const ComparedField& field, const KelTransformNS::Cell& cell) const noexcept;
  void AddPoint(std::span<const double> rows);
  void CompareBlock(const double* record, std::uint32_t first, Block& block) const noexcept;
  void CompareField(const ComparedField& field, double x, const double* rows, double* c) const noexcept;
  void CompareDistribution(const ComparedField& field, double x, const double* rows, double* c) const noexcept;
  [[nodiscard]] double CompareOne(const ComparedField& field, double x, double y) const noexcept;
  template <typename Fold>
  void Aggregate(const double* record, const double* rows, double start, const Fold& fold, Block& block) const noexcept;
  template <typename Fold>
  void AddDifferences(const double* record, const double* rows, const Fold& fold, double* sums) const noexcept;
  template <typename Fold>
  void AddComparisons(const double* record, const double* rows, const Fold& fold, double* sums,
                      double* known) const noexcept;
  void AggregateBinary(const double* record, const double* rows, Block& block) const noexcept;
  void Finish(const double* record, Block& block) const noexcept;

  bool fIsDistance = true;
  Aggregation fAggregation = Aggregation::kSquaredEuclidean;
  double fPower = 2.0;  // of minkowski
  BinaryParameters fBinary;
  std::vector<ComparedField> fFields;
  double fTotalMissingWeight = 0.0;
  std::vector<ValuePositions> fPositions;
  std::vector<double> fTables;
  std::vector<double> fDistributionValues;
  std::uint32_t fRowCount = 0;  // of a block
  std::vector<double> fPoints;  // NaN: a missing value
  std::uint32_t fPointCount = 0;
  bool fHasDifferencesOnly = true;  // every field compares two values by absDiff
  bool fHasGaps = false;            // values of points are missing
};

}  // namespace Torvane
