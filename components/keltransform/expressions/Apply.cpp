#include <array>
#include <deque>
#include <string>
#include <unordered_set>

#include "components/keltransform/Attributes.h"
#include "components/keltransform/expressions/Arguments.h"
#include "components/keltransform/expressions/Expressions.h"
#include "components/keltransform/expressions/Patterns.h"

namespace KelTransformNS {

using KelXML_1_3::Element;

namespace {

// The functions of a document are compiled anew at each call. A few lines can make calls of calls grow without end, so
// what is compiled inside of functions is bounded, for all expressions of the document together.
constexpr std::size_t kMaxInlinedElements = 500000;

enum class InvalidTreatment { kReturnInvalid, kAsIs, kAsMissing };
constexpr std::array<std::string_view, 3> kInvalidTreatments = {"returnInvalid", "asIs", "asMissing"};

// A call that is being compiled: of a function of the standard or of one of the document.
struct Call {
  Element element;
  const Function* builtIn;
  const DeclaredFunction* declared;
  Call* within;                    // the call in whose function's body this one stands; null outside of functions
  std::optional<DataType> wanted;  // the type that the result will be converted to, if it is known
  Element next = {};               // the next argument to compile
  std::vector<Argument> arguments = {};
  bool isInBody = false;  // of `declared`, whose parameters have the values of the arguments
  std::optional<CompiledValue> bodyValue = std::nullopt;
};

bool IsIgnorable(const Element& element) { return element.Is("Extension") || element.Name().starts_with("X-"); }

Element SkipIgnorable(Element element) {
  while (element && IsIgnorable(element)) element = element.NextSibling();
  return element;
}

std::size_t CountArguments(const Element& apply) {
  std::size_t count = 0;
  for (Element child = SkipIgnorable(apply.FirstChild()); child; child = SkipIgnorable(child.NextSibling())) ++count;
  return count;
}

std::string Plural(std::size_t count) { return std::to_string(count) + (count == 1 ? " argument" : " arguments"); }

std::string DescribeArity(std::size_t minimum, std::size_t maximum) {
  if (minimum == maximum) return Plural(minimum);
  if (maximum == minimum + 1) return std::to_string(minimum) + " or " + Plural(maximum);
  return "at least " + Plural(minimum);
}

void CheckArity(const Element& apply, std::size_t minimum, std::size_t maximum) {
  const std::size_t count = CountArguments(apply);
  if (count >= minimum && count <= maximum) return;
  throw apply.AttributeError("function", "takes " + DescribeArity(minimum, maximum) + ", not " + std::to_string(count));
}

// An element and all that is in it, which is what an expression without calls costs to compile.
std::size_t CountElements(const Element& root) {
  std::size_t count = 0;
  std::vector<Element> pending = {root};
  while (!pending.empty()) {
    const Element element = pending.back();
    pending.pop_back();
    ++count;
    for (Element child = element.FirstChild(); child; child = child.NextSibling()) pending.push_back(child);
  }
  return count;
}

// Compiles a tree of calls depth first, with a stack of its own: documents nest deeper than a thread's may be.
class CallCompiler {
 public:
  explicit CallCompiler(ExpressionContext& context) : fContext(context), fCode(context.code) {}

  CompiledValue Compile(const Element& apply) {
    Enter(apply, nullptr, fContext.wantedType);
    for (;;) {
      Call& call = fCalls.back();
      if (call.next) {
        CompileNextArgument(call);
      } else if (call.declared != nullptr && !call.isInBody) {
        EnterBody(call);
      } else {
        const Argument result{call.element, Finish(call), false};
        fCalls.pop_back();
        if (fCalls.empty()) return result.value;
        Deliver(result, fCalls.back());
      }
    }
  }

 private:
  void Enter(const Element& apply, Call* within, std::optional<DataType> wanted) {
    const std::string_view name = apply.Required("function");
    const std::size_t dictionaries = within != nullptr ? within->declared->visibleDictionaries : fContext.dictionaries;
    const DeclaredFunction* const declared = fContext.functions.declared.Find(name, dictionaries);
    const Function* const builtIn = declared == nullptr ? FindFunction(name) : nullptr;
    if (declared != nullptr) {
      CheckArity(apply, declared->parameters.size(), declared->parameters.size());
    } else if (builtIn != nullptr) {
      CheckArity(apply, builtIn->minArguments, builtIn->maxArguments);
    } else {
      throw apply.AttributeError("function", "there is no such function");
    }
    fCalls.push_back({apply, builtIn, declared, within, wanted, SkipIgnorable(apply.FirstChild())});
  }

