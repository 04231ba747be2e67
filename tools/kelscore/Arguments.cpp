#include "tools/kelscore/Arguments.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <string_view>

#include "tools/kelscore/Failure.h"

namespace kelscore {
namespace {

constexpr unsigned kMostThreads = 256;

constexpr char kAbout[] = "kelscore scores tables of records with PMML models.";
constexpr char kExamples[] = R"(
Examples:
  kelscore describe model.pmml                     what the model reads and gives
  kelscore verify model.pmml                       whether it gives what its document expects
  kelscore score model.pmml data.csv               scores every row to standard output
  kelscore score model.pmml data.csv -o out.csv --outputs prediction,probability
  cat data.csv | kelscore score model.pmml - --no-input --missing NA --threads 4
  kelscore score --member a=first.pmml --member b=second.pmml data.csv
  kelscore score --split-field town --split-member Bern=b.pmml --split-member Genf=g.pmml data.csv

Exit status: 0 success, 1 some rows failed or differ, 2 bad usage, 3 the model can't be created, 4 input or output
failed, or a document to verify holds no rows for that.)";

// "KEY=VALUE" in two.
std::pair<std::string, std::string> Split(const std::string& option, const std::string& text) {
  const std::size_t equals = text.find('=');
  if (equals == std::string::npos || equals == 0 || equals + 1 == text.size())
    throw Failure(kBadUsage, option + " needs the form NAME=VALUE, not \"" + text + "\"");
  return {text.substr(0, equals), text.substr(equals + 1)};
}

char ReadDelimiter(const std::string& text) {
  if (text == "tab" || text == "\\t") return '\t';
  if (text.size() == 1 && std::string_view("\"\r\n").find(text[0]) == std::string_view::npos) return text[0];
  throw Failure(kBadUsage, "--delimiter needs one character (not a quote or a line break) or \"tab\"");
}

std::vector<std::string> SplitAtCommas(const std::string& text) {
  std::vector<std::string> parts(1);
  for (const char character : text) {
    if (character == ',') {
      parts.emplace_back();
    } else {
      parts.back() += character;
    }
  }
  return parts;
}

CLI::Option* AddRepeatable(CLI::App& command, const char* name, std::vector<std::string>& values, const char* help,
                           const char* type) {
  return command.add_option(name, values, help)->type_name(type)->allow_extra_args(false);
}

constexpr char kText[] = "text";
constexpr char kJson[] = "json";

void AddFormat(CLI::App& command, std::string& format) {
  command.add_option("--format", format, "text (default) or json")
      ->check(CLI::IsMember({kText, kJson}))
      ->type_name("text|json");
}

/// The options that say how models are made.
class SettingsOptions {
 public:
  void AddTo(CLI::App& command) {
    command
        .add_option("--settings", fSettingsFile, "settings of the library; without MODEL they may name the documents")
        ->type_name("FILE");
    command.add_option("--plugin-dir", fPluginDir, "folder of the plug-ins; default: beside the library")
        ->type_name("DIR");
    AddRepeatable(command, "--dll", fDlls, "plug-in NAME scores models of kind ELEMENT; repeatable", "ELEMENT=NAME");
  }

  void Get(ModelArguments& model) const {
    model.settingsFile = fSettingsFile;
    model.pluginDir = fPluginDir;
    for (const std::string& dll : fDlls) model.dlls.push_back(Split("--dll", dll));
  }

 private:
  std::string fSettingsFile;
  std::string fPluginDir;
  std::vector<std::string> fDlls;
};

/// The options that say where a model comes from.
class ModelOptions {
 public:
  explicit ModelOptions(CLI::App& command) {
    command.add_option("MODEL", fModel.path, "PMML document; none with --member, --split-member or such settings");
    AddRepeatable(command, "--member", fMembers, "instead of MODEL, a member of an ensemble; repeatable", "ID=MODEL");
    AddRepeatable(command, "--split-field", fModel.splitFields,
                  "instead of MODEL, a field whose value picks a member; repeatable", "NAME");
    AddRepeatable(command, "--split-member", fSplitMembers,
                  "the member for these values of the split fields, an empty one for no value; repeatable",
                  "KEY[,KEY...]=MODEL");
    fSettings.AddTo(command);
  }

  [[nodiscard]] ModelArguments Get() const {
    ModelArguments model = fModel;
    fSettings.Get(model);
    for (const std::string& member : fMembers) model.members.push_back(Split("--member", member));
    for (const std::string& member : fSplitMembers) model.splitMembers.push_back(SplitMember(member));
    CheckMembers(model);
    return model;
  }

 private:
  static SplitMemberArgument SplitMember(const std::string& text) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos || equals + 1 == text.size())
      throw Failure(kBadUsage, "--split-member needs the form KEY=MODEL, not \"" + text + "\"");
    return {SplitAtCommas(text.substr(0, equals)), text.substr(equals + 1)};
  }

  static void CheckMembers(const ModelArguments& model) {
    if (!model.members.empty() && !model.splitMembers.empty())
      throw Failure(kBadUsage, "--member and --split-member exclude each other");
    if (model.splitFields.empty() != model.splitMembers.empty())
      throw Failure(kBadUsage, "--split-field and --split-member need each other");
  }

  ModelArguments fModel;
  std::vector<std::string> fMembers;
  std::vector<std::string> fSplitMembers;
  SettingsOptions fSettings;
};

