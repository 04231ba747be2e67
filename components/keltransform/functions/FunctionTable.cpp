#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

#include "components/keltransform/functions/DateFunctions.h"
#include "components/keltransform/functions/Function.h"
#include "components/keltransform/functions/NumberFormat.h"
#include "components/keltransform/functions/Numbers.h"
#include "components/keltransform/functions/TextFunctions.h"

namespace KelTransformNS {
namespace {

constexpr std::uint32_t kAnyNumber = std::numeric_limits<std::uint32_t>::max();
constexpr std::array<Want, 3> kNumbers = {Want::kNumber, Want::kNumber, Want::kNumber};
constexpr std::array<Want, 3> kTexts = {Want::kText, Want::kText, Want::kText};
constexpr std::array<Want, 3> kBooleans = {Want::kBoolean, Want::kBoolean, Want::kBoolean};
constexpr std::array<Want, 3> kAlike = {Want::kAlike, Want::kAlike, Want::kAlike};
constexpr std::array<Want, 3> kAnything = {Want::kAny, Want::kAny, Want::kAny};

// One function of one number, and so on.
constexpr Function Unary(std::string_view name, Yields yields, UnaryFunction function) {
  Function row{name, 1, 1, kNumbers, yields, OpCode::kUnary};
  row.unary = function;
  return row;
}

constexpr Function Binary(std::string_view name, Yields yields, BinaryFunction function) {
  Function row{name, 2, 2, kNumbers, yields, OpCode::kBinary};
  row.binary = function;
  return row;
}

constexpr Function Ternary(std::string_view name, Yields yields, TernaryFunction function) {
  Function row{name, 3, 3, kNumbers, yields, OpCode::kTernary};
  row.ternary = function;
  return row;
}

// Numbers joined one after the other, those that are missing left out.
constexpr Function Aggregate(std::string_view name, BinaryFunction join) {
  Function row{name, 1, kAnyNumber, kNumbers, Yields::kWidest, OpCode::kAggregate};
  row.binary = join;
  return row;
}

constexpr Function OfDate(std::string_view name, Want want, BinaryFunction function) {
  Function row{name, 2, 2, {want, Want::kNumber, Want::kNumber}, Yields::kInteger, OpCode::kBinary};
  row.binary = function;
  return row;
}

// Whole seconds: the functions of dates count in integers.
constexpr Function SecondsOfTime(std::string_view name) {
  Function row{name, 1, 1, {Want::kTimeOfDay}, Yields::kInteger, OpCode::kUnary};
  row.unary = [](double seconds) { return std::floor(seconds); };
  return row;
}

constexpr Function TextMaker(std::string_view name, std::uint32_t minimum, std::uint32_t maximum,
                             std::array<Want, 3> wants, TextFunction function) {
  Function row{name, minimum, maximum, wants, Yields::kText, OpCode::kMakeText};
  row.text = function;
  return row;
}

constexpr Function Comparison(std::string_view name, std::uint32_t accepted) {
  return {name, 2, 2, kAlike, Yields::kBoolean, OpCode::kCompare, accepted};
}

constexpr Function StateTest(std::string_view name, std::uint32_t accepted) {
  return {name, 1, 1, kAnything, Yields::kBoolean, OpCode::kTestState, accepted};
}

constexpr Function Measure(std::string_view name, TextMeasure function) {
  Function row{name, 1, 1, kTexts, Yields::kInteger, OpCode::kMeasureText};
  row.measure = function;
  return row;
}

constexpr std::uint32_t Accept(std::initializer_list<Cell::State> states) {
  std::uint32_t accepted = 0;
  for (const Cell::State state : states) accepted |= 1U << state;
  return accepted;
}

constexpr Yields kWidest = Yields::kWidest;
constexpr Yields kReal = Yields::kReal;
constexpr Yields kInteger = Yields::kInteger;

double Sum(double left, double right) { return left + right; }
double Product(double left, double right) { return left * right; }
double Smaller(double left, double right) { return right < left ? right : left; }
double Larger(double left, double right) { return right > left ? right : left; }

// Functions of PMML 3.2 first, then those that each later version added.
const Function kFunctions[] = {
    {"+", 2, 2, kNumbers, kWidest, OpCode::kAdd},
    {"-", 2, 2, kNumbers, kWidest, OpCode::kSubtract},
    {"*", 2, 2, kNumbers, kWidest, OpCode::kMultiply},
    {"/", 2, 2, kNumbers, Yields::kQuotient, OpCode::kDivide},
    Aggregate("min", Smaller),
    Aggregate("max", Larger),
    Aggregate("sum", Sum),
    {"avg", 1, kAnyNumber, kNumbers, kReal, OpCode::kAverage},
    Unary("log10", kReal, CommonLogarithm),
    Unary("ln", kReal, NaturalLogarithm),
    Unary("sqrt", kReal, [](double x) { return std::sqrt(x); }),
    Unary("abs", kWidest, [](double x) { return std::fabs(x); }),
    Unary("exp", kReal, [](double x) { return std::exp(x); }),
    Binary("pow", kReal, Power),
    Binary("threshold", kInteger, [](double x, double limit) { return x > limit ? 1.0 : 0.0; }),
    Unary("floor", kInteger, [](double x) { return std::floor(x); }),
    Unary("ceil", kInteger, [](double x) { return std::ceil(x); }),
    Unary("round", kInteger, RoundHalfUp),
    TextMaker("uppercase", 1, 1, kTexts, Uppercase),
    TextMaker("substring", 3, 3, {Want::kText, Want::kNumber, Want::kNumber}, Substring),
    TextMaker("trimBlanks", 1, 1, kTexts, TrimBlanks),
    TextMaker("formatNumber", 2, 2, {Want::kNumber, Want::kText, Want::kText}, FormatNumber),
    TextMaker("formatDatetime", 2, 2, {Want::kMoment, Want::kText, Want::kText}, FormatDatetime),
    OfDate("dateDaysSinceYear", Want::kDay, DaysSinceYear),
    OfDate("dateSecondsSinceYear", Want::kMoment, SecondsSinceYear),
    SecondsOfTime("dateSecondsSinceMidnight"),
    // 4.0
    StateTest("isMissing", Accept({Cell::kMissing})),
    StateTest("isNotMissing", Accept({Cell::kInvalid, Cell::kNumber, Cell::kText})),
    Comparison("equal", kIsEqual),
    Comparison("notEqual", kIsLess | kIsGreater),
    Comparison("lessThan", kIsLess),
    Comparison("lessOrEqual", kIsLess | kIsEqual),
    Comparison("greaterThan", kIsGreater),
    Comparison("greaterOrEqual", kIsGreater | kIsEqual),
    {"isIn", 2, kAnyNumber, kAlike, Yields::kBoolean, OpCode::kIsIn, 1},
    {"isNotIn", 2, kAnyNumber, kAlike, Yields::kBoolean, OpCode::kIsIn, 0},
    {"and", 2, kAnyNumber, kBooleans, Yields::kBoolean, OpCode::kLogic, 0},
    {"or", 2, kAnyNumber, kBooleans, Yields::kBoolean, OpCode::kLogic, 1},
    {"not", 1, 1, kBooleans, Yields::kBoolean, OpCode::kNot},
    {"if", 2, 3, {Want::kBoolean, Want::kAlike, Want::kAlike}, Yields::kAlike, OpCode::kIf},
    // 4.1
    {"median", 1, kAnyNumber, kNumbers, kReal, OpCode::kMedian},
    Aggregate("product", Product),
    TextMaker("lowercase", 1, 1, kTexts, Lowercase),
    // 4.2
    TextMaker("concat", 1, kAnyNumber, kTexts, Concatenate),
    {"replace", 3, 3, kTexts, Yields::kText, OpCode::kReplace},
    {"matches", 2, 2, kTexts, Yields::kBoolean, OpCode::kMatches},
    // 4.3
    Ternary("normalCDF", Yields::kDouble, NormalDistribution),
    Ternary("normalPDF", Yields::kDouble, NormalDensity),
    Ternary("normalIDF", Yields::kDouble, NormalQuantile),
    Unary("stdNormalCDF", Yields::kDouble, [](double x) { return NormalDistribution(x, 0.0, 1.0); }),
    Unary("stdNormalPDF", Yields::kDouble, [](double x) { return NormalDensity(x, 0.0, 1.0); }),
    Unary("stdNormalIDF", Yields::kDouble, [](double p) { return NormalQuantile(p, 0.0, 1.0); }),
    Unary("erf", kReal, [](double x) { return std::erf(x); }),
    // 4.4
    Binary("modulo", kWidest, Modulo),
    StateTest("isValid", Accept({Cell::kNumber, Cell::kText})),
    StateTest("isNotValid", Accept({Cell::kMissing, Cell::kInvalid})),
    Unary("expm1", kReal, [](double x) { return std::expm1(x); }),
    Binary("hypot", kReal, [](double x, double y) { return std::hypot(x, y); }),
    Unary("ln1p", kReal, LogarithmOfOnePlus),
    Unary("rint", kInteger, RoundHalfEven),
    Measure("stringLength", CountCharacters),
    Unary("sin", kReal, [](double x) { return std::sin(x); }),
    Unary("asin", kReal, [](double x) { return std::asin(x); }),
    Unary("sinh", kReal, [](double x) { return std::sinh(x); }),
    Unary("cos", kReal, [](double x) { return std::cos(x); }),
    Unary("acos", kReal, [](double x) { return std::acos(x); }),
    Unary("cosh", kReal, [](double x) { return std::cosh(x); }),
    Unary("tan", kReal, [](double x) { return std::tan(x); }),
    Unary("atan", kReal, [](double x) { return std::atan(x); }),
    Unary("tanh", kReal, [](double x) { return std::tanh(x); }),
};

constexpr std::string_view kPrefixOfLater = "x-";

std::string_view WithoutPrefix(std::string_view name) {
  return name.starts_with(kPrefixOfLater) ? name.substr(kPrefixOfLater.size()) : name;
}

}  // namespace

std::span<const Function> AllFunctions() noexcept { return kFunctions; }

const Function* FindFunction(std::string_view name) noexcept {
  const auto isNamed = [plain = WithoutPrefix(name)](const Function& function) { return function.name == plain; };
  const auto found = std::find_if(std::begin(kFunctions), std::end(kFunctions), isNamed);
  return found == std::end(kFunctions) ? nullptr : found;
}

}  // namespace KelTransformNS
