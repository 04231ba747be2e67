#include <csignal>
#include <exception>
#include <variant>

#include "tools/kelscore/Arguments.h"
#include "tools/kelscore/Console.h"
#include "tools/kelscore/DescribeCommand.h"
#include "tools/kelscore/Failure.h"
#include "tools/kelscore/ScoreCommand.h"
#include "tools/kelscore/VerifyCommand.h"

namespace {

using kelscore::Console;
using kelscore::DescribeArguments;
using kelscore::ScoreArguments;
using kelscore::VerifyArguments;

struct Runner {
  Console& console;

  int operator()(std::monostate) const { return kelscore::kSuccess; }
  int operator()(const ScoreArguments& arguments) const { return RunScore(arguments, console); }
  int operator()(const DescribeArguments& arguments) const { return RunDescribe(arguments, console); }
  int operator()(const VerifyArguments& arguments) const { return RunVerify(arguments, console); }
};

}  // namespace

int main(int count, char** arguments) {
  // A reader that goes away shows as a failed write.
  std::signal(SIGPIPE, SIG_IGN);
  Console console;
  try {
    return std::visit(Runner{console}, kelscore::ReadArguments(count, arguments));
  } catch (const kelscore::Failure& failure) {
    if (!failure.Message().empty()) console.Tell(failure.Message());
    return failure.Status();
  } catch (const std::exception& error) {
    console.Tell(error.what());
    return kelscore::kInputOutputFailed;
  }
}
