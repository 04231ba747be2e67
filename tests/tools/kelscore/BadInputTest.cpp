#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/tools/kelscore/Program.h"
#include "tools/kelscore/Failure.h"
#include "tools/kelscore/LoadedModel.h"

// Everything that isn't as it should be ends with its exit status and one clear line.

namespace kelscore {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

constexpr char kRows[] = "tenure,contract,charges,complaints\n5,monthly,9,1\n";

const std::string& Churn() {
  static const std::string text = ReadFile(Example("tree/churn.pmml"));
  return text;
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  const std::size_t at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  return text.replace(at, from.size(), to);
}

// From the first of `from` up to and with the last of `to`.
std::string Without(std::string text, const std::string& from, const std::string& to) {
  const std::size_t begin = text.find(from);
  return text.erase(begin, text.rfind(to) + to.size() - begin);
}

std::string Repeated(const std::string& text, std::size_t times) {
  std::string result;
  result.reserve(text.size() * times);
  for (std::size_t i = 0; i < times; ++i) result += text;
  return result;
}

bool IsOneLine(const std::string& text) { return text.find('\n') == text.size() - 1; }

struct ModelCase {
  const char* name;
  std::function<std::string()> document;
  const char* message;
};

const ModelCase kBadModels[] = {
    {"empty", [] { return std::string(); }, "status 260010 "},
    {"binary noise", [] { return std::string("\x7f\x45\x4c\x46\0\x01\xff\xfe\x02", 9); }, "line 1, column "},
    {"cut in an element", [] { return Churn().substr(0, Churn().find("<Node id=\"old\"") + 8); }, "line "},
    {"cut between elements", [] { return Churn().substr(0, Churn().rfind("</TreeModel>")); }, "line "},
    {"not well-formed", [] { return Replaced(Churn(), "</Header>", "</Heading>"); }, "line 5, column "},
    {"another root", [] { return std::string("<html><body/></html>"); }, "status 260010 "},
    {"no dictionary", [] { return Without(Churn(), "<DataDictionary", "</DataDictionary>"); }, "status 260010 "},
    {"no model", [] { return Without(Churn(), "<TreeModel", "</TreeModel>"); }, "status 260010 "},
    {"a model that isn't listed",
     [] { return Replaced(Replaced(Churn(), "<TreeModel", "<Scorecard"), "</TreeModel", "</Scorecard"); },
     "status 260010 "},
    {"an old version", [] { return Replaced(Churn(), "PMML version=\"4.0\"", "PMML version=\"2.1\""); }, "2.1"},
    {"a version to come", [] { return Replaced(Churn(), "PMML version=\"4.0\"", "PMML version=\"9.9\""); }, "9.9"},
    {"an unknown operator", [] { return Replaced(Churn(), "\"greaterOrEqual\"", "\"roughly\""); }, "roughly"},
    {"nested entities",
     [] {
       return Replaced(Churn(), "<PMML ",
                       "<!DOCTYPE PMML [<!ENTITY a \"&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;\"><!ENTITY b \"" +
                           Repeated("x", 1000) + "\">]>\n<PMML ");
     },
     "status 260010 "},
    {"a million nested elements",
     [] { return "<PMML version=\"4.0\">" + Repeated("<a>", 1'000'000) + Repeated("</a>", 1'000'000) + "</PMML>"; },
     "status 260010 "},
};

TEST(BadModel, AnyOfThem_IsRefusedWithStatusAndReason) {
  const TestFolder folder;
  for (const ModelCase& c : kBadModels) {
    SCOPED_TRACE(c.name);
    const std::string path = folder.Write("model.pmml", c.document());
    for (const char* command : {"score", "describe"}) {
      std::vector<std::string> arguments = {command, path};
      if (command == std::string("score")) arguments.push_back("-");
      const Outcome run = RunKelscore(arguments, kRows);
      EXPECT_EQ(run.status, kNoModel);
      EXPECT_EQ(run.out, "");
      EXPECT_THAT(run.err, AllOf(StartsWith("kelscore: " + path + ": no model: status 2600"), HasSubstr(c.message)));
      EXPECT_TRUE(IsOneLine(run.err)) << run.err;
    }
  }
}

TEST(BadModel, CutAtAnyByte_IsRefusedOrTheSame) {
  const TestFolder folder;
  ModelArguments arguments;
  arguments.path = folder.PathOf("model.pmml");
  Console console;
  const std::size_t end = Churn().rfind("</PMML>") + 7;
  for (std::size_t size = 0; size <= Churn().size(); size += size + 20 < end ? 17 : 1) {
    folder.Write("model.pmml", Churn().substr(0, size));
    try {
      const LoadedModel model(arguments, console);
      EXPECT_GE(size, end);
    } catch (const Failure& failure) {
      EXPECT_LT(size, end);
      EXPECT_EQ(failure.Status(), kNoModel);
      EXPECT_THAT(failure.Message(), HasSubstr("not well-formed XML, line "));
    }
  }
}

TEST(BadModel, HarmlessOddity_IsScored) {
  const struct {
    const char* name;
    std::string document;
  } kCases[] = {
      {"a second model", Replaced(Churn(), "</PMML>", "<RegressionModel functionName=\"regression\"/></PMML>")},
      {"an external entity that nobody opens",
       Replaced(Churn(), "<PMML ", "<!DOCTYPE PMML SYSTEM \"/nonexistent/pmml.dtd\">\n<PMML ")},
      {"an attribute of 50 MB",
       Replaced(Churn(), "algorithmName=\"drawn by hand\"", "algorithmName=\"" + Repeated("x", 50'000'000) + "\"")},
      {"a byte order mark and comments", "\xEF\xBB\xBF" + Churn() + "<!-- the end -->\n"},
  };
  const TestFolder folder;
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    const Outcome run = RunKelscore(
        {"score", folder.Write("model.pmml", c.document), "-", "--no-input", "--outputs", "prediction"}, kRows);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "prediction\nyes\n");
    EXPECT_EQ(run.err, "");
  }
}

