#include "tests/tools/kelscore/Program.h"

#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace kelscore {
namespace {

int OpenOutput(OutputKind kind, const std::string& collected) {
  if (kind == OutputKind::kFullDisk) return ::open("/dev/full", O_WRONLY);
  if (kind == OutputKind::kCollected) return ::open(collected.c_str(), O_WRONLY | O_CREAT, 0600);
  int ends[2];
  if (::pipe(ends) != 0) return -1;
  ::close(ends[0]);
  return ends[1];
}

[[noreturn]] void RunChild(const std::vector<std::string>& arguments, const TestFolder& folder, OutputKind kind) {
  ::dup2(::open(folder.PathOf("in").c_str(), O_RDONLY), STDIN_FILENO);
  ::dup2(OpenOutput(kind, folder.PathOf("out")), STDOUT_FILENO);
  ::dup2(::open(folder.PathOf("err").c_str(), O_WRONLY | O_CREAT, 0600), STDERR_FILENO);
  std::vector<char*> words{const_cast<char*>(KELSCORE_PROGRAM)};
  for (const std::string& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
  words.push_back(nullptr);
  ::execv(KELSCORE_PROGRAM, words.data());
  ::_exit(127);
}

}  // namespace

TestFolder::TestFolder() {
  std::string pattern = (std::filesystem::temp_directory_path() / "kelscore-XXXXXX").string();
  if (!::mkdtemp(pattern.data())) throw std::runtime_error("no folder " + pattern);
  fPath = pattern;
}

TestFolder::~TestFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(fPath, ignored);
}

std::string TestFolder::Write(const std::string& name, const std::string& text) const {
  std::ofstream(PathOf(name), std::ios::binary) << text;
  return PathOf(name);
}

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

Outcome RunKelscore(const std::vector<std::string>& arguments, const std::string& input, OutputKind outputKind) {
  return RunKelscore(arguments, input, TestFolder(), outputKind);
}

Outcome RunKelscore(const std::vector<std::string>& arguments, const std::string& input, const TestFolder& folder,
                    OutputKind outputKind) {
  folder.Write("in", input);
  const pid_t child = ::fork();
  if (child == 0) RunChild(arguments, folder, outputKind);
  int status = 0;
  ::waitpid(child, &status, 0);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadFile(folder.PathOf("out")), ReadFile(folder.PathOf("err"))};
}

std::string Example(const std::string& name) { return std::string(KELSCORE_EXAMPLES) + "/" + name; }

std::vector<std::vector<std::string>> Fields(const std::string& table) {
  std::vector<std::vector<std::string>> rows;
  std::istringstream lines(table);
  for (std::string line; std::getline(lines, line);) {
    rows.emplace_back();
    line += ',';
    std::istringstream fields(line);
    for (std::string field; std::getline(fields, field, ',');) rows.back().push_back(field);
  }
  return rows;
}

}  // namespace kelscore
