#include "plugins/torvane/models/ClusteringReader.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "components/kelparsexml/PmmlArray.h"
#include "plugins/torvane/models/Parts.h"

namespace Torvane {

std::unique_ptr<ModelBody> ClusteringModel::Build(const Element& model, FieldScope& scope, Target& target) {
  return ClusteringReader(model, scope, target).Read();
}

ClusteringReader::ClusteringReader(const Element& model, FieldScope& scope, Target& target)
    : fElement(model),
      fScope(scope),
      fTarget(target),
      fModel(std::make_unique<ClusteringModel>(target)),
      fComparison(model, scope, fModel->fMeasure) {}

std::unique_ptr<ClusteringModel> ClusteringReader::Read() {
  static constexpr Word<bool> kModelClasses[] = {{"centerBased", true}, {"distributionBased", false}};
  RefuseUnknownModelChildren(
      fElement, {"ComparisonMeasure", "ClusteringField", "CenterFields", "MissingValueWeights", "Cluster"});
  RefuseSecond(fElement, {"ComparisonMeasure", "CenterFields", "MissingValueWeights"});
  fHasCenters = ReadRequiredWord(fElement, "modelClass", kModelClasses);
  ReadClusteringFields();
  ReadMissingWeights();
  ReadClusters();
  fComparison.Finish();
  return std::move(fModel);
}

// --- Fields ---

void ClusteringReader::ReadClusteringFields() {
  const Element centerFields = fElement.Child("CenterFields");
  if (centerFields && !fHasCenters) throw centerFields.Error("belongs to the model class centerBased");
  if (!fHasCenters) ReadStatistics();
  for (Element child = fElement.Child("ClusteringField"); child; child = child.Next("ClusteringField")) {
    RefuseUnknownChildren(child, {"Comparisons"});
    if (!fSettings.emplace(child.Required("field"), child).second) {
      throw child.AttributeError("field", "is compared already");
    }
    fIsCenterField.push_back(child.Boolean("isCenterField", true));
    if (!centerFields) ReadClusteringField(child);
  }
  if (centerFields) ReadCenterFields(centerFields);
  if (fModel->fMeasure.FieldCount() == 0) throw fElement.Error("has no field that its clusters are compared in");
}

void ClusteringReader::ReadStatistics() {
  RefuseSecond(fElement, {"ModelStats"});
  const Element stats = fElement.Child("ModelStats");
  for (Element child = stats.Child("UnivariateStats"); child; child = child.Next("UnivariateStats")) {
    const bool isNew = fUnivariateStats.emplace(child.Required("field"), child).second;
    if (!isNew) throw child.AttributeError("field", "stands there twice");
  }
}

// What isn't part of a centre has no influence on its distance.
void ClusteringReader::ReadClusteringField(const Element& element) {
  if (fHasCenters && !fIsCenterField.back()) return;
  const std::string_view name = element.Required("field");
  const Field& field = fScope.Resolve(name, element);
  if (fHasCenters) return fComparison.AddField(element, name, field);
  const ListedValues listed = ListValues(element, name, field);
  fComparison.AddDistribution(element, name, field, listed);
  fDistributions.push_back({name, listed.Count()});
}

// Versions 3.0 and 3.1 list the fields of the centres as derived fields of their own.
void ClusteringReader::ReadCenterFields(const Element& centerFields) {
  RefuseUnknownChildren(centerFields, {"DerivedField"});
  fScope.Compiler().DeclareDerivedFields(centerFields);
  for (Element child = centerFields.Child("DerivedField"); child; child = child.Next("DerivedField")) {
    const std::string_view name = child.Required("name");
    fComparison.AddField(FindSettings(child), name, fScope.Resolve(name, child));
  }
}

// A field of the centres has the weight and function of the field that it is derived from, or of its own name. One
// that is calculated from several fields has the defaults.
Element ClusteringReader::FindSettings(const Element& derivedField) const {
  const Element expression = KelTransformNS::FindExpression(derivedField);
  for (const auto& name : {derivedField.Attribute("name"), expression.Attribute("field")}) {
    const auto found = name ? fSettings.find(*name) : fSettings.end();
    if (found != fSettings.end()) return found->second;
  }
  return derivedField;
}

// The statistics of a field list the values or intervals that the clusters' distributions follow; without any it is
// the field's declaration.
ListedValues ClusteringReader::ListValues(const Element& element, std::string_view name, const Field& field) {
  const auto stats = fUnivariateStats.find(name);
  if (stats == fUnivariateStats.end()) return DeclaredValues(element, name, field, fScope);
  RefuseSecond(stats->second, {"DiscrStats", "ContStats"});
  ListedValues listed;
  if (const Element values = stats->second.Child("DiscrStats").Child("Array")) {
    for (const std::string& text : KelXML_1_3::ReadStringArray(values)) {
      listed.values.push_back(ReadComparand(values, "value", text, field.dataType, fScope.Pool()));
    }
  }
  const Element intervals = stats->second.Child("ContStats");
  for (Element child = intervals.Child("Interval"); child; child = child.Next("Interval")) {
    listed.intervals.push_back(KelTransformNS::ReadInterval(child, field.dataType));
  }
  if (!listed.values.empty() && !listed.intervals.empty()) throw intervals.Error("stands beside a list of values");
  return listed.Count() > 0 ? listed : DeclaredValues(element, name, field, fScope);
}

// Some producers write a weight for each field, some only for those of the centres.
void ClusteringReader::ReadMissingWeights() {
  const Element element = fElement.Child("MissingValueWeights");
  if (!element) return;
  RefuseUnknownChildren(element, {"Array"});
  std::vector<double> weights = KelXML_1_3::ReadNumberArray(OnlyChild(element, "Array"));
  const std::size_t count = fModel->fMeasure.FieldCount();
  if (weights.size() != count && weights.size() == fIsCenterField.size() && !fElement.Child("CenterFields")) {
    std::size_t kept = 0;
    for (std::size_t i = 0; i < weights.size(); ++i) {
      if (fIsCenterField[i]) weights[kept++] = weights[i];
    }
    weights.resize(kept);
  }
  if (weights.size() != count) {
    throw element.Error("has " + std::to_string(weights.size()) + " weights for " + std::to_string(count) + " fields");
  }
  fComparison.SetMissingWeights(element, weights);
}

// --- Clusters ---

// A cluster without an identifier is named by its position. Its map, size and covariances are information.
void ClusteringReader::ReadClusters() {
  int count = 0;
  for (Element child = fElement.RequiredChild("Cluster"); child; child = child.Next("Cluster")) {
    RefuseUnknownChildren(child, {"KohonenMap", "Array", "Partition", "Covariances"});
    const std::string position = std::to_string(++count);
    const std::string_view id = child.Attribute("id").value_or(position);
    fTarget.AddCluster(child, id, child.Attribute("name").value_or(id));
    if (fHasCenters) {
      fComparison.AddPoint(OnlyChild(child, "Array"));
    } else {
      ReadPartition(OnlyChild(child, "Partition"));
    }
  }
  if (fElement.Integer("numberOfClusters").value_or(count) != count) {
    throw fElement.AttributeError("numberOfClusters", "isn't the number of clusters, " + std::to_string(count));
  }
}

void ClusteringReader::ReadPartition(const Element& partition) {
  NameMap<Element> statsByField;
  for (Element child = partition.Child("PartitionFieldStats"); child; child = child.Next("PartitionFieldStats")) {
    const bool isNew = statsByField.emplace(child.Required("field"), child).second;
    if (!isNew) throw child.AttributeError("field", "stands there twice");
  }
  fShares.clear();
  for (const Distribution& distribution : fDistributions) {
    const auto stats = statsByField.find(distribution.name);
    if (stats == statsByField.end()) {
      throw partition.Error("says nothing about field " + Quoted(distribution.name));
    }
    ReadShares(stats->second, distribution);
  }
  fComparison.AddPoint(fShares);
}

// The first array holds the frequencies; sums of values and of squares may follow.
void ClusteringReader::ReadShares(const Element& stats, const Distribution& distribution) {
  const Element array = stats.RequiredChild("Array");
  const std::vector<double> frequencies = KelXML_1_3::ReadNumberArray(array);
  if (frequencies.size() != distribution.size) {
    throw array.Error("has " + std::to_string(frequencies.size()) + " frequencies for the " +
                      std::to_string(distribution.size) + " values or intervals of field " + Quoted(distribution.name));
  }
  double sum = 0.0;
  for (const double frequency : frequencies) {
    if (!(frequency >= 0.0)) throw array.Error("has a frequency that isn't from 0 on");
    sum += frequency;
  }
  if (!(sum > 0.0) || !std::isfinite(sum)) throw array.Error("has no sum above 0");
  for (const double frequency : frequencies) fShares.push_back(frequency / sum);
}

}  // namespace Torvane
