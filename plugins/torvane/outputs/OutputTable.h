#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "components/keltransform/Cell.h"
#include "components/keltransform/Program.h"
#include "plugins/torvane/fields/FieldScope.h"
#include "plugins/torvane/models/ModelBody.h"
#include "plugins/torvane/targets/Target.h"
#include "scoring/common/Value.h"
#include "scoring/common/ValueRecord.h"

namespace Torvane {

/// One output that a host can ask for.
struct Output {
  explicit Output(std::string name) : key(std::move(name)) {}

  KelCommon_1_3::FieldKey key;  ///< the name
  Feature feature = Feature::kNothing;
  KelTransformNS::DataType type = KelTransformNS::DataType::kDouble;
  std::uint32_t category = Prediction::kNone;  ///< the category that is asked for; none: the predicted one
  std::uint32_t entity = Prediction::kNone;    ///< the entity whose affinity is asked for; none: that of the rank
  std::uint32_t rank = 1;                      ///< of the entity; the first one is what the model decided by
  const std::vector<KelTransformNS::Cell>* byCategory = nullptr;  ///< what is shown for each category; none: a number
  bool isPlainNumber = false;              ///< the predicted number as it is, which needs no conversion
  bool isDeclared = false;                 ///< it is an "OutputField" of the document
  std::uint32_t slot = Prediction::kNone;  ///< where expressions find it, or where an expression leaves it
};

/// Marks the outputs of a target after the first one.
struct OfFurtherTarget {};

/// All outputs of a model: those of the vocabulary that the model can give, then the document's "OutputField"s, then
/// those of the segments of an ensemble whose names are free. Immutable once made.
///
/// The table of a member of an ensemble has no vocabulary. Its outputs become fields of the ensemble. The same holds
/// for the table of a further target: it has the target's prediction under the name of the target, and the
/// "OutputField"s that name the target, and the model's own table shows them all.
///
/// Where a field of the document has the name of the vocabulary, the field serves, but for "prediction" and
/// "probability", which the library reads itself.
class OutputTable {
 public:
  /// Reads the "Output" of `model`. Its expressions are compiled with the scope's compiler. Throws `PmmlError` for a
  /// feature that the model kind doesn't have.
  /// `further` are the tables of its further targets, made before.
  OutputTable(FieldScope& scope, const Target& target, const ModelBody& body, const Element& model,
              const std::vector<const OutputTable*>& further);
  /// Of a further target.
  OutputTable(FieldScope& scope, const Target& target, const ModelBody& body, const Element& model, OfFurtherTarget);
  /// Of a member: `asked` are output fields of the ensemble that ask for its results.
  OutputTable(FieldScope& scope, const Target& target, const ModelBody& body, const Element& model,
              const std::vector<Element>& asked);
  /// Whether a member has any outputs.
  [[nodiscard]] static bool IsNeededBy(const Element& member, const FieldScope& scope,
                                       const std::vector<Element>& asked);

  [[nodiscard]] const std::vector<Output>& All() const noexcept { return fOutputs; }
  /// Whether an output reads probabilities or confidences, itself or by what its expression may refer to.
  [[nodiscard]] bool NeedsDistribution(const Output& output) const noexcept;
  /// The same for the ranking of entities.
  [[nodiscard]] bool NeedsRanking(const Output& output) const noexcept;

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
  // A field that an output is put into, for the ensemble.
  struct Export {
    std::uint32_t from;
    std::uint32_t to;
  };

  void ReadOutputFields(FieldScope& scope, const Element& parent, const char* name);
  void ReadAsked(FieldScope& scope, const Element& element);
  void AddSegmentOutputs(const FieldScope& scope);
  void ExportAll(FieldScope& scope, const Element& model);
  void ExportTo(FieldScope& ensemble, KelTransformNS::ResolvedField field, const Element& element);
  void Finish(FieldScope& scope);
  void AddVocabulary(KelTransformNS::TextPool& pool);
  void AddOutput(KelTransformNS::TextPool& pool, Feature feature, const char* name);
  void ReadOutputField(FieldScope& scope, const Element& element);
  Output ReadOutput(FieldScope& scope, const Element& element);
  [[nodiscard]] const OutputTable* FindFurther(const Element& element) const;
  bool ShowOf(const OutputTable& further, const std::string& name);
  [[nodiscard]] Output ReadFromSegment(const FieldScope& scope, const Element& element) const;
  void ReadFeature(const FieldScope& scope, const Element& element, Output& output);
  void ReadExpression(FieldScope& scope, const Element& element, Output& output);
  void ReadNamedOutput(const Element& element, Output& output) const;
  [[nodiscard]] std::optional<std::uint32_t> FindEntity(std::string_view wanted) const;
  [[nodiscard]] Feature PredictedFeature() const noexcept;
  void ReadCategory(const Element& element, Output& output) const;
  void ReadRank(const Element& element, Output& output) const;
  void ReadEntity(const Element& element, Output& output) const;
  void ReadResidual(FieldScope& scope, const Element& element, Output& output);
  void CheckAttributes(const Element& element) const;
  [[nodiscard]] bool GivesConfidences() const noexcept;
  void ChooseType(KelTransformNS::TextPool& pool, std::optional<KelTransformNS::DataType> type, Output& output);
  const std::vector<KelTransformNS::Cell>& Shown(KelTransformNS::TextPool& pool, bool isDisplay,
                                                 KelTransformNS::DataType type);
  void AddToScope(FieldScope& scope, Output& output);
  void InternEntities(KelTransformNS::TextPool& pool);
  void Place(Output output, const Element& element);
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
  const bool fHasCovariances;  // of the parameters
  // What is shown for each category, as predicted or as display value, in a data type; shared by the outputs.
  std::map<std::pair<bool, KelTransformNS::DataType>, std::vector<KelTransformNS::Cell>> fShown;
  std::vector<Output> fOutputs;
  std::vector<Output> fHidden;  // fields of the document whose names the vocabulary keeps; expressions still see them
  NameMap<std::size_t> fByName;
  std::vector<const OutputTable*> fFurther;  // of further targets
  std::vector<Export> fExports;              // of a member of an ensemble
  bool fHasExpressions = false;              // the outputs have slots
  bool fHasDistributions = false;
  bool fHasRankings = false;
  std::uint32_t fTargetSlot = Prediction::kNone;  // of the true target value, for residuals
  std::vector<KelTransformNS::Cell> fEntities;    // the identifiers, where expressions may refer to them
  KelTransformNS::Program fProgram;
  KelCommon_1_3::RecordLayout fMemberLayout = 0;   // of "probcategory"
  KelCommon_1_3::RecordLayout fSegmentLayout = 0;  // of the predictions of all segments
};

}  // namespace Torvane
