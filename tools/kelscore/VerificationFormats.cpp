#include "tools/kelscore/VerificationFormats.h"

#include <nlohmann/json.hpp>

#include "tools/kelscore/Agreement.h"
#include "tools/kelscore/CsvText.h"

namespace kelscore {
namespace {

using Json = nlohmann::ordered_json;
using KelCommon_1_3::Value;

constexpr char kNoValue[] = "no value";

std::string ToText(const Value& value) {
  if (IsNoValue(value)) return kNoValue;
  if (value.GetType() == Value::kMembers) return "a composite value";
  return value.GetType() == Value::kText ? Quoted(value.Text()) : value.GetString();
}

// A number as it stands, so that the two can be compared at sight.
std::string ToText(const std::optional<std::string>& expected) {
  if (!expected) return kNoValue;
  return ReadNumber(*expected) ? *expected : Quoted(*expected);
}

Json ToJsonValue(const Value& value) {
  if (IsNoValue(value) || value.GetType() == Value::kMembers) return {};
  return value.GetType() == Value::kText ? Json(value.Text()) : Json(value.GetReal());
}

Json ToJsonValue(const DifferingRow& row) {
  Json json = {{"row", row.row}, {"line", row.line}};
  if (!row.failure.empty()) json["failure"] = row.failure;
  for (const Difference& difference : row.differences) {
    json["differences"].push_back({{"field", difference.field},
                                   {"expected", difference.expected ? Json(*difference.expected) : Json()},
                                   {"actual", ToJsonValue(difference.actual)}});
  }
  return json;
}

std::string Summary(const VerificationReport& report) {
  std::string text = report.model + ": " + std::to_string(report.rowCount) + " verification rows, ";
  return text + (report.differing.empty() ? "all agree" : std::to_string(report.differing.size()) + " differ") + "\n";
}

}  // namespace

std::string ToText(const VerificationReport& report) {
  std::string text;
  for (const DifferingRow& row : report.differing) {
    const std::string place = "row " + std::to_string(row.row) + " (line " + std::to_string(row.line) + "): ";
    if (!row.failure.empty()) text += place + row.failure + "\n";
    for (const Difference& difference : row.differences) {
      text += place + Quoted(difference.field) + ": expected " + ToText(difference.expected) + ", got " +
              ToText(difference.actual) + "\n";
    }
  }
  return text + Summary(report);
}

std::string ToJson(const VerificationReport& report) {
  Json json = {{"model", report.model}, {"rows", report.rowCount}, {"compared", report.compared}};
  json["differingRows"] = Json::array();
  for (const DifferingRow& row : report.differing) json["differingRows"].push_back(ToJsonValue(row));
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace kelscore