TEST(BadModel, FileThatIsNone_IsNamed) {
  const TestFolder folder;
  const std::string missing = folder.PathOf("nowhere.pmml");
  EXPECT_THAT(RunKelscore({"describe", missing}).err,
              StartsWith("kelscore: " + missing + ": no model: status 260004 "));
  EXPECT_EQ(RunKelscore({"describe", missing}).status, kNoModel);
  const Outcome run = RunKelscore({"describe", folder.PathOf("")});
  EXPECT_EQ(run.status, kNoModel);
  EXPECT_THAT(run.err, HasSubstr("is a folder"));
}

TEST(BadPlugIn, AnyOfThem_IsRefusedWithItsName) {
  for (const char* plugIn : {"nowhere", "nosymbol", "nullparser", "null"}) {
    const Outcome run = RunKelscore({"score", Example("tree/churn.pmml"), "-", "--plugin-dir", KEL_TEST_PLUGINS,
                                     "--dll", std::string("Torvane=") + plugIn},
                                    kRows);
    EXPECT_EQ(run.status, kNoModel);
    EXPECT_EQ(run.out, "");
    EXPECT_THAT(run.err, AllOf(HasSubstr("churn.pmml: no model: status 260010 "), HasSubstr(plugIn)));
    EXPECT_TRUE(IsOneLine(run.err)) << run.err;
  }
}

