#include "tools/kelscore/ScoreCommand.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "tools/kelscore/CsvReader.h"
#include "tools/kelscore/CsvText.h"
#include "tools/kelscore/Files.h"
#include "tools/kelscore/LoadedModel.h"
#include "tools/kelscore/OutputLayout.h"
#include "tools/kelscore/Pipeline.h"
#include "tools/kelscore/RecordBinding.h"
#include "tools/kelscore/RecordScorer.h"
#include "tools/kelscore/RowScorer.h"

namespace kelscore {
namespace {

bool Contains(const std::vector<std::string>& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

/// One run of the command, from the header to the last row.
class ScoreRun {
 public:
  ScoreRun(const ScoreArguments& arguments, Console& console)
      : fArguments(arguments),
        fConsole(console),
        fModel(arguments.model, console),
        fInput(arguments.input),
        fReader(fInput, arguments.delimiter),
        fBinding(BindFields()),
        fLayout(AnnouncedOutputs(fModel), arguments.outputs),
        fOutput(CheckedOutput()) {
    TellMissingColumns();
    fLayout.AddCategories(fModel.TargetCategories());
  }

  ExitStatus Run() {
    fHasFirstBatch = fReader.Read(fFirstBatch);
    LearnMembers();
    WriteHeader();
    RunPipeline(MakeStages());
    fOutput.Close();
    fConsole.ClearProgress();
    if (fFailedRows > 0 && fArguments.skipFailedRows) TellFailedRows();
    return fFailedRows > 0 ? kSomeRowsFailed : kSuccess;
  }

 private:
  RecordBinding BindFields() {
    const std::vector<std::string>& header = fReader.ReadHeader();
    std::vector<ModelField> fields = fModel.Fields();
    if (fields.empty()) fields = FieldsOfTable(header);
    return {fields, header, fArguments.missingTokens};
  }

  // Opening the output empties it, so it mustn't be what is still to be read.
  const std::string& CheckedOutput() const {
    const std::string& output = fArguments.output;
    std::vector<std::string> documents = fModel.Paths();
    documents.push_back(fArguments.model.settingsFile);
    const bool isDocument = std::any_of(documents.begin(), documents.end(),
                                        [&output](const std::string& path) { return IsSameFile(path, output); });
    if (output != kStandardStream && (isDocument || fInput.IsSameFile(output)))
      throw Failure(kBadUsage, output + ": would be overwritten while it is needed");
    return output;
  }

  void TellMissingColumns() {
    std::string names;
    for (const std::string& name : fBinding.MissingColumns()) names += (names.empty() ? "" : ", ") + Quoted(name);
    if (!names.empty()) fConsole.Tell(fInput.Name() + ": warning: no column for " + names + "; null in every row");
  }

  // The first row that can be scored shows which outputs have members that nobody announced.
  void LearnMembers() {
    RecordScorer scorer = MakeRecordScorer();
    std::string reason;
    for (std::size_t i = 0; i < fFirstBatch.RowCount(); ++i) {
      if (!scorer.Score(fFirstBatch.Row(i), reason)) continue;
      fLayout.LearnFrom(scorer.Scored());
      return;
    }
  }

  RecordScorer MakeRecordScorer() const {
    return {fModel.Model(), fBinding, fLayout.Prototype(), fModel.SplitFields()};
  }

  void WriteHeader() {
    std::vector<std::string> columns;
    if (fArguments.writeInput) columns = fReader.ReadHeader();
    for (const std::string& name : fLayout.Columns()) columns.push_back(FreeName(columns, name));
    if (!fArguments.errorColumn.empty()) columns.push_back(FreeName(columns, fArguments.errorColumn));
    std::string line;
    for (const std::string& column : columns) {
      if (&column != &columns.front()) line.push_back(fArguments.delimiter);
      AppendField(line, column, fArguments.delimiter);
    }
    fOutput.Write(line + "\n");
  }

  // A table with two columns of one name can't be read back by name.
  std::string FreeName(const std::vector<std::string>& taken, const std::string& wanted) {
    std::string name = wanted;
    while (Contains(taken, name)) name += ".output";
    if (name != wanted)
      fConsole.Tell(fInput.Name() + ": warning: column " + Quoted(wanted) + " is there, so the output is called " +
                    Quoted(name));
    return name;
  }

  Stages MakeStages() {
    Stages stages;
    stages.read = [this](RowBatch& batch) { return Read(batch); };
    stages.write = [this](const ScoredBatch& batch) { return Write(batch); };
    const RowStyle style{fArguments.delimiter, fArguments.writeInput, !fArguments.errorColumn.empty(),
                         !fArguments.skipFailedRows};
    for (unsigned i = 0; i < fArguments.threads; ++i) {
      stages.score.emplace_back(
          [scorer = RowScorer(MakeRecordScorer(), fLayout, style)](const RowBatch& batch, ScoredBatch& scored) mutable {
            scorer.Score(batch, scored);
          });
    }
    return stages;
  }

  bool Read(RowBatch& batch) {
    if (!fHasFirstBatch) return fReader.Read(batch);
    fHasFirstBatch = false;
    std::swap(batch, fFirstBatch);
    return true;
  }

  bool Write(const ScoredBatch& batch) {
    fOutput.Write(batch.text);
    fRows += batch.rows;
    fFailedRows += batch.failures.size();
    for (const ScoredBatch::RowFailure& failure : batch.failures) TellFailure(failure);
    fConsole.ShowProgress(fRows);
    return !batch.stopped;
  }

  void TellFailure(const ScoredBatch::RowFailure& failure) {
    fConsole.Tell(fInput.Name() + ": row " + std::to_string(failure.row) + " (line " + std::to_string(failure.line) +
                  "): " + failure.reason + (fArguments.skipFailedRows ? "" : "; stopped before this row"));
  }

  void TellFailedRows() {
    fConsole.Tell(fInput.Name() + ": " + std::to_string(fFailedRows) + " of " + std::to_string(fRows) +
                  " rows failed; their outputs are empty");
  }

  const ScoreArguments& fArguments;
  Console& fConsole;
  LoadedModel fModel;
  InputFile fInput;
  CsvReader fReader;
  RecordBinding fBinding;
  OutputLayout fLayout;
  OutputFile fOutput;
  RowBatch fFirstBatch;
  bool fHasFirstBatch = false;
  std::uint64_t fRows = 0;
  std::uint64_t fFailedRows = 0;
};

}  // namespace

ExitStatus RunScore(const ScoreArguments& arguments, Console& console) { return ScoreRun(arguments, console).Run(); }

}  // namespace kelscore
