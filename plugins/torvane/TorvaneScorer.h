#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "components/keltransform/Cell.h"
#include "components/keltransform/LayoutCache.h"
#include "plugins/torvane/CompiledModel.h"
#include "scoring/common/ValueRecord.h"
#include "scoring/model/ScoringBaseScorer.h"

namespace Torvane {

/// A status code of this plug-in: the record lacks a derived field that the library was to compute into it.
inline constexpr long kDerivedFieldMissing = 270001;
/// A status code of this plug-in: there was no memory left.
inline constexpr long kOutOfMemory = 270002;

/// Scores records with a compiled model.
///
/// Any number of threads may call `Score` and `Scorable` with records of their own. Positions of fields are worked out
/// once for each record layout; from then on a record is scored without a look at a name and without an allocation.
///
/// A record that gives no result (a missing prediction, or an invalid input) is scored all the same: the status is OK
/// and the outputs are null.
class TorvaneScorer final : public KelScoring_20::ScoringBaseScorer {
 public:
  TorvaneScorer(KelXML_1_3::KelSettings& settings, const KelXML_1_3::KelVarList& varList, std::string type,
                std::unique_ptr<const KelTransformNS::TextPool> pool, std::unique_ptr<const CompiledModel> model);

  bool IsReady() override { return true; }
  /// Writes those outputs that `out` names and `Scorable` lists; its other values stay as they are. Fields that `in`
  /// lacks are missing.
  KelCommon_1_3::KelStatus Score(const KelCommon_1_3::ValueRecord& in, KelCommon_1_3::ValueRecord& out) override;
  KelCommon_1_3::KelStatus Scorable(KelCommon_1_3::ValueRecord& record) override;
  /// The name of the model element.
  std::string GetType() override { return fType; }

 private:
  // Where the inputs stand in the records of one layout.
  struct InputBinding {
    struct Place {
      std::uint32_t position;
      std::uint32_t slot;
      const InputField* field;
    };
    std::vector<Place> numbers;  // that a number passes as it is
    std::vector<Place> others;
    std::vector<const InputField*> absent;  // that the records lack
    bool isComplete = true;                 // what must be in the record is there
  };
  // The outputs that the records of one layout ask for.
  struct OutputBinding {
    struct Place {
      int position;
      const Output* output;
    };
    std::vector<Place> places;
    bool wantsDistribution = false;
    bool wantsRanking = false;
    bool wantsExpressions = false;
  };

  [[nodiscard]] InputBinding BindInputs(const KelCommon_1_3::ValueRecord& in) const;
  [[nodiscard]] OutputBinding BindOutputs(const KelCommon_1_3::ValueRecord& out) const;
  KelCommon_1_3::KelStatus ScoreBound(const KelCommon_1_3::ValueRecord& in, KelCommon_1_3::ValueRecord& out);
  bool Gather(const KelCommon_1_3::ValueRecord& in, const InputBinding& binding,
              KelTransformNS::Cell* frame) const noexcept;
  [[gnu::noinline]] bool GatherOne(const KelCommon_1_3::Value& value, const InputField& field,
                                   KelTransformNS::Cell* frame) const noexcept;

  std::string fType;
  std::unique_ptr<const KelTransformNS::TextPool> fPool;  // before what refers to it
  std::unique_ptr<const CompiledModel> fModel;
  std::size_t fCellCount;  // of the frame and the arrays of a prediction behind it
  KelTransformNS::LayoutCache<InputBinding> fInputBindings;
  KelTransformNS::LayoutCache<OutputBinding> fOutputBindings;
};

}  // namespace Torvane
