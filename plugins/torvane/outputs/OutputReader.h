#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "plugins/torvane/fields/FieldScope.h"
#include "plugins/torvane/outputs/OutputTable.h"

namespace Torvane {

/// Reads the outputs of a model. Their expressions are compiled with the scope's compiler, which then hands over its
/// program. All throw `PmmlError`, as for a feature that the model kind doesn't have. Target and body outlive the
/// table.
class OutputReader {
 public:
  /// Of the model that is scored. `further` are the tables of its further targets, made before.
  static std::unique_ptr<OutputTable> ReadModel(FieldScope& scope, const Target& target, const ModelBody& body,
                                                const Element& model, const std::vector<const OutputTable*>& further);
  /// Of a further target.
  static std::unique_ptr<OutputTable> ReadFurther(FieldScope& scope, const Target& target, const ModelBody& body,
                                                  const Element& model);
  /// Of a member: `asked` are output fields of the ensemble that ask for its results. Null if it has no outputs.
  static std::unique_ptr<OutputTable> ReadMember(FieldScope& scope, const Target& target, const ModelBody& body,
                                                 const Element& model, const std::vector<Element>& asked);

 private:
  OutputReader(FieldScope& scope, const Target& target, const ModelBody& body, const Element& model);

  // The lists of outputs.
  void AddVocabulary();
  void AddOutput(Feature feature, const char* name);
  void ReadOutputFields(const Element& parent, const char* name);
  void ReadOutputField(const Element& element);
  void ReadAsked(const Element& element);
  [[nodiscard]] const OutputTable* FindFurther(const Element& element) const;
  bool ShowOf(const OutputTable& further, const std::string& name);
  void AddSegmentOutputs();
  void ExportAll(const Element& model);
  void ExportTo(FieldScope& ensemble, const KelTransformNS::ResolvedField& field, const Element& element);
  void Place(Output output, const Element& element);
  void AddToScope(Output& output);
  void InternEntities();
  std::unique_ptr<OutputTable> Finish();

  // One output.
  Output ReadOutput(const Element& element);
  [[nodiscard]] Output ReadFromSegment(const Element& element) const;
  void ReadFeature(const Element& element, Output& output) const;
  void ReadExpression(const Element& element, Output& output);
  void ReadNamedOutput(const Element& element, Output& output) const;
  void ReadCategory(const Element& element, Output& output) const;
  void ReadRank(const Element& element, Output& output) const;
  void ReadEntity(const Element& element, Output& output) const;
  [[nodiscard]] std::optional<std::uint32_t> FindEntity(std::string_view wanted) const;
  void ReadResidual(const Element& element, Output& output);
  void CheckAttributes(const Element& element) const;
  [[nodiscard]] Feature PredictedFeature() const noexcept;
  [[nodiscard]] bool GivesConfidences() const noexcept;
  void ChooseType(std::optional<KelTransformNS::DataType> type, Output& output);
  const std::vector<KelTransformNS::Cell>& Shown(bool isDisplay, KelTransformNS::DataType type);

  FieldScope& fScope;
  const Target& fTarget;
  const ModelBody& fBody;
  bool fHasCovariances;  // of the parameters
  std::unique_ptr<OutputTable> fTable;
  std::vector<Output>& fOutputs;  // of the table
  NameMap<std::size_t> fByName;
  std::vector<const OutputTable*> fFurther;  // of further targets
  bool fHasExpressions = false;              // the outputs have slots
};

}  // namespace Torvane
