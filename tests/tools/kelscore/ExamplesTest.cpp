#include <gtest/gtest.h>
#include <sstream>

#include "tests/tools/kelscore/Program.h"

namespace kelscore {
namespace {

using Words = std::vector<std::string>;

// The words of each line that begins with "kelscore", with the lines that continue it. Paths are those of the examples.
std::vector<Words> CommandsOf(const std::string& page) {
  std::vector<Words> commands;
  bool continues = false;
  std::istringstream lines(page);
  for (std::string line; std::getline(lines, line);) {
    if (!continues && !line.starts_with("kelscore ")) continue;
    if (!continues) commands.emplace_back();
    continues = false;
    std::istringstream words(line);
    for (std::string word; words >> word;) {
      const std::size_t folder = word.find("examples/");
      if (folder != std::string::npos) word = word.substr(0, folder) + Example(word.substr(folder + 9));
      continues = word == "\\";
      if (!continues) commands.back().push_back(word);
    }
    if (commands.back().front() == "kelscore") commands.back().erase(commands.back().begin());
  }
  return commands;
}

TEST(Examples, EveryCommandOfThePage_RunsWithoutAWord) {
  const std::vector<Words> commands = CommandsOf(ReadFile(Example("README.md")));
  EXPECT_GE(commands.size(), 8U);
  for (const Words& command : commands) {
    SCOPED_TRACE(testing::PrintToString(command));
    const Outcome run = RunKelscore(command);
    EXPECT_EQ(run.status, 0);
    EXPECT_NE(run.out, "");
    EXPECT_EQ(run.err, "");
  }
}

}  // namespace
}  // namespace kelscore
