#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "components/kelparsexml/ElementTree.h"
#include "components/keltransform/Cell.h"
#include "components/keltransform/DataDictionary.h"
#include "components/keltransform/Group.h"
#include "components/keltransform/Program.h"
#include "components/keltransform/SlotCounter.h"

namespace KelTransformNS {

/// A field that expressions and models can refer to, with the slot where its cell stands when the program runs.
struct ResolvedField {
  std::string name;
  DataType dataType;
  OpType opType;
  std::uint32_t slot;
  std::vector<std::string> values = {};  ///< of an ordinal derived field that lists its values: these, in their order
};

/// The first expression among the children of an element such as "OutputField"; no element if there is none.
[[nodiscard]] KEL_EXPORT KelXML_1_3::Element FindExpression(const KelXML_1_3::Element& parent);
/// The expression of an element such as "DefineFunction", which must have one and no second, nor anything but what may
/// stand `beside` it. Throws `PmmlError`.
[[nodiscard]] KEL_EXPORT KelXML_1_3::Element RequiredExpression(const KelXML_1_3::Element& parent,
                                                                std::initializer_list<std::string_view> beside);
/// The same of a "DerivedField", whose "Value"s may only tell an order.
[[nodiscard]] KEL_EXPORT KelXML_1_3::Element ExpressionOf(const KelXML_1_3::Element& derivedField);

/// Compiles the expressions of one document (or of one model in it) into a `Program`.
///
///     TextPool pool;
///     ExpressionCompiler compiler(pool, [&](std::string_view name) { return inputs.Find(name); });
///     compiler.DeclareDerivedFields(pmml.Child("TransformationDictionary"));
///     const ResolvedField& field = compiler.Resolve("log income", node);   // compiled now, once
///     Program program = compiler.Finish();
///
/// Names are looked up innermost first: derived fields of the last declared dictionary, of the ones before it, then
/// `inputs`. A derived field itself sees its own dictionary and those declared before it, not the ones after. It is
/// compiled when it is first resolved, after everything that it uses, in whatever order the document holds them; one
/// that is never resolved costs nothing while scoring. Errors are `PmmlError`s that name element, field and line: an
/// unknown field, a cycle, an expression or function that isn't supported. After an error the compiler can go on with
/// other fields.
///
/// While a record is scored, an invalid input makes the result invalid; a missing one does what the expression says of
/// missing values. A result that can't be converted to its data type, such as a fraction to an integer, is invalid.
///
/// Slots: the compiler hands them out. `inputs` takes the slots of its fields from `NewSlot` as well. A field whose
/// expression only hands on another one shares its slot, so slots are for reading once the inputs are in place.
class KEL_EXPORT ExpressionCompiler {
 public:
  /// Gives an input field by name, or nothing if the model can't see such a field. Called until it gives the name for
  /// the first time, so that a field may come to be while a document is compiled.
  using InputLookup = std::function<std::optional<ResolvedField>(std::string_view name)>;

  ExpressionCompiler(TextPool& pool, InputLookup inputs);
  /// Takes its slots from a counter that other compilers may share, so that the programs of all of them run over one
  /// frame. The counter must outlive the compiler.
  ExpressionCompiler(TextPool& pool, SlotCounter& slots, InputLookup inputs);
  ExpressionCompiler(const ExpressionCompiler&) = delete;
  ExpressionCompiler& operator=(const ExpressionCompiler&) = delete;
  ~ExpressionCompiler();

  /// Declares the "DerivedField" children (and "DefineFunction"s) of a "TransformationDictionary" or
  /// "LocalTransformations" element; no element declares nothing. The element tree must live until `Finish`.
  void DeclareDerivedFields(const KelXML_1_3::Element& dictionary);
  /// Declares the "DefineFunction"s alone, where another compiler over the same frame computes the derived fields.
  void DeclareFunctions(const KelXML_1_3::Element& dictionary);
  /// The names of all declared derived fields, in order of declaration.
  [[nodiscard]] std::vector<std::string> DerivedFieldNames() const;

  [[nodiscard]] std::uint32_t NewSlot();
  /// The size that a frame needs, for all compilers that share the counter.
  [[nodiscard]] std::uint32_t SlotCount() const noexcept;

  /// The field `name` as `referrer` sees it. The reference lives as long as the compiler. Throws if there is none.
  const ResolvedField& Resolve(std::string_view name, const KelXML_1_3::Element& referrer);
  /// The same, null instead of an error if there is no such field.
  const ResolvedField* Find(std::string_view name, const KelXML_1_3::Element& referrer);

  /// Compiles one expression element whose result is converted to `dataType` (kept as it comes without one), and
  /// gives the field of its result.
  ResolvedField CompileExpression(const KelXML_1_3::Element& expression, std::optional<DataType> dataType);

  /// Hands over what was compiled since the last `Finish`, and starts a new program over the same slots. So a model
  /// gets one program for its derived fields, and another for its outputs.
  [[nodiscard]] Program Finish();

  /// Whether "mapMissingTo" of "Apply" stands for a missing result, as version 4.1 has it, and not for a missing
  /// argument as all later versions do. Called before anything is compiled.
  void SetMapsMissingResults(bool mapsMissingResults) noexcept;

  /// Gives the slot of an input field's values, joined by a function, with the type of the values; nothing if the model
  /// can't see such a field. Called once for each name and function, for "Aggregate" expressions, which are refused as
  /// long as there is no such lookup. See `JoinGroup`.
  using GroupLookup = std::function<std::optional<ResolvedField>(std::string_view name, GroupFunction function)>;
  void SetGroups(GroupLookup groups);

  /// Asks for the input field `name` anew when it is referred to again: another field has taken its name. Ends the
  /// reference that `Resolve` gave of it. What was compiled before keeps the field that it has.
  void ForgetInput(std::string_view name);

  /// Takes the derived field `name` out of the last declared dictionary, so that the name is looked up further out: for
  /// a field that the record holds already. It must not have been resolved yet.
  void Withdraw(std::string_view name);

 private:
  struct Impl;
  std::unique_ptr<Impl> fImpl;
};

}  // namespace KelTransformNS
