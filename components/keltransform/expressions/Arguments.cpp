#include "components/keltransform/expressions/Arguments.h"

#include <algorithm>
#include <string>

namespace KelTransformNS {

namespace {

bool IsPlain(DataType type) { return type <= DataType::kBoolean && !IsText(type); }

bool CountsDays(DataType type) {
  return type == DataType::kDate || (type >= DataType::kDateDaysSince0 && type <= DataType::kDateDaysSince1980);
}

// What a value counts as in arithmetic.
DataType NumericType(DataType type) {
  if (type == DataType::kBoolean || CountsDays(type)) return DataType::kInteger;
  return IsPlain(type) ? type : DataType::kDouble;
}

// Of two numeric types: double takes all, float takes integers, integers take booleans.
DataType Wider(DataType left, DataType right) {
  const auto isOneOf = [=](DataType type) { return left == type || right == type; };
  for (const DataType type : {DataType::kDouble, DataType::kFloat, DataType::kInteger}) {
    if (isOneOf(type)) return type;
  }
  return left;
}

DataType WidestNumber(const std::vector<Argument>& arguments) {
  DataType widest = DataType::kInteger;
  for (const Argument& argument : arguments) widest = Wider(widest, NumericType(argument.value.type));
  return widest;
}

// The type that holds values of both: a text if one of them is one, a date or time before plain numbers.
DataType Common(DataType left, DataType right) {
  if (left == right) return left;
  if (IsText(left) || IsText(right)) return DataType::kString;
  if (IsPlain(left)) return IsPlain(right) ? Wider(left, right) : right;
  return left;
}

// A constant without a type of its own is read as one of the type that stands beside it, as the literal of a predicate
// is. If it is no value of that type, it stays what it looks like: an integer may be compared with 1.5.
void Close(Argument& argument, DataType type, CodeBuilder& code) {
  argument.isOpen = false;
  if (const auto constant = FindConstantOf(argument.element, type, code)) argument.value = *constant;
}

class Unifier {
 public:
  Unifier(const Function& function, std::vector<Argument>& arguments, CodeBuilder& code) : fCode(code) {
    for (std::size_t index = 0; index < arguments.size(); ++index) {
      if (function.WantOf(index) == Want::kAlike) fArguments.push_back(&arguments[index]);
    }
  }

  void Run() {
    CloseConstants();
    DataType common = fArguments.front()->value.type;
    for (const Argument* const argument : fArguments) common = Common(common, argument->value.type);
    for (Argument* const argument : fArguments) {
      argument->value = fCode.Converted(argument->value, common, argument->element);
    }
  }

 private:
  void CloseConstants() {
    const auto isTyped = [](const Argument* argument) { return !argument->isOpen; };
    const auto typed = std::find_if(fArguments.begin(), fArguments.end(), isTyped);
    if (typed == fArguments.end()) return;
    for (Argument* const argument : fArguments) {
      if (argument->isOpen) Close(*argument, (*typed)->value.type, fCode);
    }
  }

  std::vector<Argument*> fArguments;
  CodeBuilder& fCode;
};

void RequireMoment(const Argument& argument) {
  if (IsPlain(argument.value.type)) {
    throw argument.element.Error("the function takes a date or time here, not a value of the type " +
                                 std::string(DataTypeName(argument.value.type)));
  }
}

CompiledValue ConvertedMoment(const Argument& argument, DataType type, CodeBuilder& code) {
  RequireMoment(argument);
  return code.Converted(argument.value, type, argument.element);
}

CompiledValue ConvertedAsWanted(Want want, const Argument& argument, CodeBuilder& code) {
  const bool isText = IsText(argument.value.type);
  switch (want) {
    case Want::kNumber:
      return isText ? code.Converted(argument.value, DataType::kDouble, argument.element) : argument.value;
    case Want::kBoolean:
      return code.Converted(argument.value, DataType::kBoolean, argument.element);
    case Want::kText:
      return code.Converted(argument.value, DataType::kString, argument.element);
    case Want::kDay:
      return ConvertedMoment(argument, DataType::kDate, code);
    case Want::kMoment:
      return ConvertedMoment(argument, DataType::kDateTime, code);
    case Want::kTimeOfDay:
      return ConvertedMoment(argument, DataType::kTime, code);
    default:
      return argument.value;
  }
}

DataType QuotientType(DataType widest) { return widest == DataType::kInteger ? DataType::kDouble : widest; }

}  // namespace

void ConvertArguments(const Function& function, std::vector<Argument>& arguments, CodeBuilder& code) {
  for (std::size_t index = 0; index < arguments.size(); ++index) {
    arguments[index].value = ConvertedAsWanted(function.WantOf(index), arguments[index], code);
  }
  if (function.WantOf(arguments.size() - 1) == Want::kAlike) Unifier(function, arguments, code).Run();
}

DataType ResultType(const Function& function, const std::vector<Argument>& arguments) {
  switch (function.yields) {
    case Yields::kBoolean:
      return DataType::kBoolean;
    case Yields::kInteger:
      return DataType::kInteger;
    case Yields::kText:
      return DataType::kString;
    case Yields::kWidest:
      return WidestNumber(arguments);
    case Yields::kReal:
    case Yields::kQuotient:
      return QuotientType(WidestNumber(arguments));
    case Yields::kAlike:
      return arguments.back().value.type;
    default:
      return DataType::kDouble;
  }
}

}  // namespace KelTransformNS
