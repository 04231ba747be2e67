#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "components/keltransform/DataDictionary.h"
#include "components/keltransform/ExpressionCompiler.h"
#include "plugins/torvane/fields/FieldTreatment.h"
#include "plugins/torvane/fields/MiningSchema.h"
#include "scoring/common/Value.h"
#include "scoring/common/ValueRecord.h"

namespace Torvane {

/// What the readers of one document share. The element tree, the dictionary and the pool outlive the building.
struct Document {
  Element root;
  int version;  ///< 302 for "3.2", 404 for "4.4.1"
  KelTransformNS::DataDictionary dictionary;
  KelTransformNS::TextPool& pool;
  bool readsAllDerivedFields;  ///< the library computes every derived field of the dictionary into the record
};

/// A field of the record that a model reads, and the slot that its cell is put into.
class InputField {
 public:
  InputField(std::string name, FieldTreatment treatment, std::uint32_t slot);

  /// The cell of a record's value. An invalid one means that the model must give no result.
  [[nodiscard]] KelTransformNS::Cell Read(const KelCommon_1_3::Value& value,
                                          const KelTransformNS::TextPool& pool) const noexcept {
    return fTreatment.Treat(value, pool);
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
  bool fTakesDoubles;
};

/// A field as a model's predicates and predictors see it.
struct Field {
  std::uint32_t slot;
  KelTransformNS::DataType dataType;
  KelTransformNS::OpType opType;
  std::vector<std::string> order;  ///< of an ordinal field that lists its values: these, the smallest first
};

/// The names that one model can refer to: the fields of its mining schema and the derived fields in scope. What is
/// referred to becomes an input or gets compiled; nothing else costs time while scoring.
class FieldScope {
 public:
  /// `model` holds "MiningSchema" and perhaps "LocalTransformations".
  FieldScope(const Document& document, const Element& model);

  /// The field `name` for the element `referrer`. Throws `PmmlError` if the model can't see such a field. The reference
  /// lives as long as the scope.
  const Field& Resolve(std::string_view name, const Element& referrer);
  /// The same for a field that is calculated with; one of texts throws as well.
  const Field& ResolveNumeric(std::string_view name, const Element& referrer);
  /// Makes an output field visible to the expressions of those that follow it. An input of the same name stays.
  void AddOutput(const KelTransformNS::ResolvedField& field);

  /// The inputs that were referred to, and those active fields whose values can make the record invalid. Asked once,
  /// at the end.
  [[nodiscard]] std::vector<InputField> TakeInputs();
  /// The slots of the derived fields that were referred to.
  [[nodiscard]] const std::vector<std::uint32_t>& DerivedSlots() const noexcept { return fDerivedSlots; }

  [[nodiscard]] const MiningSchema& Schema() const noexcept { return fSchema; }
  [[nodiscard]] const Document& GetDocument() const noexcept { return fDocument; }
  [[nodiscard]] KelTransformNS::TextPool& Pool() const noexcept { return fDocument.pool; }
  [[nodiscard]] KelTransformNS::ExpressionCompiler& Compiler() noexcept { return fCompiler; }

 private:
  Field ResolveNew(std::string_view name, const Element& referrer);
  std::optional<KelTransformNS::ResolvedField> FindInput(std::string_view name);
  KelTransformNS::ResolvedField AddInput(const MiningField& field);
  std::optional<KelTransformNS::ResolvedField> AddDerivedInput(std::string_view name);
  void DeclareDerivedFields(const Element& model);
  void AddDerivedInRecord(const std::vector<std::string>& names, const Element& dictionary);
  void CheckSchema();

  const Document& fDocument;
  MiningSchema fSchema;
  KelTransformNS::ExpressionCompiler fCompiler;
  NameMap<KelTransformNS::ResolvedField> fDerivedInRecord;  // without slots of this scope
  NameMap<KelTransformNS::ResolvedField> fOutputs;
  NameMap<Field> fResolved;
  std::vector<InputField> fInputs;
  std::set<std::string, std::less<>> fInputNames;
  std::unordered_map<std::uint32_t, const KelTransformNS::FieldDeclaration*> fInputsBySlot;
  std::vector<std::uint32_t> fDerivedSlots;
};

}  // namespace Torvane
