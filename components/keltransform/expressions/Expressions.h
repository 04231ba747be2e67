#pragma once

#include <functional>
#include <optional>
#include <string_view>
#include <vector>

#include "components/kelparsexml/ElementTree.h"
#include "components/keltransform/CodeBuilder.h"
#include "components/keltransform/DeclaredFunctions.h"
#include "components/keltransform/Group.h"

namespace KelTransformNS {

/// What the function calls of one document share.
struct FunctionScope {
  DeclaredFunctions declared;
  /// In PMML 4.1 "mapMissingTo" of a call replaces its missing result; from 4.2 on "defaultValue" does that, and
  /// "mapMissingTo" speaks of missing arguments.
  bool mapsMissingResults = false;
  /// The elements that were compiled inside of functions so far.
  std::size_t inlinedElements = 0;
};

/// What an expression is compiled in.
struct ExpressionContext {
  /// Gives the field of a name as the expression sees it; throws an error about `referrer` if there is none.
  using FieldLookup = std::function<CompiledValue(std::string_view name, const KelXML_1_3::Element& referrer)>;

  /// Gives a field's values, joined by a function: the slot of the result, and the type of the values.
  using GroupLookup =
      std::function<CompiledValue(std::string_view name, GroupFunction function, const KelXML_1_3::Element& referrer)>;

  CodeBuilder& code;
  FunctionScope& functions;
  std::size_t dictionaries;  ///< the expression sees the functions of so many
  FieldLookup findField;
  GroupLookup findGroup;
  /// The type that the result will be converted to, if that is known: literals without a type of their own are of it.
  std::optional<DataType> wantedType;
};

/// Compiles an expression element of any kind. The value is of the expression's own type, not converted to the wanted
/// one. Throws `PmmlError` for a kind that isn't supported.
[[nodiscard]] CompiledValue CompileAnyExpression(const KelXML_1_3::Element& expression, ExpressionContext& context);
[[nodiscard]] bool IsExpression(std::string_view elementName) noexcept;

/// The names of the fields that an expression refers to, each as often as it does.
[[nodiscard]] KEL_EXPORT std::vector<std::string_view> CollectReferences(const KelXML_1_3::Element& expression);

// One function, and one file, for each kind of expression.

[[nodiscard]] CompiledValue CompileConstant(const KelXML_1_3::Element& element, ExpressionContext& context);
[[nodiscard]] CompiledValue CompileFieldRef(const KelXML_1_3::Element& element, ExpressionContext& context);
[[nodiscard]] CompiledValue CompileNormContinuous(const KelXML_1_3::Element& element, ExpressionContext& context);
[[nodiscard]] CompiledValue CompileNormDiscrete(const KelXML_1_3::Element& element, ExpressionContext& context);
[[nodiscard]] CompiledValue CompileDiscretize(const KelXML_1_3::Element& element, ExpressionContext& context);
[[nodiscard]] CompiledValue CompileMapValues(const KelXML_1_3::Element& element, ExpressionContext& context);
[[nodiscard]] CompiledValue CompileAggregate(const KelXML_1_3::Element& element, ExpressionContext& context);
[[nodiscard]] CompiledValue CompileApply(const KelXML_1_3::Element& element, ExpressionContext& context);
[[nodiscard]] CompiledValue CompileTextIndex(const KelXML_1_3::Element& element, ExpressionContext& context);

// What they share.

/// The attribute by which an element names the field that it refers to.
[[nodiscard]] std::string_view FieldAttribute(const KelXML_1_3::Element& element) noexcept;

/// The value of a "Constant" as one of `type`, nothing if it is none.
[[nodiscard]] std::optional<CompiledValue> FindConstantOf(const KelXML_1_3::Element& element, DataType type,
                                                          CodeBuilder& code);

/// The field that the "field" attribute names.
[[nodiscard]] CompiledValue CompileField(const KelXML_1_3::Element& element, ExpressionContext& context);
/// The same as a number: a text is read as one.
[[nodiscard]] CompiledValue CompileNumericField(const KelXML_1_3::Element& element, ExpressionContext& context);
/// The type of an expression's literals: its own "dataType", else the wanted one, else text.
[[nodiscard]] DataType LiteralType(const KelXML_1_3::Element& element, const ExpressionContext& context);

}  // namespace KelTransformNS