TEST(GoodPlugIn, ByFolderAndName_IsUsed) {
  // The test plug-in gives the inputs "p" and "q" back; no model needs such columns, so they stay null.
  const std::vector<std::string> kWays[] = {
      {"--plugin-dir", KEL_TEST_PLUGINS, "--dll", "Torvane=stream"},
      {"--dll", std::string("TreeModel=") + KEL_TEST_PLUGINS + "stream"},
  };
  for (const std::vector<std::string>& way : kWays) {
    std::vector<std::string> arguments = {"score", Example("tree/churn.pmml"), "-", "--no-input"};
    arguments.insert(arguments.end(), way.begin(), way.end());
    const Outcome run = RunKelscore(arguments, kRows);
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_THAT(run.out, StartsWith("prediction,probability"));
  }
}

TEST(BadPlugIn, ThatThrows_IsToldWithWhatItSays) {
  const TestFolder folder;
  for (const std::string road : {"stream", "dom"}) {
    const std::string settings =
        folder.Write("settings.xml", "<Settings><Parameter name='throw_on' value='" + road + "'/></Settings>");
    const Outcome run = RunKelscore({"describe", Example("tree/churn.pmml"), "--settings", settings, "--dll",
                                     std::string("Torvane=") + KEL_TEST_PLUGINS + "throwing"});
    EXPECT_EQ(run.status, kNoModel);
    EXPECT_EQ(run.err, "kelscore: " + Example("tree/churn.pmml") +
                           ": no model: the plug-in threw an exception: thrown on the " + road + " road\n");
  }
}

struct CompositeCase {
  const char* name;
  std::vector<std::string> arguments;
  ExitStatus status;
  std::string message;
};

// Those that the library takes are scored all the same.
TEST(BadComposite, AnyOfThem_IsRefusedOrWarnedOf) {
  const TestFolder folder;
  const std::string good = Example("tree/churn.pmml");
  const std::string missing = folder.PathOf("nowhere.pmml");
  const std::string broken = folder.Write("broken.pmml", Churn().substr(0, 3000));
  const CompositeCase kCases[] = {
      {"missing file in the middle",
       {"--member", "a=" + good, "--member", "b=" + missing, "--member", "c=" + good},
       kNoModel,
       missing + ": no model: the file can't be opened: No such file or directory"},
      {"malformed member",
       {"--member", "a=" + good, "--member", "b=" + broken},
       kNoModel,
       broken + ": no model: status 260010 "},
      {"malformed member of a split model",
       {"--split-field", "contract", "--split-member", "monthly=" + good, "--split-member", "yearly=" + broken},
       kNoModel,
       broken + ": no model: status 260010 "},
      {"identifier twice",
       {"--member", "a=" + good, "--member", "a=" + good},
       kSuccess,
       "warning: identifier \"a\" stands twice"},
      {"key twice",
       {"--split-field", "contract", "--split-member", "monthly=" + good, "--split-member", "monthly=" + good},
       kSuccess,
       "warning: key \"monthly\" stands twice"},
      {"key twice as a number",
       {"--split-field", "tenure", "--split-member", "5=" + good, "--split-member", "5.0=" + good},
       kSuccess,
       "warning: key \"5.0\" stands twice"},
      {"key of a wrong length",
       {"--split-field", "contract", "--split-member", "monthly=" + good, "--split-member", "yearly,5=" + good},
       kSuccess,
       "warning: key \"yearly,5\" has 2 values for 1 split fields"},
      {"key that is no number",
       {"--split-field", "charges", "--split-member", "dear=" + good},
       kBadUsage,
       "\"dear\" is no number, as the field \"charges\" is"},
      {"key that no member has",
       {"--split-field", "contract", "--split-member", "yearly=" + good},
       kSomeRowsFailed,
       "row 1 (line 2): status 260009 "},
      {"split field that the table lacks",
       {"--split-field", "town", "--split-member", "Bern=" + good},
       kSomeRowsFailed,
       "warning: no column for \"town\""},
      {"members beside a document", {good, "--member", "a=" + good}, kBadUsage, "stands beside members"},
      {"both compositions",
       {"--member", "a=" + good, "--split-field", "b", "--split-member", "c=" + good},
       kBadUsage,
       "exclude each other"},
      {"split field alone", {"--split-field", "contract"}, kBadUsage, "need each other"},
  };
  for (const CompositeCase& c : kCases) {
    SCOPED_TRACE(c.name);
    std::vector<std::string> arguments = {"score", "--no-input", "--outputs", "prediction"};
    arguments.insert(arguments.end(), c.arguments.begin(), c.arguments.end());
    arguments.push_back("-");
    const Outcome run = RunKelscore(arguments, kRows);
    EXPECT_EQ(run.status, c.status) << run.err;
    EXPECT_THAT(run.err, HasSubstr("kelscore: "));
    EXPECT_THAT(run.err, HasSubstr(c.message));
    if (c.status == kSuccess) {
      EXPECT_THAT(run.out, EndsWith("\nyes\n"));
    }
  }
}

