#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "components/kelparsexml/ElementStream.h"
#include "components/keltransform/DataDictionary.h"
#include "components/keltransform/ExpressionCompiler.h"
#include "components/keltransform/SlotCounter.h"
#include "plugins/torvane/Expansion.h"
#include "plugins/torvane/fields/FieldTreatment.h"
#include "plugins/torvane/fields/MiningSchema.h"
#include "plugins/torvane/targets/CategoryList.h"
#include "scoring/common/Value.h"
#include "scoring/common/ValueRecord.h"

namespace Torvane {

/// What the readers of one document share. All of it outlives the building.
struct Document {
  Element root;
  int version;  ///< 302 for "3.2", 404 for "4.4.1"
  KelTransformNS::DataDictionary dictionary;
  KelTransformNS::TextPool& pool;
  Expansion& expansion;
  DeclaredCategories& categories;
  bool readsAllDerivedFields;  ///< the library computes every derived field of the dictionary into the record
  KelXML_1_3::ElementStream* stream = nullptr;  ///< that hands over the segments of an ensemble; null: a whole tree
};

/// A field of the record that a model reads, and the slot that its cell is put into.
class InputField {
 public:
  using GroupFunction = KelTransformNS::GroupFunction;

  /// With a function, the values that a record holds for the field are joined by it, each treated before.
  InputField(std::string name, FieldTreatment treatment, std::uint32_t slot,
             std::optional<GroupFunction> function = std::nullopt);

  /// The cell of a record's value. An invalid one means that the model must give no result.
  [[nodiscard]] KelTransformNS::Cell Read(const KelCommon_1_3::Value& value,
                                          const KelTransformNS::TextPool& pool) const noexcept {
    const auto treat = [&](const KelCommon_1_3::Value& one) { return fTreatment.Treat(one, pool); };
    return fFunction ? KelTransformNS::JoinGroup(value, *fFunction, treat) : treat(value);
  }
  /// Whether a number passes as it is, so that it needn't be read by `Read`. The marks of a missing number are none.
  [[nodiscard]] bool TakesDoubles() const noexcept { return fTakesDoubles; }
  [[nodiscard]] const KelCommon_1_3::FieldKey& Key() const noexcept { return fKey; }
  [[nodiscard]] std::uint32_t Slot() const noexcept { return fSlot; }

  /// The library computes the field into the record. A record without it would be scored wrongly.
  bool mustBeInRecord = false;
  /// The true value of a target, which only a residual asks for: an invalid one spoils nothing but the residual.
  bool isTarget = false;

 private:
  KelCommon_1_3::FieldKey fKey;
  FieldTreatment fTreatment;
  std::uint32_t fSlot;
  std::optional<GroupFunction> fFunction;
  bool fTakesDoubles;
};

/// A field as a model's predicates and predictors see it.
struct Field {
  std::uint32_t slot;
  KelTransformNS::DataType dataType;
  KelTransformNS::OpType opType;
  std::vector<std::string> order;  ///< of an ordinal field that lists its values: these, the smallest first
};

/// A field of an ensemble that the schema of one of its models treats once more, for this model alone.
struct SegmentInput {
  std::uint32_t outerSlot;
  std::uint32_t slot;
  FieldTreatment treatment;
};

/// The names that one model can refer to: the fields of its mining schema and the derived fields in scope. What is
/// referred to becomes an input or gets compiled; nothing else costs time while scoring.
///
/// A model inside an ensemble has a scope inside that of the ensemble, over the same frame. It sees what its schema
/// lists of the ensemble's fields, the ensemble's derived fields, and the outputs of the segments before it. Fields
/// that its schema doesn't treat in another way share the ensemble's slots. The derived fields of the dictionary are
/// the ensemble's too, unless the schema treats a field once more: they then follow from what this model sees.
class FieldScope {
 public:
  /// `model` holds "MiningSchema" and perhaps "LocalTransformations".
  FieldScope(const Document& document, const Element& model);
  /// The scope of a model in the ensemble of `outer`, which outlives it. A model without a "MiningSchema" sees all that
  /// the ensemble sees.
  FieldScope(FieldScope& outer, const Element& model);
  FieldScope(const FieldScope&) = delete;
  FieldScope& operator=(const FieldScope&) = delete;

  /// The field `name` for the element `referrer`. Throws `PmmlError` if the model can't see such a field. The reference
  /// lives as long as the scope.
  const Field& Resolve(std::string_view name, const Element& referrer);
  /// The same for a field that is calculated with; one of texts throws as well.
  const Field& ResolveNumeric(std::string_view name, const Element& referrer);
  /// Makes an output field visible to the expressions of those that follow it. An input of the same name stays, an
  /// output of a segment doesn't.
  void AddOutput(const KelTransformNS::ResolvedField& field);

