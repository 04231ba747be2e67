#pragma once

#include <cstdint>
#include <map>
#include <utility>
#include <vector>

#include "components/keltransform/Cell.h"
#include "components/keltransform/Program.h"
#include "plugins/torvane/models/ModelBody.h"
#include "plugins/torvane/outputs/Output.h"
#include "plugins/torvane/targets/Target.h"
#include "scoring/common/Value.h"
#include "scoring/common/ValueRecord.h"

namespace Torvane {

/// All outputs of a model: those of the vocabulary that the model can give, then the document's "OutputField"s, then
/// those of the segments of an ensemble whose names are free. Immutable once made, which `OutputReader` does.
///
/// The table of a member of an ensemble has no vocabulary. Its outputs become fields of the ensemble. The same holds
/// for the table of a further target: it has the target's prediction under the name of the target, and the
/// "OutputField"s that name the target, and the model's own table shows them all.
///
/// Where a field of the document has the name of the vocabulary, the field serves, but for "prediction" and
/// "probability", which the library reads itself.
class OutputTable {
 public:
  OutputTable(const KelTransformNS::TextPool& pool, const Target& target, const ModelBody& body)
      : fPool(pool), fTarget(target), fBody(body) {}

  [[nodiscard]] const std::vector<Output>& All() const noexcept { return fOutputs; }
  /// Whether an output reads probabilities or confidences, itself or by what its expression may refer to.
  [[nodiscard]] bool NeedsDistribution(const Output& output) const noexcept;
  /// The same for the ranking of entities.
  [[nodiscard]] bool NeedsRanking(const Output& output) const noexcept;
  /// The target whose outputs these are.
  [[nodiscard]] const Target& GetTarget() const noexcept { return fTarget; }

  /// Adds the names of all outputs to a record, as null; the composite one with its members, each null.
  void Announce(KelCommon_1_3::ValueRecord& record) const;

  /// Puts the outputs into the frame that expressions may refer to, and evaluates the expressions.
  void RunExpressions(KelTransformNS::Frame frame, const Prediction& prediction) const;
  /// Marks in the prediction of a member what its outputs read.
  void SetWants(Prediction& prediction) const noexcept;
  /// Puts a member's outputs into the fields of its ensemble.
  void PutIntoEnsemble(KelTransformNS::Frame frame, const Prediction& prediction) const;
  /// Writes one output; null if the prediction has no result for it. `frame` has been through `RunExpressions` if the
  /// output is an expression.
  void Write(const Output& output, const KelTransformNS::Cell* frame, const Prediction& prediction,
             KelCommon_1_3::Value& value) const;

 private:
  friend class OutputReader;

  // A field that an output is put into, for the ensemble.
  struct Export {
    std::uint32_t from;
    std::uint32_t to;
  };

  void RememberLayouts();
  [[nodiscard]] KelTransformNS::Cell CellOf(const Output& output, const KelTransformNS::Cell* frame,
                                            const Prediction& prediction) const;
  [[nodiscard]] KelTransformNS::Cell Residual(const Output& output, const KelTransformNS::Cell* frame,
                                              const Prediction& prediction) const noexcept;
  [[nodiscard]] KelTransformNS::Cell EntityCell(const Output& output, std::uint32_t entity) const;
  [[nodiscard]] static std::uint32_t EntityOf(const Output& output, const Prediction& prediction) noexcept;
  [[nodiscard]] static double AffinityOf(const Output& output, const Prediction& prediction) noexcept;
  void PutIntoFrame(const std::vector<Output>& outputs, KelTransformNS::Frame frame,
                    const Prediction& prediction) const;
  void WriteProbabilities(const Prediction& prediction, KelCommon_1_3::Value& value) const;
  void WritePredictions(const Output& output, const Prediction& prediction, KelCommon_1_3::Value& value) const;
  void FillSegmentNames(KelCommon_1_3::ValueRecord& members) const;
  void FillNames(KelCommon_1_3::ValueRecord& members) const;

  const KelTransformNS::TextPool& fPool;
  const Target& fTarget;
  const ModelBody& fBody;
  // What is shown for each category, as predicted or as display value, in a data type; shared by the outputs.
  std::map<std::pair<bool, KelTransformNS::DataType>, std::vector<KelTransformNS::Cell>> fShown;
  std::vector<Output> fOutputs;
  std::vector<Output> fHidden;   // fields of the document whose names the vocabulary keeps; expressions still see them
  std::vector<Export> fExports;  // of a member of an ensemble
  bool fHasDistributions = false;
  bool fHasRankings = false;
  std::uint32_t fTargetSlot = Prediction::kNone;  // of the true target value, for residuals
  std::vector<KelTransformNS::Cell> fEntities;    // the identifiers, where expressions may refer to them
  KelTransformNS::Program fProgram;
  KelCommon_1_3::RecordLayout fMemberLayout = 0;   // of "probcategory"
  KelCommon_1_3::RecordLayout fSegmentLayout = 0;  // of the predictions of all segments
};

}  // namespace Torvane