struct SettingsCase {
  const char* name;
  const char* settings;
  ExitStatus status;
  const char* message;
};

const SettingsCase kSettings[] = {
    {"no XML", "modelDll = TreeModel", kNoModel, "no settings: not well-formed XML, line 1, column "},
    {"empty", "", kNoModel, "no settings: not well-formed XML, line 1, column "},
    {"parameter without a name", "<s><Parameter name='a' value='b'/><Parameter value='c'/></s>", kNoModel,
     "no settings: status 108 "},
    {"no documents", "<s/>", kNoModel, "no model: status 260003 "},
    {"an empty path", "<s><Parameter name='scoring_pmmlFiles'><ListValue><Value value=''/></ListValue></Parameter></s>",
     kNoModel, "no model: status 260003 "},
    {"a document that isn't there",
     "<s><Parameter name='scoring_pmmlFiles'><ListValue><Value value='no.pmml'/></ListValue></Parameter></s>", kNoModel,
     "/no.pmml: no model: status 260004 "},
    {"a document in the middle that isn't there",
     "<s><Parameter name='scoring_pmmlFiles'><ListValue><Value value='churn.pmml'/><Value value='no.pmml'/>"
     "<Value value='churn.pmml'/></ListValue></Parameter><Parameter name='scoring_modelIDs'><ListValue>"
     "<Value value='a'/><Value value='b'/><Value value='c'/></ListValue></Parameter></s>",
     kNoModel, "/no.pmml: no model: status 260004 "},
    {"a malformed document in the middle",
     "<s><Parameter name='scoring_pmmlFiles'><ListValue><Value value='churn.pmml'/><Value value='settings.xml'/>"
     "<Value value='churn.pmml'/></ListValue></Parameter><Parameter name='scoring_modelIDs'><ListValue>"
     "<Value value='a'/><Value value='b'/><Value value='c'/></ListValue></Parameter></s>",
     kNoModel, "/settings.xml: no model: status 260010 "},
    {"an identifier twice",
     "<s><Parameter name='scoring_pmmlFiles'><ListValue><Value value='churn.pmml'/><Value value='churn.pmml'/>"
     "</ListValue></Parameter><Parameter name='scoring_modelIDs'><ListValue><Value value='a'/><Value value='a'/>"
     "</ListValue></Parameter></s>",
     kSuccess, "warning: identifier \"a\" stands twice"},
    {"more identifiers than documents",
     "<s><Parameter name='scoring_pmmlFiles'><ListValue><Value value='churn.pmml'/><Value value='churn.pmml'/>"
     "</ListValue></Parameter><Parameter name='scoring_modelIDs'><ListValue><Value value='a'/><Value value='b'/>"
     "<Value value='c'/></ListValue></Parameter></s>",
     kNoModel, "no model: status 260003 "},
    {"an ensemble of nothing", "<s><Parameter name='scoring_modelIDs'><ListValue/></Parameter></s>", kNoModel,
     "the model can't tell its outputs: status 260009 "},
    {"more documents than identifiers",
     "<s><Parameter name='scoring_pmmlFiles'><ListValue><Value value='churn.pmml'/><Value value='no.pmml'/>"
     "</ListValue></Parameter><Parameter name='scoring_modelIDs'><ListValue><Value value='a'/></ListValue></Parameter>"
     "</s>",
     kSuccess, "warning: documents without an identifier are ignored"},
    {"identifiers for one document",
     "<s><Parameter name='scoring_pmmlFiles'><ListValue><Value value='churn.pmml'/></ListValue></Parameter>"
     "<Parameter name='scoring_modelIDs'><ListValue><Value value='a'/><Value value='b'/></ListValue></Parameter></s>",
     kSuccess, "the identifiers are ignored"},
};

