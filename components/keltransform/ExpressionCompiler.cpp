#include "components/keltransform/ExpressionCompiler.h"

#include <map>
#include <utility>

#include "components/keltransform/Attributes.h"
#include "components/keltransform/CodeBuilder.h"
#include "components/keltransform/DeclaredFields.h"
#include "components/keltransform/expressions/Expressions.h"

namespace KelTransformNS {

using KelXML_1_3::Element;
using KelXML_1_3::PmmlError;

namespace {

// A field on the way to the one that is wanted, and how many of its references have been looked at.
struct Visit {
  DeclaredField* field;
  std::vector<std::string_view> references;
  std::size_t next = 0;
};

// The fields from the wanted one down to the one at hand. What is still on it when an error ends the walk can be
// compiled another time.
class Path {
 public:
  Path() = default;
  Path(const Path&) = delete;
  Path& operator=(const Path&) = delete;
  ~Path() {
    for (const Visit& visit : fVisits) visit.field->state = DeclaredField::kNew;
  }

  [[nodiscard]] bool IsEmpty() const noexcept { return fVisits.empty(); }
  [[nodiscard]] Visit& Last() noexcept { return fVisits.back(); }

  void Push(DeclaredField& field, std::vector<std::string_view> references) {
    fVisits.push_back({&field, std::move(references)});
    field.state = DeclaredField::kOnPath;
  }

  void PopCompiled() noexcept {
    fVisits.back().field->state = DeclaredField::kCompiled;
    fVisits.pop_back();
  }

  // The names from `field` to the end of the path and back to it.
  [[nodiscard]] std::string DescribeCycle(const DeclaredField& field) const {
    std::string names;
    for (const Visit& visit : fVisits) {
      if (names.empty() && visit.field != &field) continue;
      names += Quoted(visit.field->name) + " -> ";
    }
    return names + Quoted(field.name);
  }

 private:
  std::vector<Visit> fVisits;
};

// Only what a record holds can be missing or invalid by its value; a derived field is calculated.
std::vector<std::string> ReadOrdinalValues(const Element& derivedField) {
  std::vector<std::string> values;
  for (Element child = derivedField.Child("Value"); child; child = child.Next("Value")) {
    RefuseUnknownChildren(child, {});
    if (child.Attribute("property").value_or("valid") != "valid") {
      throw child.AttributeError("property", "has no meaning in a derived field");
    }
    values.emplace_back(child.Required("value"));
  }
  return values;
}

}  // namespace

Element FindExpression(const Element& parent) {
  Element child = parent.FirstChild();
  while (child && !IsExpression(child.Name())) child = child.NextSibling();
  return child;
}

Element RequiredExpression(const Element& parent, std::initializer_list<std::string_view> beside) {
  RefuseUnknownBesideExpressions(parent, beside);
  const Element expression = FindExpression(parent);
  if (!expression) throw parent.Error("it has no expression that is known");
  for (Element other = expression.NextSibling(); other; other = other.NextSibling()) {
    if (IsExpression(other.Name())) {
      throw other.Error("the <" + std::string(parent.Name()) + "> has another expression already");
    }
  }
  return expression;
}

Element ExpressionOf(const Element& derivedField) {
  (void)ReadOrdinalValues(derivedField);
  return RequiredExpression(derivedField, {"Value"});
}

struct ExpressionCompiler::Impl {
  Impl(TextPool& pool, SlotCounter* shared, InputLookup lookup)
      : code(pool, shared != nullptr ? *shared : ownSlots), inputLookup(std::move(lookup)) {}

  const ResolvedField* Find(std::string_view name, std::size_t dictionaries);
  const ResolvedField* FindInput(std::string_view name);
  CompiledValue FindGroup(std::string_view name, GroupFunction function, const Element& referrer,
                          std::size_t dictionaries);
  const ResolvedField& Compiled(DeclaredField& field);
  DeclaredField* NextToCompile(Visit& visit, const Path& path);
  void CompileDerivedField(DeclaredField& field);
  CompiledValue Compile(const Element& expression, std::optional<DataType> type, std::size_t dictionaries);

