#include "tools/kelscore/Verifier.h"

#include <algorithm>

#include "scoring/common/KelScoringConst.h"
#include "scoring/common/ValueRecord.h"
#include "tools/kelscore/Agreement.h"
#include "tools/kelscore/CsvText.h"
#include "tools/kelscore/Failure.h"
#include "tools/kelscore/FieldValue.h"
#include "tools/kelscore/PlugInCall.h"
#include "tools/kelscore/StatusText.h"

namespace kelscore {
namespace {

using KelCommon_1_3::KelStatus;
using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;
namespace Const = KelScoring_20::KelScoringConst;

/// A column of the rows that goes into a record.
struct Input {
  std::size_t column;
  int position;  // in the record
  FieldKind kind;
  std::vector<std::string> markers;
};

/// A column of the rows that a result is compared with.
struct Expectation {
  std::size_t column;
  int position;  // in the record
};

/// One run over the rows, from what each column stands for to the last comparison.
class Verifier {
 public:
  Verifier(const LoadedModel& model, const Verification& verification, Console& console)
      : fModel(model), fVerification(verification), fConsole(console), fOut(AnnouncedOutputs(model)) {
    BindInputs();
    BindExpectations();
    fOut.SetAllNull();
  }

  VerificationReport Run() {
    VerificationReport report;
    report.model = fModel.Name();
    report.rowCount = fVerification.rows.size();
    for (const Expectation& expectation : fExpectations) report.compared.push_back(FieldOf(expectation).field);
    for (std::size_t i = 0; i < fVerification.rows.size(); ++i) {
      DifferingRow row = CompareRow(fVerification.rows[i]);
      if (row.differences.empty() && row.failure.empty()) continue;
      row.row = i + 1;
      row.line = fVerification.rows[i].line;
      report.differing.push_back(std::move(row));
    }
    return report;
  }

 private:
  [[nodiscard]] const VerificationField& FieldOf(const Expectation& expectation) const {
    return fVerification.fields[expectation.column];
  }

  [[noreturn]] void Fail(const std::string& reason) const {
    throw Failure(kInputOutputFailed, fModel.Name() + ": verification rows: " + reason);
  }

  void BindInputs() {
    std::string unused;
    for (const ModelField& field : fModel.Fields()) {
      const int position = fIn.Add(field.name, Value::NULL_VALUE);
      const std::optional<std::size_t> column = FindColumn(field.name);
      if (column) fInputs.push_back({*column, position, field.kind, field.markers});
      if (field.needed && (!column || IsEmpty(*column))) unused += (unused.empty() ? "" : ", ") + Quoted(field.name);
    }
    if (!unused.empty()) fConsole.Tell(fModel.Name() + ": warning: the verification rows have no value for " + unused);
  }

  // Data fields that are no target are inputs, or nothing that the model looks at.
  void BindExpectations() {
    std::vector<Expectation> targets;
    for (std::size_t column = 0; column < fVerification.fields.size(); ++column) {
      const std::string& name = fVerification.fields[column].field;
      const auto declared = fModel.Declared().find(name);
      const bool isDeclared = declared != fModel.Declared().end();
      const bool isTarget = isDeclared && IsTarget(declared->second);
      const int output = fOut.IndexOf(name);
      if (output >= 0 && (isTarget || !isDeclared)) {
        fExpectations.push_back({column, output});
      } else if (isTarget) {
        targets.push_back({column, fOut.IndexOf(Const::kOutputPrediction)});
      } else if (!isDeclared) {
        Fail(Quoted(name) + " is neither a field of the data dictionary nor an output of the model");
      }
    }
    if (fExpectations.empty()) fExpectations = std::move(targets);
    CheckExpectations();
  }

  void CheckExpectations() const {
    if (fExpectations.empty()) Fail("they expect nothing: no field is a target or an output of the model");
    for (const Expectation& expectation : fExpectations) {
      if (IsEmpty(expectation.column)) Fail("no row has a value for " + Quoted(FieldOf(expectation).field));
    }
  }

  [[nodiscard]] std::optional<std::size_t> FindColumn(const std::string& field) const {
    const auto found = std::find_if(fVerification.fields.begin(), fVerification.fields.end(),
                                    [&field](const VerificationField& known) { return known.field == field; });
    if (found == fVerification.fields.end()) return std::nullopt;
    return static_cast<std::size_t>(found - fVerification.fields.begin());
  }

  [[nodiscard]] bool IsEmpty(std::size_t column) const {
    return std::none_of(fVerification.rows.begin(), fVerification.rows.end(),
                        [column](const VerificationRow& row) { return row.cells[column].has_value(); });
  }

  DifferingRow CompareRow(const VerificationRow& row) {
    DifferingRow result;
    if (!ScoreRow(row, result.failure)) return result;
    for (const Expectation& expectation : fExpectations) {
      const std::optional<std::string>& expected = row.cells[expectation.column];
      const Value& actual = fOut.At(expectation.position);
      const VerificationField& field = FieldOf(expectation);
      if (!Agrees(expected, actual, field)) result.differences.push_back({field.field, expected, actual});
    }
    return result;
  }

  bool ScoreRow(const VerificationRow& row, std::string& reason) {
    fIn.SetAllNull();
    for (const Input& input : fInputs) {
      const std::optional<std::string>& cell = row.cells[input.column];
      if (cell && !ReadFieldValue(input.kind, input.markers, *cell, fIn[input.position], fScratch)) {
        reason = "field " + Quoted(fIn.NameAt(input.position)) + ": " + Quoted(*cell) + " is not a finite number";
        return false;
      }
    }
    fOut.SetAllNull();
    KelStatus status;
    if (!CallPlugIn([&] { status = fModel.Model().Score(fIn, fOut); }, reason)) return false;
    if (status.IsError()) reason = StatusText(status);
    return !status.IsError();
  }

  const LoadedModel& fModel;
  const Verification& fVerification;
  Console& fConsole;
  ValueRecord fIn;
  ValueRecord fOut;
  std::vector<Input> fInputs;
  std::vector<Expectation> fExpectations;
  std::string fScratch;
};

}  // namespace

VerificationReport Verify(const LoadedModel& model, const Verification& verification, Console& console) {
  return Verifier(model, verification, console).Run();
}

}  // namespace kelscore
