#pragma once

#include <cstdint>
#include <limits>

namespace Torvane {

/// What a model predicts. The clusters of a clustering are its categories.
enum class MiningFunction : std::uint8_t { kRegression, kClassification, kClustering };

/// Missing: the model has no result, and the target's defaults may step in. Invalid: it must not give one.
enum class Outcome : std::uint8_t { kMissing, kInvalid, kValue };

/// An entity, such as a cluster or a neighbour, and its distance from the record or its similarity to it.
struct RankedEntity {
  std::uint32_t entity;
  double affinity;
};

/// What a model says of one record. The caller owns the arrays, whose lengths the model's body tells.
struct Prediction {
  static constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();

  double* probabilities = nullptr;  ///< one per category of the target; none for a regression
  double* confidences = nullptr;    ///< the same; a kind that tells none may use it as scratch space
  double* scratch = nullptr;        ///< `ModelBody::ScratchCount` numbers for the model's own use
  RankedEntity* ranking = nullptr;  ///< `ModelBody::RankingCapacity` places
  bool wantsDistribution = false;   ///< someone reads the probabilities or the confidences
  bool wantsRanking = false;        ///< someone reads the ranking
  bool hasProbabilities = false;    ///< the array is filled
  bool hasConfidences = false;

  Outcome outcome = Outcome::kMissing;
  double number = 0.0;             ///< of a regression
  std::uint32_t category = kNone;  ///< of a classification or clustering
  std::uint32_t entity = kNone;    ///< what the model decided by, such as a node
  /// Of `entity`; NaN: the kind knows none.
  double affinity = std::numeric_limits<double>::quiet_NaN();
  /// A second number that the kind gives, such as a cumulative hazard; NaN: none.
  double auxiliary = std::numeric_limits<double>::quiet_NaN();
  std::uint32_t rankingCount = 0;  ///< filled places of the ranking, the best entity first
};

}  // namespace Torvane