  SlotCounter ownSlots;  // where no other counter is given
  CodeBuilder code;
  DeclaredFields declared;
  FunctionScope functions;
  InputLookup inputLookup;
  GroupLookup groupLookup;
  std::map<std::pair<std::string, GroupFunction>, ResolvedField> groups;
  std::unordered_map<std::string, ResolvedField, NameHash, std::equal_to<>> inputs;
};

const ResolvedField* ExpressionCompiler::Impl::Find(std::string_view name, std::size_t dictionaries) {
  DeclaredField* const derived = declared.Find(name, dictionaries);
  return derived != nullptr ? &Compiled(*derived) : FindInput(name);
}

const ResolvedField* ExpressionCompiler::Impl::FindInput(std::string_view name) {
  const auto known = inputs.find(name);
  if (known != inputs.end()) return &known->second;
  std::optional<ResolvedField> found = inputLookup(name);
  return found ? &inputs.emplace(name, *std::move(found)).first->second : nullptr;
}

CompiledValue ExpressionCompiler::Impl::FindGroup(std::string_view name, GroupFunction function,
                                                  const Element& referrer, std::size_t dictionaries) {
  if (declared.Find(name, dictionaries) != nullptr) {
    throw referrer.AttributeError("field", "is a derived field, which has one value only");
  }
  const std::pair key(std::string(name), function);
  auto found = groups.find(key);
  if (found == groups.end()) {
    const auto group = groupLookup ? groupLookup(name, function) : std::nullopt;
    if (!group) throw referrer.AttributeError("field", "there is no such field whose values could be aggregated");
    found = groups.emplace(key, *group).first;
  }
  return {Operand::Slot(found->second.slot), found->second.dataType};
}

// Depth first over the references, with a path of our own instead of recursion: a document may chain more fields than
// a thread's stack has room for.
const ResolvedField& ExpressionCompiler::Impl::Compiled(DeclaredField& wanted) {
  Path path;
  if (wanted.state == DeclaredField::kNew) path.Push(wanted, CollectReferences(wanted.element));
  while (!path.IsEmpty()) {
    if (DeclaredField* const next = NextToCompile(path.Last(), path)) {
      path.Push(*next, CollectReferences(next->element));
    } else {
      CompileDerivedField(*path.Last().field);
      path.PopCompiled();
    }
  }
  return *wanted.resolved;
}

// The next derived field that must be compiled before the visited one; null if there is none any more.
DeclaredField* ExpressionCompiler::Impl::NextToCompile(Visit& visit, const Path& path) {
  while (visit.next < visit.references.size()) {
    const std::string_view name = visit.references[visit.next++];
    DeclaredField* const field = declared.Find(name, visit.field->visibleDictionaries);
    if (field == nullptr || field->state == DeclaredField::kCompiled) continue;
    if (field->state == DeclaredField::kNew) return field;
    throw visit.field->element.AttributeError("name", "depends on itself: " + path.DescribeCycle(*field));
  }
  return nullptr;
}

void ExpressionCompiler::Impl::CompileDerivedField(DeclaredField& field) {
  try {
    const Element expression = ExpressionOf(field.element);
    const std::optional<OpType> opType = ReadOpType(field.element);
    const CompiledValue value = Compile(expression, ReadDataType(field.element), field.visibleDictionaries);
    field.resolved = ResolvedField{field.name, value.type, opType.value_or(ImpliedOpType(value.type)),
                                   code.SlotOf(value), ReadOrdinalValues(field.element)};
  } catch (const PmmlError& error) {
    throw PmmlError(error.what() + (" (derived field " + Quoted(field.name) + ')'));
  }
}

CompiledValue ExpressionCompiler::Impl::Compile(const Element& expression, std::optional<DataType> type,
                                                std::size_t dictionaries) {
  const auto findField = [this, dictionaries](std::string_view name, const Element& referrer) -> CompiledValue {
    const ResolvedField* const field = Find(name, dictionaries);
    if (field == nullptr) throw referrer.AttributeError(FieldAttribute(referrer), "there is no such field");
    return {Operand::Slot(field->slot), field->dataType};
  };
  const auto findGroup = [this, dictionaries](std::string_view name, GroupFunction function, const Element& referrer) {
    return FindGroup(name, function, referrer, dictionaries);
  };
  ExpressionContext context{code, functions, dictionaries, findField, findGroup, type};
  const CompiledValue value = CompileAnyExpression(expression, context);
  return type ? code.Converted(value, *type, expression) : value;
}

ExpressionCompiler::ExpressionCompiler(TextPool& pool, InputLookup inputs)
    : fImpl(std::make_unique<Impl>(pool, nullptr, std::move(inputs))) {}

ExpressionCompiler::ExpressionCompiler(TextPool& pool, SlotCounter& slots, InputLookup inputs)
    : fImpl(std::make_unique<Impl>(pool, &slots, std::move(inputs))) {}

ExpressionCompiler::~ExpressionCompiler() = default;

void ExpressionCompiler::DeclareDerivedFields(const Element& dictionary) {
  if (!dictionary) return;
  DeclaredFunctions::Scope functions = fImpl->functions.declared.Read(dictionary);
  fImpl->declared.Declare(dictionary);
  fImpl->functions.declared.Declare(std::move(functions));
}

void ExpressionCompiler::DeclareFunctions(const Element& dictionary) {
  if (!dictionary) return;
  DeclaredFunctions::Scope functions = fImpl->functions.declared.Read(dictionary);
  fImpl->declared.Declare(Element());
  fImpl->functions.declared.Declare(std::move(functions));
}

std::vector<std::string> ExpressionCompiler::DerivedFieldNames() const {
  std::vector<std::string> names;
  for (const DeclaredField& field : fImpl->declared.All()) names.push_back(field.name);
  return names;
}

std::uint32_t ExpressionCompiler::NewSlot() { return fImpl->code.Slots().NewSlot(); }

std::uint32_t ExpressionCompiler::SlotCount() const noexcept { return fImpl->code.Slots().Count(); }

const ResolvedField& ExpressionCompiler::Resolve(std::string_view name, const Element& referrer) {
  const ResolvedField* const field = Find(name, referrer);
  if (field == nullptr) throw referrer.Error("there is no field " + Quoted(name));
  return *field;
}

const ResolvedField* ExpressionCompiler::Find(std::string_view name, const Element& /*referrer*/) {
  return fImpl->Find(name, fImpl->declared.DictionaryCount());
}

ResolvedField ExpressionCompiler::CompileExpression(const Element& expression, std::optional<DataType> dataType) {
  const CompiledValue value = fImpl->Compile(expression, dataType, fImpl->declared.DictionaryCount());
  return {{}, value.type, ImpliedOpType(value.type), fImpl->code.SlotOf(value)};
}

Program ExpressionCompiler::Finish() { return fImpl->code.Finish(); }

void ExpressionCompiler::SetMapsMissingResults(bool mapsMissingResults) noexcept {
  fImpl->functions.mapsMissingResults = mapsMissingResults;
}

void ExpressionCompiler::SetGroups(GroupLookup groups) { fImpl->groupLookup = std::move(groups); }

void ExpressionCompiler::ForgetInput(std::string_view name) {
  const auto known = fImpl->inputs.find(name);
  if (known != fImpl->inputs.end()) fImpl->inputs.erase(known);
}

void ExpressionCompiler::Withdraw(std::string_view name) { fImpl->declared.Withdraw(name); }

}  // namespace KelTransformNS
