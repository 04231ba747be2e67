#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "components/keltransform/expressions/NormContinuousTable.h"
#include "plugins/torvane/fields/FieldScope.h"
#include "plugins/torvane/targets/Target.h"

namespace Torvane {

/// Reads the derived fields of neural outputs, which say how a neuron's number comes from the target, and so stand
/// there backwards.
class NeuralTarget {
 public:
  /// What a chain of derived fields does with the target, the last step first.
  struct Chain {
    std::vector<Element> normContinuous;
    Element normDiscrete;            // none if no step tells a category
    bool isOfAnotherTarget = false;  // of the model, which is read on its own
  };

  NeuralTarget(const Element& model, const FieldScope& scope, const Target& target);

  /// The steps from the target to the derived field of a "NeuralOutput". Throws `PmmlError` for a step that can't be
  /// turned back and for a field that is no target.
  Chain Follow(Element derivedField);

  /// Adds the inverse of a "NormContinuous" to a table.
  static void AddInverse(const Element& normContinuous, KelTransformNS::NormContinuousTable& table);

 private:
  bool IsTarget(std::string_view field);
  [[nodiscard]] bool IsAnotherTarget(std::string_view field) const;
  void Declare(const Element& dictionary);

  const MiningSchema& fSchema;
  std::string fTargetName;          // empty until an output names it, if nothing else does
  NameMap<Element> fDerivedFields;  // those of the model before those of the document
};

}  // namespace Torvane