  /// The inputs that were referred to, and those active fields whose values can make the record invalid. Asked once,
  /// at the end.
  [[nodiscard]] std::vector<InputField> TakeInputs();
  /// The same for a model in an ensemble.
  [[nodiscard]] std::vector<SegmentInput> TakeSegmentInputs() { return std::move(fSegmentInputs); }
  /// The slots whose cells can be invalid though the inputs aren't, of the fields that were referred to since the last
  /// call: those of derived fields, and of fields of an ensemble.
  [[nodiscard]] std::vector<std::uint32_t> TakeDerivedSlots() { return std::exchange(fDerivedSlots, {}); }

  /// Makes an output of one of this ensemble's segments a field of the ensemble, for the segments after it and for the
  /// host. Gives the slot where the segment leaves it, the same one for an output of that name in other segments;
  /// nothing if the name has another type there.
  [[nodiscard]] std::optional<std::uint32_t> AddSegmentOutput(const KelTransformNS::ResolvedField& field);
  /// The outputs of all segments so far, in order.
  [[nodiscard]] const std::vector<KelTransformNS::ResolvedField>& SegmentOutputs() const noexcept {
    return fSegmentOutputs;
  }
  /// The same for the answer to an output field of this ensemble that asks a segment. It has a slot of its own, since a
  /// segment's own output may have its name.
  [[nodiscard]] std::uint32_t AddAnswer(const KelTransformNS::ResolvedField& field);
  /// Null if no segment so far has answered an output field of that name.
  [[nodiscard]] const KelTransformNS::ResolvedField* FindAnswer(std::string_view name) const;
  /// Where the segments leave outputs and answers.
  [[nodiscard]] const std::vector<std::uint32_t>& SegmentSlots() const noexcept { return fSegmentSlots; }

  /// The scope of the ensemble; null for the model that is scored.
  [[nodiscard]] FieldScope* Outer() const noexcept { return fOuter; }

  [[nodiscard]] const MiningSchema& Schema() const noexcept { return fSchema; }
  [[nodiscard]] const Document& GetDocument() const noexcept { return fDocument; }
  [[nodiscard]] KelTransformNS::TextPool& Pool() const noexcept { return fDocument.pool; }
  /// Of the whole frame.
  [[nodiscard]] KelTransformNS::SlotCounter& Slots() noexcept;
  [[nodiscard]] KelTransformNS::ExpressionCompiler& Compiler() noexcept { return fCompiler; }

 private:
  Field ResolveNew(std::string_view name, const Element& referrer);
  std::optional<KelTransformNS::ResolvedField> FindInput(std::string_view name);
  std::optional<KelTransformNS::ResolvedField> FindInEnsemble(std::string_view name);
  std::optional<KelTransformNS::ResolvedField> FindGroup(std::string_view name, KelTransformNS::GroupFunction function);
  std::optional<KelTransformNS::ResolvedField> FindForSegment(std::string_view name, bool isListed);
  KelTransformNS::ResolvedField AddSegmentInput(const MiningField& field, KelTransformNS::ResolvedField outer);
  [[nodiscard]] bool TreatsAgain(const MiningField& field) const;
  void ShareInput(std::uint32_t slot);
  std::uint32_t NewSegmentSlot();
  void DeclareSegmentFields(const Element& model);
  [[nodiscard]] bool IsDataField(std::string_view name) const { return fDocument.dictionary.Find(name) != nullptr; }
  KelTransformNS::ResolvedField AddInput(const MiningField& field);
  std::optional<KelTransformNS::ResolvedField> AddDerivedInput(std::string_view name);
  void DeclareDerivedFields(const Element& model);
  [[nodiscard]] std::vector<std::string> ChooseDerivedInRecord(const Element& dictionary) const;
  [[nodiscard]] std::vector<std::string_view> TreatedFields() const;
  void AddDerivedInRecord(const std::vector<std::string>& names, const Element& dictionary);
  void CheckSchema();

  const Document& fDocument;
  FieldScope* fOuter = nullptr;
  KelTransformNS::SlotCounter fOwnSlots;  // of the outermost scope, for all scopes in it
  MiningSchema fSchema;
  bool fSeesAll = false;  // of the ensemble, without a schema that lists what
  KelTransformNS::ExpressionCompiler fCompiler;
  NameMap<KelTransformNS::ResolvedField> fDerivedInRecord;  // without slots of this scope
  NameMap<KelTransformNS::ResolvedField> fOutputs;
  NameMap<Field> fResolved;
  std::vector<InputField> fInputs;
  std::set<std::string, std::less<>> fInputNames;  // of fields that need no other input
  std::map<std::pair<std::string, KelTransformNS::GroupFunction>, KelTransformNS::ResolvedField> fGroups;
  std::unordered_map<std::uint32_t, const KelTransformNS::FieldDeclaration*> fInputsBySlot;
  std::vector<SegmentInput> fSegmentInputs;
  std::vector<std::uint32_t> fDerivedSlots;
  std::vector<KelTransformNS::ResolvedField> fSegmentOutputs;
  NameMap<std::size_t> fSegmentOutputPositions;
  NameMap<KelTransformNS::ResolvedField> fAnswers;
  std::vector<std::uint32_t> fSegmentSlots;
};

}  // namespace Torvane