TEST(BadSettings, AnyOfThem_IsRefusedOrWarnedOf) {
  const TestFolder folder;
  folder.Write("churn.pmml", Churn());
  for (const SettingsCase& c : kSettings) {
    SCOPED_TRACE(c.name);
    const Outcome run =
        RunKelscore({"score", "-", "--settings", folder.Write("settings.xml", c.settings), "--no-input"}, kRows);
    EXPECT_EQ(run.status, c.status) << run.err;
    EXPECT_THAT(run.err, HasSubstr(c.message));
    EXPECT_TRUE(IsOneLine(run.err)) << run.err;
  }
  EXPECT_EQ(RunKelscore({"score", "-", "--settings", folder.PathOf("nowhere.xml")}, kRows).status, kNoModel);
}

struct TableCase {
  const char* name;
  const char* table;
  ExitStatus status;
  const char* message;
};

const TableCase kBadTables[] = {
    {"empty", "", kInputOutputFailed, "is empty, not even a header row is there"},
    {"duplicate column", "tenure,tenure\n1,2\n", kInputOutputFailed, "column \"tenure\" stands twice in the header"},
    {"stray quote", "tenure,contract,charges,complaints\n5,mon\"thly,9,1\n", kInputOutputFailed,
     "the row that starts in line 2 has a stray quote"},
    {"open quote", "tenure,contract,charges,complaints\n\"5,monthly,9,1\n", kInputOutputFailed,
     "the row that starts in line 2 has a quote that is never closed"},
    {"too few fields", "tenure,contract,charges,complaints\n5,monthly\n", kSomeRowsFailed,
     "row 1 (line 2): has 2 fields where the header has 4; stopped before this row"},
    {"too many fields", "tenure,contract,charges,complaints\n5,monthly,9,1,1\n", kSomeRowsFailed,
     "row 1 (line 2): has 5 fields where the header has 4; stopped before this row"},
    {"text in a numeric field", "tenure,contract,charges,complaints\n5,monthly,9,\"a\nfew\"\n", kSomeRowsFailed,
     "row 1 (line 2): field \"complaints\": \"a\\nfew\" is not a finite number"},
};

TEST(BadTable, AnyOfThem_IsToldWithItsPlace) {
  const TestFolder folder;
  for (const TableCase& c : kBadTables) {
    for (const char* threads : {"1", "3"}) {
      SCOPED_TRACE(std::string(c.name) + ", threads " + threads);
      const std::string path = folder.Write("data.csv", c.table);
      const Outcome run = RunKelscore({"score", Example("tree/churn.pmml"), path, "--threads", threads});
      EXPECT_EQ(run.status, c.status);
      EXPECT_THAT(run.err, HasSubstr("kelscore: " + path + ": " + c.message));
    }
  }
}

TEST(BadTable, FileThatCantBeRead_IsNamed) {
  const TestFolder folder;
  for (const std::string& path : {folder.PathOf("nowhere.csv"), folder.PathOf("")}) {
    const Outcome run = RunKelscore({"score", Example("tree/churn.pmml"), path});
    EXPECT_EQ(run.status, kInputOutputFailed);
    EXPECT_THAT(run.err, StartsWith("kelscore: " + path + ": can't be "));
    EXPECT_TRUE(IsOneLine(run.err));
  }
}

