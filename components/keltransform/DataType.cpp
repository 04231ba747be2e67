#include <array>
#include <utility>

#include "components/keltransform/Cell.h"

namespace KelTransformNS {
namespace {

// In the order of the enumeration.
constexpr std::array<std::string_view, 17> kDataTypeNames = {
    "string",
    "integer",
    "float",
    "double",
    "boolean",
    "date",
    "time",
    "dateTime",
    "dateDaysSince[0]",
    "dateDaysSince[1960]",
    "dateDaysSince[1970]",
    "dateDaysSince[1980]",
    "timeSeconds",
    "dateTimeSecondsSince[0]",
    "dateTimeSecondsSince[1960]",
    "dateTimeSecondsSince[1970]",
    "dateTimeSecondsSince[1980]",
};

constexpr std::array<std::string_view, 3> kOpTypeNames = {"categorical", "ordinal", "continuous"};

template <typename Enum, std::size_t kCount>
bool ParseName(const std::array<std::string_view, kCount>& names, std::string_view name, Enum& value) noexcept {
  for (std::size_t index = 0; index < kCount; ++index) {
    if (names[index] != name) continue;
    value = static_cast<Enum>(index);
    return true;
  }
  return false;
}

}  // namespace

bool ParseDataType(std::string_view name, DataType& type) noexcept {
  constexpr std::string_view kSchemaPrefix = "xs:";
  if (name.starts_with(kSchemaPrefix)) name.remove_prefix(kSchemaPrefix.size());
  return ParseName(kDataTypeNames, name, type);
}

bool ParseOpType(std::string_view name, OpType& type) noexcept { return ParseName(kOpTypeNames, name, type); }

std::string_view DataTypeName(DataType type) noexcept { return kDataTypeNames[static_cast<std::size_t>(type)]; }

OpType ImpliedOpType(DataType type) noexcept {
  switch (type) {
    case DataType::kString:
    case DataType::kBoolean:
      return OpType::kCategorical;
    case DataType::kInteger:
    case DataType::kFloat:
    case DataType::kDouble:
      return OpType::kContinuous;
    default:
      return OpType::kOrdinal;
  }
}

}  // namespace KelTransformNS
