#pragma once

#include <vector>

#include "components/keltransform/expressions/Expressions.h"
#include "components/keltransform/functions/Function.h"

namespace KelTransformNS {

/// An argument of a function, compiled.
struct Argument {
  KelXML_1_3::Element element;
  CompiledValue value;
  bool isOpen;  ///< a constant that nothing has given a type yet: its value is of the type that it looks like
};

/// Brings the arguments of a function to what it wants of each. Throws an error about the argument that can't be.
void ConvertArguments(const Function& function, std::vector<Argument>& arguments, CodeBuilder& code);
/// The type of the function's result for converted arguments.
[[nodiscard]] DataType ResultType(const Function& function, const std::vector<Argument>& arguments);

}  // namespace KelTransformNS