TEST(BadOutput, UnwritableFile_FailsBeforeAnythingIsScored) {
  const TestFolder folder;
  for (const std::string& path : {folder.PathOf("no/such/folder.csv"), folder.PathOf("")}) {
    const Outcome run = RunKelscore({"score", Example("tree/churn.pmml"), "-", "-o", path}, kRows);
    EXPECT_EQ(run.status, kInputOutputFailed);
    EXPECT_THAT(run.err, StartsWith("kelscore: " + path + ": can't be opened for writing: "));
    EXPECT_TRUE(IsOneLine(run.err));
  }
}

TEST(BadOutput, FullDisk_IsTold) {
  for (const char* threads : {"1", "3"}) {
    const std::vector<std::string> arguments = {"score", Example("tree/churn.pmml"), "-", "--threads", threads};
    const Outcome toOutput = RunKelscore(arguments, kRows, OutputKind::kFullDisk);
    EXPECT_EQ(toOutput.status, kInputOutputFailed);
    EXPECT_EQ(toOutput.err,
              "kelscore: standard output: can't be written, what it holds is incomplete: No space left on device\n");
    std::vector<std::string> withFile = arguments;
    withFile.insert(withFile.end(), {"-o", "/dev/full"});
    const Outcome toFile = RunKelscore(withFile, kRows);
    EXPECT_EQ(toFile.status, kInputOutputFailed);
    EXPECT_THAT(toFile.err, HasSubstr("/dev/full: can't be written"));
  }
  const Outcome describe = RunKelscore({"describe", Example("tree/churn.pmml")}, "", OutputKind::kFullDisk);
  EXPECT_EQ(describe.status, kInputOutputFailed);
}

TEST(BadOutput, ClosedPipe_EndsQuietly) {
  for (const char* threads : {"1", "3"}) {
    const Outcome run =
        RunKelscore({"score", Example("tree/churn.pmml"), "-", "--threads", threads}, kRows, OutputKind::kClosedPipe);
    EXPECT_EQ(run.status, kInputOutputFailed);
    EXPECT_EQ(run.err, "");
  }
}

TEST(BadOutput, FileThatIsRead_IsNotOverwritten) {
  const TestFolder folder;
  const std::string table = folder.Write("data.csv", kRows);
  const std::string model = folder.Write("model.pmml", Churn());
  for (const std::string& output : {table, model, folder.PathOf("./data.csv")}) {
    const Outcome run = RunKelscore({"score", model, table, "-o", output});
    EXPECT_EQ(run.status, kBadUsage);
    EXPECT_THAT(run.err, HasSubstr("would be overwritten while it is needed"));
  }
  const Outcome byStandardInput = RunKelscore({"score", model, "-", "-o", folder.PathOf("in")}, kRows, folder);
  EXPECT_EQ(byStandardInput.status, kBadUsage);
  EXPECT_EQ(ReadFile(folder.PathOf("in")), kRows);
  EXPECT_EQ(ReadFile(table), kRows);
  EXPECT_EQ(ReadFile(model), Churn());
}

TEST(BadUsage, AnyOfThem_IsOneLineAndStatusTwo) {
  const std::vector<std::string> kCases[] = {
      {"score"},
      {"score", Example("tree/churn.pmml")},
      {"score", Example("tree/churn.pmml"), "-", "--outputs", "frobnication"},
      {"frobnicate"},
      {"describe", Example("tree/churn.pmml"), "--format", "yaml"},
  };
  for (const std::vector<std::string>& arguments : kCases) {
    const Outcome run = RunKelscore(arguments, kRows);
    EXPECT_EQ(run.status, kBadUsage);
    EXPECT_THAT(run.err, StartsWith("kelscore: "));
    EXPECT_TRUE(IsOneLine(run.err)) << run.err;
  }
}

}  // namespace
}  // namespace kelscore
