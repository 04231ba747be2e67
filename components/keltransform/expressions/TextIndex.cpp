#include <algorithm>
#include <array>
#include <cmath>
#include <new>

#include "components/keltransform/Attributes.h"
#include "components/keltransform/ExpressionCompiler.h"
#include "components/keltransform/NumberText.h"
#include "components/keltransform/expressions/Expressions.h"
#include "components/keltransform/expressions/TextIndexTable.h"
#include "components/keltransform/functions/Function.h"

namespace KelTransformNS {

using KelXML_1_3::Element;

namespace {

constexpr std::array<std::string_view, 4> kWeights = {"termFrequency", "binary", "logarithmic",
                                                      "augmentedNormalizedTermFrequency"};

void DescribeAttributes(const Element& element, std::string& description) {
  for (int index = 0; index < element.AttributeCount(); ++index) {
    description.append(element.AttributeName(index)).append(1, '\0');
    description.append(element.AttributeValue(index)).append(1, '\0');
  }
}

void DescribeCells(const Element& row, std::string& description) {
  for (Element cell = row.FirstChild(); cell; cell = cell.NextSibling()) {
    description.append(cell.Name()).append(1, '\0').append(cell.Text()).append(1, '\0');
  }
}

void DescribeRows(const Element& table, std::string& description) {
  description.append(table.Name());
  for (Element row = table.FirstChild(); row; row = row.NextSibling()) {
    DescribeCells(row, description.append("\n").append(row.Name()).append(1, '\0'));
  }
}

// Where two texts are equal, so are the rules: all that a counter reads. No part has the character 0 in it.
std::string DescribeRules(const Element& textIndex) {
  std::string description;
  for (const std::string_view name :
       {"isCaseSensitive", "maxLevenshteinDistance", "countHits", "wordSeparatorCharacterRE", "tokenize"}) {
    if (const auto value = textIndex.Attribute(name)) description.append(name).append(1, '\0').append(*value);
    description.append(1, '\0');
  }
  const std::string_view kind = "TextIndexNormalization";
  for (Element table = textIndex.Child(kind); table; table = table.Next(kind)) {
    DescribeAttributes(table, description.append("\n\n"));
    for (Element child = table.FirstChild(); child; child = child.NextSibling()) DescribeRows(child, description);
  }
  return description;
}

double WeightOf(const TermCounts& counts, std::uint32_t term, TermWeights weights) {
  const double count = counts.ofTerm[term];
  switch (weights) {
    case TermWeights::kBinary:
      return count > 0.0 ? 1.0 : 0.0;
    case TermWeights::kLogarithmic:
      return std::log10(1.0 + count);
    case TermWeights::kAugmentedNormalizedTermFrequency:
      // Words that are only similar to the term can be more than those that are the same.
      return count > 0.0 ? 0.5 * (1.0 + count / std::max<double>(counts.largest, count)) : 0.0;
    default:
      return count;
  }
}

// A term is known while the document is compiled: a constant, or a parameter whose argument is one.
const std::string& RequiredTerm(const Element& textIndex, ExpressionContext& context) {
  const Element expression = RequiredExpression(textIndex, {"TextIndexNormalization"});
  if (expression.Is("Constant") || expression.Is("FieldRef")) {
    const CompiledValue term = CompileAnyExpression(expression, context);
    const CompiledValue text = context.code.Converted(term, DataType::kString, expression);
    const bool isConstant = text.operand.IsConstant();
    if (isConstant && context.code.ConstantCell(text.operand).state == Cell::kText) {
      return *context.code.ConstantCell(text.operand).text;
    }
  }
  throw expression.Error("the term of a TextIndex must be a constant text");
}

}  // namespace

TermCounter& TextIndexTable::CounterOf(const Element& textIndex) {
  std::unique_ptr<TermCounter>& counter = fCounters[DescribeRules(textIndex)];
  if (!counter) counter = std::make_unique<TermCounter>(textIndex);
  return *counter;
}

std::uint32_t TextIndexTable::Append(const TermCounter& counter, std::uint32_t term, TermWeights weights) {
  fEntries.push_back({&counter, term, weights});
  return static_cast<std::uint32_t>(fEntries.size() - 1);
}

Cell TextIndexTable::Evaluate(std::uint32_t index, const Cell& text) const noexcept {
  if (text.state != Cell::kText) return text.IsMissing() ? Cell::Missing() : Cell::Invalid();
  const Entry& entry = fEntries[index];
  NumberBuffer buffer;
  try {
    const TermCounts* const counts = entry.counter->Count(TextOf(text, buffer));
    return counts != nullptr ? Cell::Number(WeightOf(*counts, entry.term, entry.weights)) : Cell::Invalid();
  } catch (const std::bad_alloc&) {
    return Cell::Invalid();
  }
}

CompiledValue CompileTextIndex(const Element& element, ExpressionContext& context) {
  const CompiledValue field = context.findField(element.Required("textField"), element);
  const CompiledValue text = context.code.Converted(field, DataType::kString, element);
  const TermWeights weights = ReadEnum(element, "localTermWeights", kWeights, TermWeights::kTermFrequency);
  ExpressionContext ofTerm{context.code,      context.functions, context.dictionaries,
                           context.findField, context.findGroup, DataType::kString};
  const std::string term = RequiredTerm(element, ofTerm);
  TextIndexTable& table = context.code.Data().textIndex;
  TermCounter& counter = table.CounterOf(element);
  if (weights == TermWeights::kAugmentedNormalizedTermFrequency) counter.WantLargest(element);
  const std::uint32_t entry = table.Append(counter, counter.AddTerm(term, element), weights);
  const bool isWhole = weights == TermWeights::kTermFrequency || weights == TermWeights::kBinary;
  return context.code.Emit(OpCode::kTextIndex, {text.operand}, entry, isWhole ? DataType::kInteger : DataType::kDouble);
}

}  // namespace KelTransformNS
