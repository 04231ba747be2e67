#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "components/keltransform/Code.h"
#include "components/keltransform/MadeTexts.h"
#include "components/keltransform/NumberText.h"
#include "components/keltransform/Operands.h"

namespace KelTransformNS {

// A function of numbers gives NaN where it has no value: a division by zero, the logarithm of a negative number. What
// is too large for a double is infinite and goes on as such: exp(1000) in 1 / (1 + exp(x)) is no mistake.

using UnaryFunction = double (*)(double);
using BinaryFunction = double (*)(double, double);
using TernaryFunction = double (*)(double, double, double);

/// The text of a text cell. That of a number which came into a text field is written into `buffer`.
[[nodiscard]] inline std::string_view TextOf(const Cell& cell, NumberBuffer& buffer) noexcept {
  return cell.text != nullptr ? std::string_view(*cell.text) : ShortestText(cell.number, buffer);
}

/// The arguments of a text function. None is missing or invalid; each is a number or a text, as the table says.
class TextArguments {
 public:
  explicit TextArguments(const Operands& operands) noexcept : fOperands(operands) {}

  [[nodiscard]] std::size_t Count() const noexcept { return fOperands.Count(); }
  [[nodiscard]] double Number(std::size_t index) const noexcept { return fOperands[index].number; }
  [[nodiscard]] std::string_view Text(std::size_t index, NumberBuffer& buffer) const noexcept {
    return TextOf(fOperands[index], buffer);
  }

 private:
  const Operands& fOperands;
};

/// Writes the result; false if the function has no value for these arguments.
using TextFunction = bool (*)(const TextArguments& arguments, TextSink& result);
/// A number that a text has.
using TextMeasure = double (*)(std::string_view text);

/// What a function takes an argument for.
enum class Want : std::uint8_t {
  kAny,        ///< as it comes
  kNumber,     ///< a text is read as a number, a date or time counts as its number
  kBoolean,    ///< converted
  kText,       ///< converted
  kDay,        ///< a date, or a text of one, in days since 1970
  kMoment,     ///< a date or a date with time, in seconds since 1970
  kTimeOfDay,  ///< a time or a date with time, in seconds of the day
  kAlike,      ///< all such arguments are brought to one type
};

/// The type of a function's result.
enum class Yields : std::uint8_t {
  kBoolean,
  kInteger,
  kDouble,
  kText,
  kWidest,    ///< the widest of the numeric arguments: double, float, integer
  kReal,      ///< the same, but double instead of integer
  kQuotient,  ///< that of a division
  kAlike,     ///< the type that the arguments were brought to
};

/// One row of the table of functions. An implementation of numbers is called with numbers only: before it, a missing
/// argument makes the result missing, and an invalid one makes it invalid.
struct Function {
  std::string_view name;
  std::uint32_t minArguments;
  std::uint32_t maxArguments;
  std::array<Want, 3> wants;  ///< of the arguments in their order; the last one is that of all further ones
  Yields yields;
  OpCode operation;
  std::uint32_t detail = 0;  ///< what else the operation needs, as `OpCode` says
  UnaryFunction unary = nullptr;
  BinaryFunction binary = nullptr;
  TernaryFunction ternary = nullptr;
  TextFunction text = nullptr;
  TextMeasure measure = nullptr;

  [[nodiscard]] Want WantOf(std::size_t argument) const noexcept {
    return wants[argument < wants.size() ? argument : wants.size() - 1];
  }
};

/// All functions. An instruction refers to them by their place.
[[nodiscard]] std::span<const Function> AllFunctions() noexcept;
/// The function of a name; null if there is none. A function of a later version is known with the prefix "x-", too,
/// under which producers wrote it before.
[[nodiscard]] const Function* FindFunction(std::string_view name) noexcept;

}  // namespace KelTransformNS
