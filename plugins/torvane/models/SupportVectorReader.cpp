#include "plugins/torvane/models/SupportVectorReader.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <set>
#include <string>
#include <utility>

#include "components/kelparsexml/PmmlArray.h"
#include "plugins/torvane/models/Parts.h"

namespace Torvane {

using KelTransformNS::Cell;
using KelXML_1_3::SparseArray;

namespace {

constexpr Word<Kernel::Kind> kKernels[] = {{"LinearKernelType", Kernel::Kind::kLinear},
                                           {"PolynomialKernelType", Kernel::Kind::kPolynomial},
                                           {"RadialBasisKernelType", Kernel::Kind::kRadialBasis},
                                           {"SigmoidKernelType", Kernel::Kind::kSigmoid}};

const Word<Kernel::Kind>* FindKernel(const Element& element) {
  const auto* found = std::find_if(std::begin(kKernels), std::end(kKernels),
                                   [&](const Word<Kernel::Kind>& kernel) { return element.Is(kernel.text); });
  return found == std::end(kKernels) ? nullptr : found;
}

bool IsArray(const Element& element) {
  return element.Is("Array") || element.Is("REAL-SparseArray") || element.Is("INT-SparseArray");
}

void RequireLength(const Element& array, std::size_t length, std::size_t fieldCount) {
  if (length == fieldCount) return;
  throw array.Error("isn't as long as the vector of fields, which has " + std::to_string(fieldCount));
}

std::vector<SparseArray::Entry> WithAllPlaces(const std::vector<double>& numbers) {
  std::vector<SparseArray::Entry> entries;
  for (std::uint32_t place = 0; place < numbers.size(); ++place) entries.push_back({place, numbers[place]});
  return entries;
}

// The numbers of a vector with their places; what isn't among them is 0.
std::vector<SparseArray::Entry> ReadVector(const Element& array, std::size_t fieldCount, Expansion& expansion) {
  if (array.Is("Array")) {
    const std::vector<double> numbers = KelXML_1_3::ReadNumberArray(array);
    RequireLength(array, numbers.size(), fieldCount);
    return WithAllPlaces(numbers);
  }
  SparseArray sparse = KelXML_1_3::ReadSparseArray(array);
  const bool isTooLong = !sparse.entries.empty() && sparse.entries.back().place >= fieldCount;
  RequireLength(array, isTooLong ? sparse.entries.back().place + 1 : sparse.length.value_or(fieldCount), fieldCount);
  if (sparse.defaultValue == 0.0) return std::move(sparse.entries);
  expansion.Add(fieldCount * sizeof(SparseArray::Entry), array);
  std::vector<double> numbers(fieldCount, sparse.defaultValue);
  for (const SparseArray::Entry& entry : sparse.entries) numbers[entry.place] = entry.value;
  return WithAllPlaces(numbers);
}

}  // namespace

std::unique_ptr<ModelBody> SupportVectorModel::Build(const Element& model, FieldScope& scope, Target& target) {
  return SupportVectorReader(model, scope, target).Read();
}

SupportVectorReader::SupportVectorReader(const Element& model, FieldScope& scope, Target& target)
    : fElement(model), fScope(scope), fTarget(target), fModel(std::make_unique<SupportVectorModel>()) {}

std::unique_ptr<SupportVectorModel> SupportVectorReader::Read() {
  static constexpr Word<bool> kRepresentations[] = {{"SupportVectors", true}, {"Coefficients", false}};
  RefuseUnknownModelChildren(fElement, {"LinearKernelType", "PolynomialKernelType", "RadialBasisKernelType",
                                        "SigmoidKernelType", "VectorDictionary", "SupportVectorMachine"});
  fModel->fIsOfVectors = ReadWord(fElement, "svmRepresentation", kRepresentations, true);
  fModel->fMaxWins = fElement.Boolean("maxWins", false);
  fDictionary = OnlyChild(fElement, "VectorDictionary");
  RefuseUnknownChildren(fDictionary, {"VectorFields", "VectorInstance"});
  ReadKernel();
  ReadFields(OnlyChild(fDictionary, "VectorFields"));
  ListInstances();
  (void)fElement.RequiredChild("SupportVectorMachine");
  for (Element machine = fElement.Child("SupportVectorMachine"); machine;
       machine = machine.Next("SupportVectorMachine")) {
    ReadMachine(machine);
  }
  ReadInstances();
  ReadCategories();
  fModel->fTerms.shrink_to_fit();
  return std::move(fModel);
}

void SupportVectorReader::ReadKernel() {
  Element kernel;
  for (Element child = fElement.FirstChild(); child; child = child.NextSibling()) {
    if (FindKernel(child) == nullptr) continue;
    if (kernel) throw child.Error("is a second kernel");
    kernel = child;
  }
  if (!kernel) throw fElement.Error("has no kernel");
  RefuseUnknownChildren(kernel, {});
  fKernel.kind = FindKernel(kernel)->value;
  fKernel.gamma = ReadFinite(kernel, "gamma").value_or(1.0);
  fKernel.coef0 = ReadFinite(kernel, "coef0").value_or(1.0);
  fKernel.degree = ReadFinite(kernel, "degree").value_or(1.0);
  if (!fModel->fIsOfVectors && fKernel.kind != Kernel::Kind::kLinear) {
    throw kernel.Error("needs support vectors; coefficients are for the linear kernel");
  }
}

// --- Fields and vectors ---

void SupportVectorReader::ReadFields(const Element& fields) {
  RefuseUnknownChildren(fields, {"FieldRef", "CategoricalPredictor"});
  std::vector<SupportVectorModel::Input>& inputs = fModel->fInputs;
  for (Element child = fields.FirstChild(); child; child = child.NextSibling()) {
    if (child.Is("FieldRef")) {
      const auto field = fScope.Compiler().CompileExpression(child, std::nullopt);
      if (KelTransformNS::IsText(field.dataType)) throw child.Error("gives a text, but a vector needs numbers");
      inputs.push_back({field.slot});
    } else if (child.Is("CategoricalPredictor")) {
      inputs.push_back(ReadCategoricalPredictor(child));
    }
  }
  if (inputs.empty()) throw fields.Error("has no field");
  CheckCount(fields, "numberOfFields", inputs.size());
}

SupportVectorModel::Input SupportVectorReader::ReadCategoricalPredictor(const Element& predictor) {
  RefuseUnknownChildren(predictor, {});
  if (predictor.Number("coefficient", 1.0) != 1.0) throw predictor.AttributeError("coefficient", "isn't 1");
  const Field& field = fScope.Resolve(predictor.Required("name"), predictor);
  const Cell category = ReadComparand(predictor, "value", predictor.Required("value"), field.dataType, fScope.Pool());
  return {field.slot, true, category};
}

void SupportVectorReader::ListInstances() {
  for (Element child = fDictionary.Child("VectorInstance"); child; child = child.Next("VectorInstance")) {
    const auto place = static_cast<std::uint32_t>(fInstances.size());
    if (!fInstances.emplace(child.Required("id"), place).second) {
      throw child.AttributeError("id", "is that of another vector");
    }
  }
  fIsUsed.resize(fInstances.size());
  CheckCount(fDictionary, "numberOfVectors", fInstances.size());
}

// All vectors are read, so that none is malformed, but only those that a machine uses are kept.
void SupportVectorReader::ReadInstances() {
  SparseRows rows;
  std::size_t place = 0;
  for (Element child = fDictionary.Child("VectorInstance"); child; child = child.Next("VectorInstance"), ++place) {
    ReadInstance(child, fIsUsed[place] ? &rows : nullptr);
  }
  if (!fModel->fIsOfVectors) return;
  PlaceTerms();
  fModel->fVectors = KernelVectors(fKernel, std::move(rows), fModel->fInputs.size());
}

// From places among all vectors to places among those that are kept.
void SupportVectorReader::PlaceTerms() {
  std::vector<std::uint32_t> places;
  std::uint32_t next = 0;
  for (const bool isUsed : fIsUsed) places.push_back(isUsed ? next++ : 0);
  for (SupportVectorModel::Term& term : fModel->fTerms) term.place = places[term.place];
}

void SupportVectorReader::ReadInstance(const Element& instance, SparseRows* rows) const {
  RefuseUnknownChildren(instance, {"Array", "REAL-SparseArray", "INT-SparseArray"});
  Element array;
  for (Element child = instance.FirstChild(); child; child = child.NextSibling()) {
    if (!IsArray(child)) continue;
    if (array) throw child.Error("is a second array of its vector");
    array = child;
  }
  if (!array) throw instance.Error("has no array");
  const std::vector<SparseArray::Entry> entries =
      ReadVector(array, fModel->fInputs.size(), fScope.GetDocument().expansion);
  for (const SparseArray::Entry& entry : entries) {
    if (!std::isfinite(entry.value)) throw array.Error("holds a number that isn't finite");
    if (rows != nullptr && entry.value != 0.0) rows->AddCell(entry.place, entry.value);
  }
  if (rows != nullptr) rows->EndRow();
}

// --- Machines ---

void SupportVectorReader::ReadMachine(const Element& element) {
  RefuseUnknownChildren(element, {"SupportVectors", "Coefficients"});
  const Element coefficients = OnlyChild(element, "Coefficients");
  RefuseUnknownChildren(coefficients, {"Coefficient"});
  Machine machine;
  machine.constant = ReadFinite(coefficients, "absoluteValue").value_or(0.0);
  const double threshold = ReadFinite(fElement, "threshold").value_or(0.0);
  machine.threshold = ReadFinite(element, "threshold").value_or(threshold);
  ReadTerms(element, coefficients);
  machine.endTerm = static_cast<std::uint32_t>(fModel->fTerms.size());
  fModel->fMachines.push_back(machine);
}

void SupportVectorReader::ReadTerms(const Element& machine, const Element& coefficients) {
  const std::vector<std::uint32_t> places = fModel->fIsOfVectors ? ReadPlaces(machine) : FieldPlaces(machine);
  std::size_t count = 0;
  for (Element child = coefficients.Child("Coefficient"); child; child = child.Next("Coefficient"), ++count) {
    RefuseUnknownChildren(child, {});
    const double value = ReadFinite(child, "value").value_or(0.0);
    if (count < places.size()) fModel->fTerms.push_back({value, places[count]});
  }
  CheckCount(coefficients, "numberOfCoefficients", count);
  if (count == places.size()) return;
  throw coefficients.Error("has " + std::to_string(count) + " coefficients for " + std::to_string(places.size()) +
                           (fModel->fIsOfVectors ? " support vectors" : " fields"));
}

std::vector<std::uint32_t> SupportVectorReader::ReadPlaces(const Element& machine) {
  const Element vectors = OnlyChild(machine, "SupportVectors");
  RefuseUnknownChildren(vectors, {"SupportVector"});
  std::vector<std::uint32_t> places;
  for (Element child = vectors.Child("SupportVector"); child; child = child.Next("SupportVector")) {
    RefuseUnknownChildren(child, {});
    const auto found = fInstances.find(child.Required("vectorId"));
    if (found == fInstances.end()) throw child.AttributeError("vectorId", "isn't in the dictionary of vectors");
    fIsUsed[found->second] = true;
    places.push_back(found->second);
  }
  CheckCount(vectors, "numberOfSupportVectors", places.size());
  return places;
}

std::vector<std::uint32_t> SupportVectorReader::FieldPlaces(const Element& machine) const {
  if (machine.Child("SupportVectors"))
    throw machine.Child("SupportVectors").Error("has no meaning beside coefficients");
  std::vector<std::uint32_t> places(fModel->fInputs.size());
  std::iota(places.begin(), places.end(), 0U);
  return places;
}

// --- Categories ---

void SupportVectorReader::ReadCategories() {
  const Element first = fElement.Child("SupportVectorMachine");
  const Element second = first.Next("SupportVectorMachine");
  if (fTarget.Function() == MiningFunction::kRegression) {
    if (second) throw second.Error("is a second machine; a regression has one");
    return;
  }
  const Decision decision = ChooseDecision(first);
  fModel->fDecision = decision;
  std::size_t i = 0;
  for (Element machine = first; machine; machine = machine.Next("SupportVectorMachine"), ++i) {
    fModel->fMachines[i].category = AddCategory(machine, "targetCategory", machine.Required("targetCategory"));
    if (decision == Decision::kVotes) fModel->fMachines[i].alternate = ReadAlternate(machine, fModel->fMachines[i]);
  }
  CheckMachines();
  fModel->fCategoryCount = fTarget.Categories().size();
}

// A single machine tells two categories apart, whatever the method is called.
SupportVectorReader::Decision SupportVectorReader::ChooseDecision(const Element& first) const {
  static constexpr Word<Decision> kMethods[] = {{"OneAgainstAll", Decision::kBest},
                                                {"OneAgainstOne", Decision::kVotes}};
  const Decision absent = FindAlternate(first) ? Decision::kVotes : Decision::kBest;
  const Decision decision = ReadWord(fElement, "classificationMethod", kMethods, absent);
  if (fModel->fMachines.size() == 1) return Decision::kVotes;
  if (fElement.Attribute("alternateBinaryTargetCategory")) {
    throw fElement.AttributeError("alternateBinaryTargetCategory", "is for a single machine");
  }
  return decision;
}

std::uint32_t SupportVectorReader::AddCategory(const Element& machine, std::string_view what, std::string_view text) {
  const std::uint32_t category = fTarget.AddCategory(machine, what, text);
  std::vector<std::uint32_t>& known = fModel->fCategories;
  if (fKnown.insert(category).second) known.push_back(category);
  return category;
}

// One producer writes it as an extension in versions that don't have it.
std::optional<std::string_view> SupportVectorReader::FindAlternate(const Element& machine) const {
  if (const auto alternate = machine.Attribute("alternateTargetCategory")) return alternate;
  for (Element child = machine.Child("Extension"); child; child = child.Next("Extension")) {
    if (child.Attribute("name") == "alternateTargetCategory") return child.Required("value");
  }
  if (fModel->fMachines.size() == 1) return fElement.Attribute("alternateBinaryTargetCategory");
  return std::nullopt;
}

std::uint32_t SupportVectorReader::ReadAlternate(const Element& element, const Machine& machine) {
  const std::optional<std::string_view> alternate = FindAlternate(element);
  const std::string_view text = alternate ? *alternate : OtherCategory(element, machine.category);
  const std::uint32_t category = AddCategory(element, "alternateTargetCategory", text);
  if (category == machine.category) throw element.AttributeError("targetCategory", "is the alternate one, too");
  return category;
}

// The other one of two categories that the target is known to have.
std::string_view SupportVectorReader::OtherCategory(const Element& machine, std::uint32_t category) const {
  const std::vector<Category>& categories = fTarget.Categories();
  if (fModel->fMachines.size() > 1 || categories.size() != 2) throw machine.Error("needs an alternateTargetCategory");
  return categories[1 - category].text;
}

// Each pair of categories, or each category, has its machine.
void SupportVectorReader::CheckMachines() const {
  const bool isOfPairs = fModel->fDecision == Decision::kVotes;
  std::set<std::pair<std::uint32_t, std::uint32_t>> known;
  Element element = fElement.Child("SupportVectorMachine");
  for (const Machine& machine : fModel->fMachines) {
    const auto [low, high] = std::minmax(machine.category, isOfPairs ? machine.alternate : machine.category);
    if (!known.emplace(low, high).second) throw element.Error("decides what another machine does");
    if (!isOfPairs && FindAlternate(element)) throw element.Error("has an alternateTargetCategory in OneAgainstAll");
    element = element.Next("SupportVectorMachine");
  }
  const std::size_t count = fModel->fCategories.size();
  if (isOfPairs && known.size() != count * (count - 1) / 2) {
    throw fElement.Error("has no machine for some pair of its categories");
  }
}

}  // namespace Torvane
