#include "components/keltransform/TransformStage.h"

#include <optional>
#include <string_view>
#include <utility>

namespace KelTransformNS {

using KelCommon_1_3::FieldKey;
using KelXML_1_3::Element;

namespace {

class StageBuilder {
 public:
  StageBuilder(const TransformStages& earlier, const Element& dataDictionary, std::string_view version, TextPool& pool)
      : fEarlier(earlier),
        fPool(pool),
        fStage(std::make_unique<TransformStage>()),
        fCompiler(pool, [this](std::string_view name) { return FindInput(name); }) {
    fCompiler.SetMapsMissingResults(version.starts_with("4.1"));
    fCompiler.SetGroups([this](std::string_view name, GroupFunction function) { return FindGroup(name, function); });
    fStage->data = DataDictionary(dataDictionary);
    const std::uint32_t usedSlots = earlier.empty() ? 0 : earlier.back()->slotCount;
    while (fCompiler.SlotCount() < usedSlots) (void)fCompiler.NewSlot();
  }

  void AddDerivedFields(const Element& transformations) {
    fCompiler.DeclareDerivedFields(transformations);
    const std::string_view kind = "DerivedField";
    for (Element child = transformations.Child(kind); child; child = child.Next(kind)) AddDerivedField(child);
  }

  std::unique_ptr<const TransformStage> Finish() {
    fStage->program = fCompiler.Finish();
    fStage->slotCount = fCompiler.SlotCount();
    return std::move(fStage);
  }

 private:
  // A record holds one value of a name, which can't be both what is computed and what it is computed from.
  void AddDerivedField(const Element& element) {
    const std::string name(element.Required("name"));
    if (FindDeclaration(name) != nullptr) throw element.AttributeError("name", "is the name of a data field as well");
    if (FindEarlierField(name) != nullptr) throw element.AttributeError("name", "is the name of another derived field");
    const ResolvedField& field = fCompiler.Resolve(name, element);
    fStage->derived.push_back({FieldKey(name), field.dataType, field.slot});
    fStage->fields.emplace(name, field);
  }

  // What the compiler sees beside the derived fields of this stage.
  std::optional<ResolvedField> FindInput(std::string_view name) {
    if (const ResolvedField* const field = FindEarlierField(name)) return *field;
    const FieldDeclaration* const declaration = FindDeclaration(name);
    if (declaration == nullptr) return std::nullopt;
    const ResolvedField field{declaration->name, declaration->dataType, declaration->opType, fCompiler.NewSlot()};
    fStage->inputs.emplace_back(*declaration, field.slot, fPool);
    fStage->fields.emplace(field.name, field);
    return field;
  }

  // The values of a data field, joined where the record is read.
  std::optional<ResolvedField> FindGroup(std::string_view name, GroupFunction function) {
    const FieldDeclaration* const declaration = FindDeclaration(name);
    if (declaration == nullptr) return std::nullopt;
    const std::uint32_t slot = fCompiler.NewSlot();
    fStage->inputs.emplace_back(*declaration, slot, fPool, function);
    return ResolvedField{declaration->name, declaration->dataType, declaration->opType, slot};
  }

  [[nodiscard]] const ResolvedField* FindEarlierField(std::string_view name) const {
    for (const auto& stage : fEarlier) {
      const auto found = stage->fields.find(name);
      if (found != stage->fields.end()) return &found->second;
    }
    return nullptr;
  }

  // The first declaration counts where texts declare a field again.
  [[nodiscard]] const FieldDeclaration* FindDeclaration(std::string_view name) const {
    for (const auto& stage : fEarlier) {
      if (const FieldDeclaration* const declaration = stage->data.Find(name)) return declaration;
    }
    return fStage->data.Find(name);
  }

  const TransformStages& fEarlier;
  TextPool& fPool;
  std::unique_ptr<TransformStage> fStage;
  ExpressionCompiler fCompiler;
};

}  // namespace

std::unique_ptr<const TransformStage> BuildStage(const TransformStages& earlier, const Element& dataDictionary,
                                                 const Element& transformations, std::string_view version,
                                                 TextPool& pool) {
  StageBuilder builder(earlier, dataDictionary, version, pool);
  builder.AddDerivedFields(transformations);
  return builder.Finish();
}

}  // namespace KelTransformNS
