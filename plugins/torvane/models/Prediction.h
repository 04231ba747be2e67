#pragma once

#include <cstdint>
#include <limits>

namespace Torvane {

enum class MiningFunction : std::uint8_t { kRegression, kClassification };

/// Missing: the model has no result, and the target's defaults may step in. Invalid: it must not give one.
enum class Outcome : std::uint8_t { kMissing, kInvalid, kValue };

/// What a model says of one record. The caller owns the two arrays, which have one entry per category of the target
/// (none for a regression); a model may use them as scratch space.
struct Prediction {
  static constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();

  double* probabilities = nullptr;
  double* confidences = nullptr;
  bool wantsDistribution = false;  ///< someone reads the arrays

  Outcome outcome = Outcome::kMissing;
  double number = 0.0;             ///< of a regression
  std::uint32_t category = kNone;  ///< of a classification
  std::uint32_t entity = kNone;    ///< what the model decided by, such as a node
  bool hasProbabilities = false;   ///< the arrays are filled
  bool hasConfidences = false;
};

}  // namespace Torvane
