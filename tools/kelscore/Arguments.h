#pragma once

#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace kelscore {

/// A member of a split model: the values of the split fields, an empty one for a missing value, and a document.
struct SplitMemberArgument {
  std::vector<std::string> key;
  std::string path;
};

/// Where a model comes from: one document, the members of an ensemble, those of a split model, or a settings file that
/// names documents.
struct ModelArguments {
  std::string path;                                          ///< empty for all but the first
  std::vector<std::pair<std::string, std::string>> members;  ///< identifier and document
  std::vector<std::string> splitFields;
  std::vector<SplitMemberArgument> splitMembers;
  std::string settingsFile;
  std::string pluginDir;                                  ///< empty: the plug-in beside the library
  std::vector<std::pair<std::string, std::string>> dlls;  ///< model element (or "Torvane") and base name of a plug-in
};

struct ScoreArguments {
  ModelArguments model;
  std::string input;
  std::string output = "-";
  std::vector<std::string> outputs;  ///< empty: all
  bool writeInput = true;
  char delimiter = ',';
  std::vector<std::string> missingTokens;
  unsigned threads = 1;
  bool skipFailedRows = false;
  std::string errorColumn;  ///< empty: none
};

struct DescribeArguments {
  ModelArguments model;
  bool json = false;
};

struct VerifyArguments {
  ModelArguments model;  ///< one document, no members
  bool json = false;
};

/// What is left to do when the arguments are read: nothing when help or version was asked for, which is printed.
using Command = std::variant<std::monostate, ScoreArguments, DescribeArguments, VerifyArguments>;

/// Reads the command line. Throws `Failure` (bad usage).
[[nodiscard]] Command ReadArguments(int count, const char* const* arguments);

}  // namespace kelscore