  void CompileNextArgument(Call& call) {
    const Element element = call.next;
    call.next = SkipIgnorable(element.NextSibling());
    CompileInto(call, element, call.within, WantedType(call, call.arguments.size()));
  }

  // The type that an argument is known to be converted to. So constants keep their letters where a text is wanted.
  static std::optional<DataType> WantedType(const Call& call, std::size_t argument) {
    if (call.declared != nullptr) return call.declared->parameters[argument];
    const Want want = call.builtIn->WantOf(argument);
    if (want == Want::kText) return DataType::kString;
    if (want == Want::kBoolean) return DataType::kBoolean;
    return call.builtIn->operation == OpCode::kIf ? call.wanted : std::nullopt;
  }

  void EnterBody(Call& call) {
    const DeclaredFunction& function = *call.declared;
    if (!fOpenFunctions.insert(&function).second) {
      throw call.element.AttributeError("function", "calls itself: " + DescribeCycle(call));
    }
    for (std::size_t index = 0; index < call.arguments.size(); ++index) {
      Argument& argument = call.arguments[index];
      const std::optional<DataType> type = function.parameters[index];
      if (type) argument.value = fCode.Converted(argument.value, *type, argument.element);
    }
    call.isInBody = true;
    CompileInto(call, function.body, &call, function.type);
  }

  // The names from the outer call of the same function to this one.
  static std::string DescribeCycle(const Call& call) {
    std::string names = Quoted(call.declared->name);
    for (const Call* outer = call.within; outer != nullptr; outer = outer->within) {
      names.insert(0, Quoted(outer->declared->name) + " -> ");
      if (outer->declared == call.declared) break;
    }
    return names;
  }

  // Compiles an argument, or the body, of `receiver`. A call among them is only entered, and delivered when it is done.
  void CompileInto(Call& receiver, const Element& element, Call* within, std::optional<DataType> wanted) {
    if (within != nullptr) Charge(element);
    if (element.Is("Apply")) return Enter(element, within, wanted);
    ExpressionContext context{fCode, fContext.functions, fContext.dictionaries, FieldsOf(within), GroupsOf(within),
                              wanted};
    const bool isOpen = element.Is("Constant") && !wanted && !ReadDataType(element);
    Deliver({element, CompileAnyExpression(element, context), isOpen}, receiver);
  }

  ExpressionContext::FieldLookup FieldsOf(const Call* within) {
    if (within == nullptr) return fContext.findField;
    return [within](std::string_view name, const Element& referrer) -> CompiledValue {
      const auto parameter = within->declared->parameterByName.find(name);
      if (parameter != within->declared->parameterByName.end()) return within->arguments[parameter->second].value;
      throw referrer.AttributeError(FieldAttribute(referrer),
                                    "is no parameter of the function " + Quoted(within->declared->name));
    };
  }

  ExpressionContext::GroupLookup GroupsOf(const Call* within) {
    if (within == nullptr) return fContext.findGroup;
    return [](std::string_view, GroupFunction, const Element& referrer) -> CompiledValue {
      throw referrer.AttributeError("field", "is a parameter, which has one value only");
    };
  }

  void Charge(const Element& element) {
    std::size_t& spent = fContext.functions.inlinedElements;
    spent += element.Is("Apply") ? 1 : CountElements(element);
    if (spent > kMaxInlinedElements) {
      throw element.Error("the functions that call each other grow too large: more than " +
                          std::to_string(kMaxInlinedElements) + " elements");
    }
  }

  static void Deliver(const Argument& result, Call& call) {
    if (call.isInBody) {
      call.bodyValue = result.value;
    } else {
      call.arguments.push_back(result);
    }
  }

  CompiledValue Finish(Call& call) {
    const std::vector<Argument> given = call.arguments;
    const CompiledValue value = call.declared != nullptr ? FinishBody(call) : EmitFunction(call);
    return Treated(call.element, value, given);
  }

  CompiledValue FinishBody(const Call& call) {
    fOpenFunctions.erase(call.declared);
    const std::optional<DataType> type = call.declared->type;
    return type ? fCode.Converted(*call.bodyValue, *type, call.declared->body) : *call.bodyValue;
  }

