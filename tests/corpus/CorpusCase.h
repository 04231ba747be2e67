#pragma once

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "scoring/common/ValueRecord.h"
#include "scoring/model/ScoringModel.h"
#include "tests/corpus/CsvTable.h"

namespace CorpusTest {

/// One line of the corpus' manifest.
struct CorpusCase {
  std::string name;  ///< the case's folder, below the corpus
  std::string modelKind;
  std::vector<std::string> targetFields;
  double tolerance;  ///< relative, and absolute near zero
};

/// How the test framework names a case.
void PrintTo(const CorpusCase& corpusCase, std::ostream* stream);

/// The cases of the corpus; empty where there is no corpus.
const std::vector<CorpusCase>& AllCases();
/// The folder that holds the manifest.
std::string CorpusFolder();

/// A model, or the reason why there is none.
struct Loaded {
  std::unique_ptr<KelScoring_20::ScoringModel> model;
  long code = 0;
  std::string reason;
};
/// `columns` are those of the expected results; what only an "OutputField" can tell of them is added to the document.
Loaded Load(const std::string& path, const std::vector<std::string>& columns);

/// A record of the table's columns that the model knows, refilled row by row: numbers for numeric variables, texts for
/// the others, null for an empty cell.
class InputRecord {
 public:
  InputRecord(const CsvTable& table, const KelXML_1_3::KelVarList& variables);
  KelCommon_1_3::ValueRecord& Fill(const std::vector<std::string>& row);

 private:
  std::vector<bool> fNumeric;
  KelCommon_1_3::ValueRecord fRecord;
};

/// Where an expected column is found among a model's outputs: an output, and a member of it if it is composite.
struct ExpectedColumn {
  std::string output;
  std::string member;
};
/// Throws if the model offers nothing for the column.
ExpectedColumn FindColumn(const std::string& column, const CorpusCase& corpusCase,
                          const KelCommon_1_3::ValueRecord& offered);

/// The value of a column in a scored record.
const KelCommon_1_3::Value& Lookup(const ExpectedColumn& column, const KelCommon_1_3::ValueRecord& out);

/// Empty if the value is what the cell says, else both of them. An empty cell expects null.
std::string Difference(const std::string& expected, const KelCommon_1_3::Value& actual, double tolerance);

}  // namespace CorpusTest