// A model comes from one place only.
void CheckDocument(const ModelArguments& model) {
  const bool hasMembers = !model.members.empty() || !model.splitMembers.empty();
  if (model.path.empty() && !hasMembers && model.settingsFile.empty())
    throw Failure(kBadUsage, "MODEL is missing (see kelscore --help)");
  if (!model.path.empty() && hasMembers)
    throw Failure(kBadUsage, "a document of its own, " + model.path + ", stands beside members");
}

class ScoreOptions {
 public:
  explicit ScoreOptions(CLI::App& app)
      : fCommand(*app.add_subcommand("score", "Scores a table: a header row, then one row per record")),
        fModel(fCommand) {
    fCommand.add_option("INPUT", fScore.input, "table of records; - is standard input");
    fCommand.add_option("-o,--output", fScore.output, "scored table; default: standard output")->type_name("FILE");
    fCommand.add_option("--outputs", fScore.outputs, "outputs to write; default: all that the model has")
        ->type_name("NAME,...")
        ->delimiter(',')
        ->allow_extra_args(false);
    fCommand.add_flag("--no-input", fNoInput, "write the outputs only, without the input columns");
    fCommand.add_option("--delimiter", fDelimiter, "between fields, of input and output; default: comma")
        ->type_name("CHAR|tab");
    AddRepeatable(fCommand, "--missing", fScore.missingTokens,
                  "a field with this text has no value, as an empty one; repeatable", "TOKEN");
    fCommand.add_option("--threads", fScore.threads, "threads that score; default: 1")
        ->check(CLI::Range(1U, kMostThreads))
        ->type_name("N");
    fCommand.add_option("--on-error", fOnError, "stop at a row that can't be scored (default), or skip it")
        ->check(CLI::IsMember({"stop", "skip"}))
        ->type_name("stop|skip");
    fCommand.add_option("--error-column", fScore.errorColumn, "add a column with the reason of a failed row")
        ->type_name("NAME");
  }

  [[nodiscard]] bool IsChosen() const { return fCommand.parsed(); }
  [[nodiscard]] ScoreArguments Get() const {
    ScoreArguments score = fScore;
    score.model = fModel.Get();
    // Without a document of its own the table stands first.
    if (score.input.empty()) score.input.swap(score.model.path);
    if (score.input.empty()) throw Failure(kBadUsage, "INPUT is missing (see kelscore score --help)");
    CheckDocument(score.model);
    score.writeInput = !fNoInput;
    score.delimiter = ReadDelimiter(fDelimiter);
    score.skipFailedRows = fOnError == "skip";
    return score;
  }

 private:
  CLI::App& fCommand;
  ModelOptions fModel;
  ScoreArguments fScore;
  bool fNoInput = false;
  std::string fDelimiter = ",";
  std::string fOnError = "stop";
};

class DescribeOptions {
 public:
  explicit DescribeOptions(CLI::App& app)
      : fCommand(*app.add_subcommand("describe", "Tells inputs, target, categories and outputs of a model")),
        fModel(fCommand) {
    AddFormat(fCommand, fFormat);
  }

  [[nodiscard]] bool IsChosen() const { return fCommand.parsed(); }
  [[nodiscard]] DescribeArguments Get() const {
    DescribeArguments describe{fModel.Get(), fFormat == kJson};
    CheckDocument(describe.model);
    return describe;
  }

 private:
  CLI::App& fCommand;
  ModelOptions fModel;
  std::string fFormat = kText;
};

class VerifyOptions {
 public:
  explicit VerifyOptions(CLI::App& app)
      : fCommand(*app.add_subcommand("verify", "Compares results with those that the document itself expects")) {
    fCommand.add_option("MODEL", fVerify.model.path, "PMML document with verification rows (ModelVerification)");
    fSettings.AddTo(fCommand);
    AddFormat(fCommand, fFormat);
  }

  [[nodiscard]] bool IsChosen() const { return fCommand.parsed(); }
  [[nodiscard]] VerifyArguments Get() const {
    VerifyArguments verify = fVerify;
    if (verify.model.path.empty()) throw Failure(kBadUsage, "MODEL is missing (see kelscore verify --help)");
    fSettings.Get(verify.model);
    verify.json = fFormat == kJson;
    return verify;
  }

 private:
  CLI::App& fCommand;
  VerifyArguments fVerify;
  SettingsOptions fSettings;
  std::string fFormat = kText;
};

std::string FirstLine(const std::string& text) { return text.substr(0, text.find('\n')); }

}  // namespace

Command ReadArguments(int count, const char* const* arguments) {
  CLI::App app(kAbout, "kelscore");
  app.footer(kExamples);
  app.set_version_flag("--version", KELSCORE_VERSION);
  app.require_subcommand(0, 1);
  const ScoreOptions score(app);
  const DescribeOptions describe(app);
  const VerifyOptions verify(app);
  try {
    app.parse(count, arguments);
  } catch (const CLI::Success& help) {
    app.exit(help);
    return {};
  } catch (const CLI::ParseError& error) {
    throw Failure(kBadUsage, FirstLine(error.what()) + " (see kelscore --help)");
  }
  if (score.IsChosen()) return score.Get();
  if (describe.IsChosen()) return describe.Get();
  if (verify.IsChosen()) return verify.Get();
  std::cout << app.help();
  return {};
}

}  // namespace kelscore
