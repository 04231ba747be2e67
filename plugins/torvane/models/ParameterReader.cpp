#include "plugins/torvane/models/ParameterReader.h"

#include <memory>
#include <set>
#include <string>

#include "plugins/torvane/models/Parts.h"

namespace Torvane {

using KelTransformNS::Cell;
using KelTransformNS::FieldDeclaration;

ParameterReader::ParameterReader(const Element& model, FieldScope& scope, ParameterSums& sums,
                                 const ReadCategory& readCategory)
    : fModel(model), fScope(scope), fSums(sums) {
  ReadParameterList();
  ReadPredictors(fModel.Child("FactorList"), true);
  ReadPredictors(fModel.Child("CovariateList"), false);
  ReadProducts(readCategory);
  ReadCoefficients(readCategory);
}

void ParameterReader::ReadParameterList() {
  const Element list = fModel.RequiredChild("ParameterList");
  RefuseUnknownChildren(list, {"Parameter"});
  for (Element child = list.Child("Parameter"); child; child = child.Next("Parameter")) {
    RefuseUnknownChildren(child, {});
    const auto index = static_cast<std::uint32_t>(fParameters.size());
    if (!fParameterIndex.emplace(child.Required("name"), index).second) {
      throw child.AttributeError("name", "is the name of another parameter as well");
    }
    fParameters.push_back({ReadFinite(child, "referencePoint").value_or(0.0)});
  }
}

// The type of a contrast matrix is for people; its numbers count.
void ParameterReader::ReadPredictors(const Element& list, bool areFactors) {
  RefuseUnknownChildren(list, {"Predictor"});
  for (Element child = list.Child("Predictor"); child; child = child.Next("Predictor")) {
    RefuseUnknownChildren(child, {"Categories", "Matrix"});
    RefuseSecond(child, {"Categories", "Matrix"});
    const std::string_view name = child.Required("name");
    Predictor predictor{areFactors ? fScope.Resolve(name, child) : fScope.ResolveNumeric(name, child), areFactors};
    const Element matrix = child.Child("Matrix");
    if (matrix && !areFactors) throw matrix.Error("is for a factor; the predictor is a covariate");
    if (matrix) predictor.contrast = ReadContrast(child, predictor.field);
    if (!fPredictors.emplace(name, std::move(predictor)).second) {
      throw child.AttributeError("name", "is the name of another predictor as well");
    }
  }
}

// The categories that the rows and columns of a contrast matrix are of: as the predictor lists them, else as its field
// does.
std::vector<Cell> ParameterReader::ReadCategories(const Element& predictor, const Field& field) {
  std::vector<Cell> categories;
  const auto add = [&](const Element& element, std::string_view text) {
    categories.push_back(ReadComparand(element, "value", text, field.dataType, fScope.Pool()));
  };
  if (const Element list = predictor.Child("Categories")) {
    RefuseUnknownChildren(list, {"Category"});
    for (Element child = list.Child("Category"); child; child = child.Next("Category")) {
      add(child, child.Required("value"));
    }
    return categories;
  }
  for (const std::string& value : field.order) add(predictor, value);
  const FieldDeclaration* const declared = fScope.GetDocument().dictionary.Find(predictor.Required("name"));
  if (!categories.empty() || declared == nullptr) return categories;
  for (const FieldDeclaration::DeclaredValue& value : declared->values) {
    if (value.property == FieldDeclaration::DeclaredValue::kValid) add(predictor, value.value);
  }
  return categories;
}

const Contrast* ParameterReader::ReadContrast(const Element& predictor, const Field& field) {
  const Element matrix = predictor.Child("Matrix");
  const std::vector<Cell> categories = ReadCategories(predictor, field);
  if (CategoryIndex(categories).HasRepeated()) throw predictor.Error("lists a category twice");
  KelXML_1_3::PmmlMatrix numbers = ReadMatrix(matrix, fScope.GetDocument().expansion);
  const std::size_t count = categories.size();
  if (numbers.Rows() != count || numbers.Columns() > count || numbers.Columns() + 1 < count) {
    throw matrix.Error("isn't of the size that the " + std::to_string(count) + " categories of its predictor ask for");
  }
  return fSums.Own(std::make_unique<Contrast>(categories, std::move(numbers)));
}

void ParameterReader::ReadProducts(const ReadCategory& readCategory) {
  std::map<std::pair<std::uint32_t, std::uint32_t>, std::vector<ParameterFactor>> products;
  const Element matrix = fModel.Child("PPMatrix");
  RefuseUnknownChildren(matrix, {"PPCell"});
  for (Element cell = matrix.Child("PPCell"); cell; cell = cell.Next("PPCell")) {
    RefuseUnknownChildren(cell, {});
    const auto predictor = fPredictors.find(cell.Required("predictorName"));
    if (predictor == fPredictors.end()) {
      throw cell.AttributeError("predictorName", "is in neither FactorList nor CovariateList");
    }
    const std::uint32_t parameter = FindParameter(cell);
    const std::uint32_t category = readCategory(cell);
    products[{parameter, category}].push_back(ReadFactor(cell, predictor->second));
    if (category != kNoCategory) fParameters[parameter].isByCategory = true;
  }
  for (const auto& [key, factors] : products) fFactors.emplace(key, fSums.AddFactors(factors));
}

ParameterFactor ParameterReader::ReadFactor(const Element& cell, const Predictor& predictor) {
  if (!predictor.isFactor) return ReadPower(cell, predictor);
  const Field& field = predictor.field;
  const Cell category = ReadComparand(cell, "value", cell.Required("value"), field.dataType, fScope.Pool());
  if (predictor.contrast != nullptr) {
    const std::optional<std::uint32_t> column = predictor.contrast->FindColumn(category);
    if (!column) throw cell.AttributeError("value", "has no column in the matrix of the predictor");
    return {ParameterFactor::kContrast, field.slot, *column, 0.0, predictor.contrast};
  }
  if (category.state == Cell::kText) return {ParameterFactor::kIsText, field.slot, category.textId};
  return {ParameterFactor::kIsNumber, field.slot, 0, category.number};
}

ParameterFactor ParameterReader::ReadPower(const Element& cell, const Predictor& predictor) {
  const double exponent = RequiredFinite(cell, "value");
  const std::uint32_t slot = predictor.field.slot;
  if (exponent == 1.0) return {ParameterFactor::kNumber, slot};
  if (exponent == 2.0) return {ParameterFactor::kSquare, slot};
  return {ParameterFactor::kPower, slot, 0, exponent};
}

void ParameterReader::ReadCoefficients(const ReadCategory& readCategory) {
  std::set<std::pair<std::uint32_t, std::uint32_t>> known;
  const Element matrix = fModel.RequiredChild("ParamMatrix");
  RefuseUnknownChildren(matrix, {"PCell"});
  for (Element cell = matrix.Child("PCell"); cell; cell = cell.Next("PCell")) {
    RefuseUnknownChildren(cell, {});
    const Coefficient coefficient{FindParameter(cell), readCategory(cell), RequiredFinite(cell, "beta")};
    if (!known.emplace(coefficient.parameter, coefficient.category).second) {
      throw cell.AttributeError("parameterName", "has a cell of the same category already");
    }
    fCoefficients.push_back(coefficient);
  }
}

std::uint32_t ParameterReader::FindParameter(const Element& cell) const {
  const auto found = fParameterIndex.find(cell.Required("parameterName"));
  if (found == fParameterIndex.end()) throw cell.AttributeError("parameterName", "isn't in the ParameterList");
  return found->second;
}

ParameterSums::Factors ParameterReader::FactorsOf(std::uint32_t parameter, std::uint32_t category) const {
  const auto found = fFactors.find({parameter, category});
  return found == fFactors.end() ? ParameterSums::Factors{} : found->second;
}

void ParameterReader::AddTerm(const Coefficient& coefficient, std::uint32_t category) {
  const std::uint32_t parameter = coefficient.parameter;
  const bool isByCategory = fParameters[parameter].isByCategory && category != kNoCategory;
  fSums.AddTerm(coefficient.beta, FactorsOf(parameter, kNoCategory),
                isByCategory ? FactorsOf(parameter, category) : ParameterSums::Factors{});
}

}  // namespace Torvane
