#include "plugins/torvane/fields/FieldScope.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "components/keltransform/expressions/Expressions.h"

namespace Torvane {

using KelTransformNS::DataType;
using KelTransformNS::FieldDeclaration;
using KelTransformNS::OpType;
using KelTransformNS::ResolvedField;

namespace {

void CollectDerivedFields(const Element& dictionary, NameMap<Element>& byName) {
  for (Element field = dictionary.Child("DerivedField"); field; field = field.Next("DerivedField")) {
    if (const auto name = field.Attribute("name")) byName.emplace(*name, field);
  }
}

std::vector<std::string> ValuesInOrder(const FieldDeclaration& declaration) {
  std::vector<std::string> values;
  for (const FieldDeclaration::DeclaredValue& declared : declaration.values) {
    if (declared.property == FieldDeclaration::DeclaredValue::kValid) values.push_back(declared.value);
  }
  return values;
}

// "asIs" changes nothing here: a derived field lists no valid values, and what can't be converted stays invalid.
bool HasTreatment(const MiningField& field) {
  return field.outliers != OutlierTreatment::kAsIs || field.missingReplacement || field.missingReturnsInvalid ||
         field.invalidReplacement || field.invalidTreatment == InvalidTreatment::kAsMissing;
}

// The derived fields that follow from one of `fields`, in one step or many.
std::set<std::string_view> FollowersOf(const std::vector<std::string_view>& fields,
                                       const NameMap<Element>& derivedFields) {
  std::unordered_multimap<std::string_view, std::string_view> users;  // of a field: the derived fields that refer to it
  for (const auto& [name, element] : derivedFields) {
    for (const std::string_view field : KelTransformNS::CollectReferences(element)) users.emplace(field, name);
  }
  std::set<std::string_view> followers;
  std::vector<std::string_view> pending = fields;
  while (!pending.empty()) {
    const auto [first, last] = users.equal_range(pending.back());
    pending.pop_back();
    for (auto user = first; user != last; ++user) {
      if (followers.insert(user->second).second) pending.push_back(user->second);
    }
  }
  return followers;
}

}  // namespace

InputField::InputField(std::string name, FieldTreatment treatment, std::uint32_t slot,
                       std::optional<GroupFunction> function)
    : fKey(std::move(name)),
      fTreatment(std::move(treatment)),
      fSlot(slot),
      fFunction(function),
      fTakesDoubles(!fFunction && fTreatment.Type() == DataType::kDouble && fTreatment.PassesNumbers()) {}

FieldScope::FieldScope(const Document& document, const Element& model)
    : fDocument(document),
      fSchema(ReadMiningSchema(model.RequiredChild("MiningSchema"))),
      fCompiler(document.pool, fOwnSlots, [this](std::string_view name) { return FindInput(name); }) {
  fCompiler.SetMapsMissingResults(fDocument.version == 401);
  fCompiler.SetGroups([this](std::string_view name, auto function) { return FindGroup(name, function); });
  DeclareDerivedFields(model);
  CheckSchema();
}

FieldScope::FieldScope(FieldScope& outer, const Element& model)
    : fDocument(outer.fDocument),
      fOuter(&outer),
      fSchema(ReadMiningSchema(model.Child("MiningSchema"))),
      fSeesAll(!model.Child("MiningSchema")),
      fCompiler(fDocument.pool, outer.Slots(), [this](std::string_view name) { return FindInEnsemble(name); }) {
  fCompiler.SetMapsMissingResults(fDocument.version == 401);
  fCompiler.SetGroups([this](std::string_view name, auto function) { return FindGroup(name, function); });
  LetPassInside(outer.fSchema, fSchema);
  DeclareSegmentFields(model);
  // A missing value of such a field makes the result invalid even if nothing refers to the field.
  for (const MiningField& field : fSchema.fields) {
    if (field.usage == FieldUsage::kActive && field.missingReturnsInvalid) (void)Resolve(field.name, field.element);
  }
}

KelTransformNS::SlotCounter& FieldScope::Slots() noexcept { return fOuter == nullptr ? fOwnSlots : fOuter->Slots(); }

// The library has computed some derived fields into the record. These are inputs here; all others are computed in
// the frame, whatever the record holds under their names.
void FieldScope::DeclareDerivedFields(const Element& model) {
  const Element dictionary = fDocument.root.Child("TransformationDictionary");
  fCompiler.DeclareDerivedFields(dictionary);
  const std::vector<std::string> inRecord = ChooseDerivedInRecord(dictionary);
  for (const std::string& name : inRecord) fCompiler.Withdraw(name);
  if (!inRecord.empty()) AddDerivedInRecord(inRecord, dictionary);
  fCompiler.DeclareDerivedFields(model.Child("LocalTransformations"));
}

// Not those that follow from a field which the schema treats: the library knows no schema, so its values are other
// ones.
std::vector<std::string> FieldScope::ChooseDerivedInRecord(const Element& dictionary) const {
  std::vector<std::string> chosen;
  if (!fDocument.readsAllDerivedFields && fSchema.derivedInRecord.empty()) return chosen;
  NameMap<Element> declared;
  CollectDerivedFields(dictionary, declared);
  const std::set<std::string_view> treated = FollowersOf(TreatedFields(), declared);
  for (const auto& [name, element] : declared) {
    const bool isListed = fDocument.readsAllDerivedFields || fSchema.derivedInRecord.count(name) != 0;
    if (isListed && !treated.contains(name)) chosen.push_back(name);
  }
  return chosen;
}

std::vector<std::string_view> FieldScope::TreatedFields() const {
  std::vector<std::string_view> names;
  for (const MiningField& field : fSchema.fields) {
    if (HasTreatment(field)) names.push_back(field.name);
  }
  return names;
}

// Where a field is treated once more, derived fields follow from the new value, but for those that the schema takes
// from the ensemble by their names, and those that the record holds.
void FieldScope::DeclareSegmentFields(const Element& model) {
  const Element dictionary = fDocument.root.Child("TransformationDictionary");
  const bool treatsAgain = std::any_of(fSchema.fields.begin(), fSchema.fields.end(), [&](const MiningField& field) {
    return IsDataField(field.name) && TreatsAgain(field);
  });
  if (treatsAgain) {
    const FieldScope* outermost = fOuter;
    while (outermost->fOuter != nullptr) outermost = outermost->fOuter;
    fCompiler.DeclareDerivedFields(dictionary);
    NameMap<Element> declared;
    CollectDerivedFields(dictionary, declared);
    for (const auto& [name, element] : declared) {
      const bool isInRecord = outermost->fDerivedInRecord.count(name) != 0;
      if (isInRecord || fSchema.Find(name) != nullptr) fCompiler.Withdraw(name);
    }
    fSeesAll = true;  // a derived field may refer to what this schema doesn't list
  } else if (dictionary.Child("DefineFunction")) {
    fCompiler.DeclareFunctions(dictionary);
  }
  fCompiler.DeclareDerivedFields(model.Child("LocalTransformations"));
}

bool FieldScope::TreatsAgain(const MiningField& field) const {
  return NeedsAnotherTreatment(field, fOuter->fSchema.Find(field.name));
}

// The library computes a dictionary as a whole or not at all, and says nothing then. So if a field is to come from it,
// every derived field must be one that can be compiled, and none may have the name of a data field.
void FieldScope::AddDerivedInRecord(const std::vector<std::string>& names, const Element& dictionary) {
  std::optional<KelTransformNS::ExpressionCompiler> compiler;
  const auto findInput = [&](std::string_view name) -> std::optional<ResolvedField> {
    const FieldDeclaration* field = fDocument.dictionary.Find(name);
    if (field == nullptr) return std::nullopt;
    return ResolvedField{field->name, field->dataType, field->opType, compiler->NewSlot()};
  };
  compiler.emplace(fDocument.pool, findInput);
  compiler->SetGroups([&](std::string_view name, auto) {
    fInputNames.emplace(name);  // what the library has joined is no value of its own
    return findInput(name);
  });
  compiler->DeclareDerivedFields(dictionary);
  for (Element field = dictionary.Child("DerivedField"); field; field = field.Next("DerivedField")) {
    const std::string_view name = field.Required("name");
    if (IsDataField(name)) {
      throw field.AttributeError("name", "is the name of a data field as well");
    }
    (void)compiler->Resolve(name, field);
  }
  for (const std::string& name : names) fDerivedInRecord.emplace(name, compiler->Resolve(name, dictionary));
}

// A listed field must be declared. One that is a derived field needs no listing; listed, it is computed all the same.
void FieldScope::CheckSchema() {
  NameMap<Element> derived;
  CollectDerivedFields(fDocument.root.Child("TransformationDictionary"), derived);
  for (const MiningField& field : fSchema.fields) {
    if (IsDataField(field.name)) continue;
    if (derived.count(field.name) == 0) throw field.element.AttributeError("name", "isn't in the data dictionary");
    if (HasTreatment(field)) {
      throw field.element.AttributeError("name", "is a derived field, whose values can't be treated here");
    }
  }
}

const Field& FieldScope::Resolve(std::string_view name, const Element& referrer) {
  const auto known = fResolved.find(name);
  if (known != fResolved.end()) return known->second;
  Field field = ResolveNew(name, referrer);
  return fResolved.emplace(name, std::move(field)).first->second;
}

const Field& FieldScope::ResolveNumeric(std::string_view name, const Element& referrer) {
  const Field& field = Resolve(name, referrer);
  if (KelTransformNS::IsText(field.dataType)) {
    throw referrer.Error("needs numbers, but field " + Quoted(name) + " holds texts");
  }
  return field;
}

Field FieldScope::ResolveNew(std::string_view name, const Element& referrer) {
  const ResolvedField& resolved = fCompiler.Resolve(name, referrer);
  const auto input = fInputsBySlot.find(resolved.slot);
  if (input == fInputsBySlot.end()) fDerivedSlots.push_back(resolved.slot);
  Field field{resolved.slot, resolved.dataType, resolved.opType, resolved.values};
  if (field.opType == OpType::kOrdinal && field.order.empty() && input != fInputsBySlot.end() && input->second) {
    field.order = ValuesInOrder(*input->second);
  }
  return field;
}

void FieldScope::AddOutput(const ResolvedField& field) {
  fOutputs.insert_or_assign(field.name, field);
  if (fSchema.Find(field.name) == nullptr) fCompiler.ForgetInput(field.name);
}

std::optional<ResolvedField> FieldScope::FindInEnsemble(std::string_view name) {
  const MiningField* const field = fSchema.Find(name);
  const auto output = fOutputs.find(name);
  if (field == nullptr && output != fOutputs.end()) return output->second;
  std::optional<ResolvedField> outer = fOuter->FindForSegment(name, fSeesAll || field != nullptr);
  if (outer && field != nullptr) return AddSegmentInput(*field, *outer);
  if (outer) {
    ShareInput(outer->slot);
    return outer;
  }
  return output == fOutputs.end() ? std::nullopt : std::optional(output->second);
}

// A field that isn't treated again has the values, and the order of them, that it has in the ensemble.
void FieldScope::ShareInput(std::uint32_t slot) {
  const auto input = fOuter->fInputsBySlot.find(slot);
  if (input != fOuter->fInputsBySlot.end()) fInputsBySlot.insert(*input);
}

// A segment doesn't see data fields that its schema doesn't list.
std::optional<ResolvedField> FieldScope::FindForSegment(std::string_view name, bool isListed) {
  if (!isListed && IsDataField(name)) return std::nullopt;
  const ResolvedField* const field = fCompiler.Find(name, Element());
  return field == nullptr ? std::nullopt : std::optional(*field);
}

ResolvedField FieldScope::AddSegmentInput(const MiningField& field, ResolvedField outer) {
  outer.opType = field.opType.value_or(outer.opType);
  if (!TreatsAgain(field)) {
    ShareInput(outer.slot);
    return outer;
  }
  const auto input = fOuter->fInputsBySlot.find(outer.slot);
  const FieldDeclaration* const declaration = input == fOuter->fInputsBySlot.end() ? nullptr : input->second;
  const std::uint32_t slot = fCompiler.NewSlot();
  fSegmentInputs.push_back({outer.slot, slot,
                            declaration == nullptr ? FieldTreatment(outer.dataType, field, fDocument.pool)
                                                   : FieldTreatment(*declaration, field, fDocument.pool)});
  if (declaration != nullptr) outer.values = ValuesInOrder(*declaration);
  outer.slot = slot;
  return outer;
}

std::optional<ResolvedField> FieldScope::FindInput(std::string_view name) {
  if (std::optional<ResolvedField> derived = AddDerivedInput(name)) return derived;
  const MiningField* field = fSchema.Find(name);
  if (field != nullptr && IsDataField(name)) return AddInput(*field);
  const auto output = fOutputs.find(name);
  if (output != fOutputs.end()) return output->second;
  return std::nullopt;
}

ResolvedField FieldScope::AddInput(const MiningField& field) {
  const FieldDeclaration& declaration = *fDocument.dictionary.Find(field.name);
  const std::uint32_t slot = fCompiler.NewSlot();
  fInputs.emplace_back(field.name, FieldTreatment(declaration, field, fDocument.pool), slot);
  fInputs.back().isTarget = field.usage == FieldUsage::kTarget;
  fInputNames.insert(field.name);
  fInputsBySlot.emplace(slot, &declaration);
  return {field.name, declaration.dataType, field.opType.value_or(declaration.opType), slot};
}

// The values of a field, joined where the record is read. A composite value is none to be read as it stands, so that it
// must not make the record invalid where nothing else refers to the field.
std::optional<ResolvedField> FieldScope::FindGroup(std::string_view name, KelTransformNS::GroupFunction function) {
  const MiningField* const field = fSchema.Find(name);
  if (fOuter != nullptr) {
    const bool isOfEnsemble = field == nullptr ? fSeesAll : !TreatsAgain(*field);
    return isOfEnsemble ? fOuter->FindGroup(name, function) : std::nullopt;
  }
  if (field == nullptr || !IsDataField(name)) return std::nullopt;
  const auto [group, isNew] = fGroups.try_emplace({field->name, function});
  if (!isNew) return group->second;
  const FieldDeclaration& declaration = *fDocument.dictionary.Find(name);
  group->second = {field->name, declaration.dataType, declaration.opType, fCompiler.NewSlot()};
  fInputs.emplace_back(field->name, FieldTreatment(declaration, *field, fDocument.pool), group->second.slot, function);
  fInputNames.insert(field->name);
  return group->second;
}

std::optional<ResolvedField> FieldScope::AddDerivedInput(std::string_view name) {
  const auto found = fDerivedInRecord.find(name);
  if (found == fDerivedInRecord.end()) return std::nullopt;
  ResolvedField field = found->second;
  field.slot = fCompiler.NewSlot();
  fInputs.emplace_back(field.name, FieldTreatment(field.dataType), field.slot);
  fInputs.back().mustBeInRecord = true;
  fInputsBySlot.emplace(field.slot, nullptr);
  return field;
}

std::optional<std::uint32_t> FieldScope::AddSegmentOutput(const ResolvedField& field) {
  const auto [known, isNew] = fSegmentOutputPositions.emplace(field.name, fSegmentOutputs.size());
  if (!isNew) {
    const ResolvedField& output = fSegmentOutputs[known->second];
    return output.dataType == field.dataType ? std::optional(output.slot) : std::nullopt;
  }
  ResolvedField& output = fSegmentOutputs.emplace_back(field);
  output.slot = NewSegmentSlot();
  fOutputs.emplace(output.name, output);
  return output.slot;
}

std::uint32_t FieldScope::AddAnswer(const ResolvedField& field) {
  ResolvedField& answer = fAnswers[field.name] = field;
  answer.slot = NewSegmentSlot();
  return answer.slot;
}

const ResolvedField* FieldScope::FindAnswer(std::string_view name) const {
  const auto found = fAnswers.find(name);
  return found == fAnswers.end() ? nullptr : &found->second;
}

std::uint32_t FieldScope::NewSegmentSlot() { return fSegmentSlots.emplace_back(fCompiler.NewSlot()); }

// An invalid value of an active field makes the result invalid even if nothing refers to the field.
std::vector<InputField> FieldScope::TakeInputs() {
  for (const MiningField& field : fSchema.fields) {
    const bool canSpoil = field.invalidTreatment == InvalidTreatment::kReturnInvalid || field.missingReturnsInvalid;
    const bool isDeclared = IsDataField(field.name);
    if (field.usage == FieldUsage::kActive && canSpoil && isDeclared && fInputNames.count(field.name) == 0) {
      (void)AddInput(field);
    }
  }
  return std::move(fInputs);
}

}  // namespace Torvane
