#include "plugins/torvane/models/ComparisonReader.h"

#include <cmath>
#include <limits>
#include <numbers>
#include <string>

#include "components/kelparsexml/PmmlArray.h"
#include "plugins/torvane/models/Parts.h"

namespace Torvane {

using KelTransformNS::Cell;
using KelTransformNS::FieldDeclaration;

namespace {

std::vector<std::string> ValidValues(const FieldDeclaration& declaration) {
  std::vector<std::string> values;
  for (const FieldDeclaration::DeclaredValue& declared : declaration.values) {
    if (declared.property == FieldDeclaration::DeclaredValue::kValid) values.push_back(declared.value);
  }
  return values;
}

// Weights make larger or smaller; below 0 they would turn a distance around.
double ReadWeight(const Element& element) {
  const double weight = ReadFinite(element, "fieldWeight").value_or(1.0);
  if (weight < 0.0) throw element.AttributeError("fieldWeight", "is below 0");
  return weight;
}

double ReadGaussFactor(const Element& element) {
  const double scale = RequiredFinite(element, "similarityScale");
  const double factor = std::numbers::ln2 / (scale * scale);
  if (!(scale > 0.0) || !std::isfinite(factor)) throw element.AttributeError("similarityScale", "is too small");
  return factor;
}

}  // namespace

ListedValues DeclaredValues(const Element& referrer, std::string_view name, const Field& field,
                            const FieldScope& scope) {
  const FieldDeclaration* const declaration = scope.GetDocument().dictionary.Find(name);
  std::vector<std::string> texts = field.order;
  if (texts.empty() && declaration != nullptr) texts = ValidValues(*declaration);
  ListedValues listed;
  for (const std::string& text : texts) {
    listed.values.push_back(ReadComparand(referrer, "value", text, field.dataType, scope.Pool()));
  }
  if (texts.empty() && declaration != nullptr) listed.intervals = declaration->intervals;
  if (listed.Count() == 0) {
    throw referrer.Error("needs the values or intervals of field " + Quoted(name) + " to be declared");
  }
  return listed;
}

ComparisonReader::ComparisonReader(const Element& model, FieldScope& scope, ComparisonMeasure& measure)
    : fModel(model), fScope(scope), fMeasure(measure) {
  ReadMeasure(model.RequiredChild("ComparisonMeasure"));
}

void ComparisonReader::ReadMeasure(const Element& element) {
  static constexpr Word<bool> kKinds[] = {{"distance", true}, {"similarity", false}};
  static constexpr Word<Aggregation> kMeasures[] = {
      {"euclidean", Aggregation::kEuclidean},    {"squaredEuclidean", Aggregation::kSquaredEuclidean},
      {"chebychev", Aggregation::kChebychev},    {"cityBlock", Aggregation::kCityBlock},
      {"minkowski", Aggregation::kMinkowski},    {"simpleMatching", Aggregation::kBinary},
      {"jaccard", Aggregation::kBinary},         {"tanimoto", Aggregation::kBinary},
      {"binarySimilarity", Aggregation::kBinary}};
  fMeasure.fIsDistance = ReadRequiredWord(element, "kind", kKinds);
  fFunction = ReadFunction(element, Function::kAbsDiff);
  Element found;
  for (const Word<Aggregation>& word : kMeasures) {
    const Element child = element.Child(word.text);
    if (!child) continue;
    if (found || child.Next(word.text)) throw child.Error("is a second measure");
    found = child;
    fMeasure.fAggregation = word.value;
  }
  RefuseUnknownChildren(element, {"euclidean", "squaredEuclidean", "chebychev", "cityBlock", "minkowski",
                                  "simpleMatching", "jaccard", "tanimoto", "binarySimilarity"});
  if (!found) throw element.Error("names no measure");
  RefuseUnknownChildren(found, {});
  if (fMeasure.fAggregation == Aggregation::kMinkowski) {
    fMeasure.fPower = RequiredFinite(found, "p-parameter");
    if (!(fMeasure.fPower > 0.0)) throw found.AttributeError("p-parameter", "isn't above 0");
  }
  if (fMeasure.fAggregation == Aggregation::kBinary) ReadBinary(found);
}

// The named measures are the general one with these parameters.
void ComparisonReader::ReadBinary(const Element& measure) {
  ComparisonMeasure::BinaryParameters& binary = fMeasure.fBinary;
  if (measure.Is("simpleMatching")) {
    binary = {{1, 0, 0, 1}, {1, 1, 1, 1}};
  } else if (measure.Is("jaccard")) {
    binary = {{1, 0, 0, 0}, {1, 1, 1, 0}};
  } else if (measure.Is("tanimoto")) {
    binary = {{1, 0, 0, 1}, {1, 2, 2, 1}};
  } else {
    static constexpr const char* kCounts[] = {"11", "10", "01", "00"};
    for (int i = 0; i < 4; ++i) {
      binary.c[i] = RequiredFinite(measure, std::string("c").append(kCounts[i]).append("-parameter"));
      binary.d[i] = RequiredFinite(measure, std::string("d").append(kCounts[i]).append("-parameter"));
    }
  }
}

ComparisonReader::Function ComparisonReader::ReadFunction(const Element& element, Function absent) {
  static constexpr Word<Function> kFunctions[] = {{"absDiff", Function::kAbsDiff},
                                                  {"gaussSim", Function::kGaussSim},
                                                  {"delta", Function::kDelta},
                                                  {"equal", Function::kEqual},
                                                  {"table", Function::kTable}};
  return ReadWord(element, "compareFunction", kFunctions, absent);
}

// Binary measures count fields, so that functions and weights have no influence on them.
ComparisonReader::ComparedField ComparisonReader::ReadField(const Element& settings, std::string_view name,
                                                            const Field& field) const {
  ComparedField compared;
  compared.slot = field.slot;
  compared.function = ReadFunction(settings, fFunction);
  compared.weight = ReadWeight(settings);
  const bool isBinary = fMeasure.fAggregation == Aggregation::kBinary;
  if (isBinary) compared.function = Function::kEqual;
  const bool calculates = compared.function == Function::kAbsDiff || compared.function == Function::kGaussSim;
  if ((isBinary || calculates) && KelTransformNS::IsText(field.dataType)) {
    throw settings.Error("needs numbers, but field " + Quoted(name) + " holds texts");
  }
  if (compared.function == Function::kGaussSim) compared.gaussFactor = ReadGaussFactor(settings);
  return compared;
}

void ComparisonReader::AddField(const Element& settings, std::string_view name, const Field& field) {
  ComparedField compared = ReadField(settings, name, field);
  if (compared.function == Function::kTable) {
    ReadTable(settings, name, DeclaredValues(settings, name, field, fScope), compared);
  }
  Add(compared, 1, name, field);
}

// Numbers that are only known by their interval can't be calculated with.
void ComparisonReader::AddDistribution(const Element& settings, std::string_view name, const Field& field,
                                       const ListedValues& listed) {
  if (fMeasure.fAggregation == Aggregation::kBinary) throw settings.Error("is a distribution in a binary measure");
  ComparedField compared = ReadField(settings, name, field);
  const bool hasIntervals = listed.values.empty();
  if (compared.function == Function::kTable) {
    ReadTable(settings, name, listed, compared);
  } else if (hasIntervals) {
    const bool calculates = compared.function == Function::kAbsDiff || compared.function == Function::kGaussSim;
    if (calculates) throw settings.Error("needs the compare function delta, equal or table for intervals");
    SetPositions(listed, compared);
  }
  compared.distributionSize = static_cast<std::uint32_t>(listed.Count());
  compared.distributionFirst = fMeasure.fDistributionValues.size();
  for (std::size_t i = 0; i < listed.Count(); ++i) {
    const bool isPosition = compared.positions != ComparisonMeasure::kNone;
    fMeasure.fDistributionValues.push_back(isPosition ? static_cast<double>(i)
                                                      : fMeasure.CodeOf(compared, listed.values[i]));
  }
  Add(compared, compared.distributionSize, name, field);
}

void ComparisonReader::Add(ComparedField compared, std::uint32_t rowCount, std::string_view name, const Field& field) {
  const bool isDifference = compared.function == Function::kAbsDiff && compared.distributionSize == 0;
  fMeasure.fHasDifferencesOnly = fMeasure.fHasDifferencesOnly && isDifference;
  compared.row = fMeasure.fRowCount;
  fMeasure.fRowCount += rowCount;
  fMeasure.fFields.push_back(compared);
  fMeasure.fTotalMissingWeight += compared.missingWeight;
  fPointFields.push_back({std::string(name), field.dataType});
}

// The rows are those of the record's value, the columns those of the point's.
void ComparisonReader::ReadTable(const Element& settings, std::string_view name, const ListedValues& listed,
                                 ComparedField& compared) {
  const Element comparisons = OnlyChild(settings, "Comparisons");
  RefuseUnknownChildren(comparisons, {"Matrix"});
  const KelXML_1_3::PmmlMatrix matrix = ReadMatrix(OnlyChild(comparisons, "Matrix"), fScope.GetDocument().expansion);
  const std::size_t count = listed.Count();
  if (matrix.Rows() != count || matrix.Columns() != count) {
    throw comparisons.Error("needs a matrix of " + std::to_string(count) + " rows and columns, as many as field " +
                            Quoted(name) + " has values");
  }
  SetPositions(listed, compared);
  compared.table = fMeasure.fTables.size();
  compared.tableSize = static_cast<std::uint32_t>(count);
  for (std::size_t row = 0; row < count; ++row) {
    for (std::size_t column = 0; column < count; ++column) fMeasure.fTables.push_back(matrix.At(row, column));
  }
}

void ComparisonReader::SetPositions(const ListedValues& listed, ComparedField& compared) {
  compared.positions = static_cast<std::uint32_t>(fMeasure.fPositions.size());
  ValuePositions& positions = fMeasure.fPositions.emplace_back();
  positions.intervals = listed.intervals;
  for (std::uint32_t i = 0; i < listed.values.size(); ++i) {
    const Cell& cell = listed.values[i];
    if (cell.state == Cell::kText) {
      positions.ranks.AddText(cell.textId, i);
    } else {
      positions.ranks.AddNumber(cell.number, i);
    }
  }
  positions.ranks.Seal();
}

void ComparisonReader::SetMissingWeights(const Element& element, const std::vector<double>& weights) {
  if (fMeasure.fAggregation == Aggregation::kBinary) return;  // it counts fields
  fMeasure.fTotalMissingWeight = 0.0;
  for (std::size_t i = 0; i < fMeasure.fFields.size(); ++i) {
    if (!(weights[i] >= 0.0) || !std::isfinite(weights[i])) throw element.Error("has a weight that isn't from 0 on");
    fMeasure.fFields[i].missingWeight = weights[i];
    fMeasure.fTotalMissingWeight += weights[i];
  }
  if (!(fMeasure.fTotalMissingWeight > 0.0)) throw element.Error("has weights that are all 0");
}

void ComparisonReader::AddPoint(const Element& array) {
  const std::vector<std::string> texts = KelXML_1_3::ReadStringArray(array);
  if (texts.size() != fPointFields.size()) {
    throw array.Error("has " + std::to_string(texts.size()) + " values for " + std::to_string(fPointFields.size()) +
                      " fields");
  }
  fPoint.clear();
  for (std::size_t i = 0; i < texts.size(); ++i) {
    fPoint.push_back(
        CheckedCode(array, i, ReadComparand(array, "value", texts[i], fPointFields[i].type, fScope.Pool())));
  }
  fMeasure.AddPoint(fPoint);
}

void ComparisonReader::AddPoint(const Element& element, std::span<const Cell> cells) {
  fPoint.clear();
  for (std::size_t i = 0; i < cells.size(); ++i) {
    fPoint.push_back(cells[i].IsMissing() ? std::numeric_limits<double>::quiet_NaN()
                                          : CheckedCode(element, i, cells[i]));
  }
  fMeasure.AddPoint(fPoint);
}

double ComparisonReader::CheckedCode(const Element& element, std::size_t field, const Cell& cell) const {
  const double code = fMeasure.CodeOf(fMeasure.fFields[field], cell);
  if (!std::isfinite(code)) {
    throw element.Error("has a value of field " + Quoted(fPointFields[field].name) + " that the measure can't compare");
  }
  return code;
}

}  // namespace Torvane
