#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "plugins/torvane/fields/FieldScope.h"
#include "plugins/torvane/models/KernelVectors.h"
#include "plugins/torvane/models/ModelBody.h"
#include "plugins/torvane/targets/Target.h"

namespace Torvane {

/// Support vector machines: f(x) = sum of coefficient * K(x, support vector) + constant, or the sum of
/// coefficient * x itself. The machines of a model share the kernel's values, which are computed once per record.
///
/// A regression is the f of one machine. Of a classification, either each machine speaks for one category against all
/// others, and the smallest f wins (or the largest, if the document says so); or it votes for one of two, and the
/// votes' shares are the probabilities.
class SupportVectorModel final : public ModelBody {
 public:
  static std::unique_ptr<ModelBody> Build(const Element& model, FieldScope& scope, Target& target);

  void Evaluate(KelTransformNS::Frame frame, Prediction& prediction) const noexcept override;
  [[nodiscard]] std::size_t ScratchCount() const noexcept override {
    return fInputs.size() + fVectors.Count() + fVectors.ScratchCount();
  }
  [[nodiscard]] bool GivesProbabilities() const noexcept override { return fDecision == Decision::kVotes; }

 private:
  friend class SupportVectorReader;

  enum class Decision : std::uint8_t { kNumber, kVotes, kBest };

  // One of the fields that make up x: its number, or whether it holds a category.
  struct Input {
    std::uint32_t slot;
    bool isIndicator = false;
    KelTransformNS::Cell category = {};
  };
  struct Machine {
    std::uint32_t endTerm = 0;  // where its terms end
    double constant = 0.0;
    double threshold = 0.0;
    std::uint32_t category = 0;
    std::uint32_t alternate = 0;  // of a vote
  };
  struct Term {
    double coefficient;
    std::uint32_t place;  // of the kernel's value, or of the field
  };

  Outcome ReadInputs(const KelTransformNS::Cell* frame, double* x) const noexcept;
  static bool Holds(const KelTransformNS::Cell& cell, const KelTransformNS::Cell& category) noexcept;
  double Sum(std::size_t machine, const double* values) const noexcept;
  void TakeVotes(const double* values, Prediction& prediction) const noexcept;
  void FindBest(const double* values, Prediction& prediction) const noexcept;

  std::vector<Input> fInputs;
  bool fIsOfVectors = true;
  KernelVectors fVectors;
  std::vector<Term> fTerms;  // machine after machine
  std::vector<Machine> fMachines;
  Decision fDecision = Decision::kNumber;
  bool fMaxWins = false;
  std::size_t fCategoryCount = 0;          // of the target
  std::vector<std::uint32_t> fCategories;  // of the machines, as they first name them: the first one wins a tie
};

}  // namespace Torvane