  CompiledValue EmitFunction(Call& call) {
    const Function& function = *call.builtIn;
    ConvertArguments(function, call.arguments, fCode);
    CheckFormat(function, call.arguments, fCode);
    if (TakesRegularExpression(function)) return EmitPatternFunction(function, call.arguments, fCode);
    const CompiledValue value =
        fCode.Emit(function.operation, OperandsOf(call.arguments),
                   static_cast<std::uint32_t>(&function - AllFunctions().data()), ResultType(function, call.arguments));
    if (function.yields == Yields::kQuotient && IsWholeQuotient(call)) return Truncated(value);
    const bool isRounded = value.type != DataType::kFloat || function.yields == Yields::kAlike;
    return isRounded ? value : fCode.Emit(OpCode::kRoundToFloat, {value.operand}, 0, value.type);
  }

  // Integers are divided as real numbers, unless the result is declared as an integer: then the fraction is dropped.
  static bool IsWholeQuotient(const Call& call) {
    return call.wanted == DataType::kInteger && call.arguments[0].value.type == DataType::kInteger &&
           call.arguments[1].value.type == DataType::kInteger;
  }

  CompiledValue Truncated(const CompiledValue& value) {
    return fCode.Emit(OpCode::kTruncate, {value.operand}, 0, DataType::kInteger);
  }

  static std::vector<Operand> OperandsOf(const std::vector<Argument>& arguments) {
    std::vector<Operand> operands;
    operands.reserve(arguments.size());
    for (const Argument& argument : arguments) operands.push_back(argument.value.operand);
    return operands;
  }

  // What the attributes of a call say of invalid and missing values. Nothing can be passed on "asIs" where there is no
  // value, so that is the same as "returnInvalid".
  CompiledValue Treated(const Element& apply, CompiledValue value, const std::vector<Argument>& given) {
    const InvalidTreatment treatment =
        ReadEnum(apply, "invalidValueTreatment", kInvalidTreatments, InvalidTreatment::kReturnInvalid);
    const bool mapsResults = fContext.functions.mapsMissingResults;
    if (!mapsResults) value = ReplaceIfAnyMissing(apply, value, given);
    if (treatment == InvalidTreatment::kAsMissing) {
      value = fCode.Emit(OpCode::kInvalidToMissing, {value.operand}, 0, value.type);
    }
    value = ReplaceMissing(apply, "defaultValue", value);
    return mapsResults ? ReplaceMissing(apply, "mapMissingTo", value) : value;
  }

  CompiledValue ReplaceMissing(const Element& apply, std::string_view attribute, const CompiledValue& value) {
    if (!apply.Attribute(attribute)) return value;
    const CompiledValue literal = ReadReplacement(apply, attribute, value.type);
    return fCode.Emit(OpCode::kReplaceMissing, {value.operand, literal.operand}, 0, literal.type);
  }

  CompiledValue ReplaceIfAnyMissing(const Element& apply, const CompiledValue& value,
                                    const std::vector<Argument>& given) {
    if (!apply.Attribute("mapMissingTo")) return value;
    const CompiledValue literal = ReadReplacement(apply, "mapMissingTo", value.type);
    std::vector<Operand> operands = {value.operand, literal.operand};
    for (const Operand& operand : OperandsOf(given)) operands.push_back(operand);
    return fCode.Emit(OpCode::kReplaceIfAnyMissing, operands, 0, literal.type);
  }

  // A literal of the result's type. A fraction in the place of an integer makes the result a double.
  CompiledValue ReadReplacement(const Element& apply, std::string_view attribute, DataType type) {
    const Cell cell = ReadLiteral(apply.Required(attribute), type, fCode.Pool());
    if (cell.IsInvalid() && type == DataType::kInteger) return ReadReplacement(apply, attribute, DataType::kDouble);
    return fCode.Constant(ReadLiteralOf(apply, attribute, type, fCode.Pool()), type);
  }

  ExpressionContext& fContext;
  CodeBuilder& fCode;
  std::deque<Call> fCalls;  // from the outermost to the one at hand; they keep their addresses
  std::unordered_set<const DeclaredFunction*> fOpenFunctions;
};

}  // namespace

CompiledValue CompileApply(const Element& element, ExpressionContext& context) {
  return CallCompiler(context).Compile(element);
}

}  // namespace KelTransformNS
