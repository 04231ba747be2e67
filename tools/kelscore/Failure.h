#pragma once

#include <exception>
#include <string>
#include <utility>

namespace kelscore {

/// What the program ends with.
enum ExitStatus : int {
  kSuccess = 0,
  kSomeRowsFailed = 1,
  kBadUsage = 2,
  kNoModel = 3,
  kInputOutputFailed = 4,
};

/// Ends the run with an exit status and one line for standard error. An empty message ends it quietly.
class Failure : public std::exception {
 public:
  Failure(ExitStatus status, std::string message) : fStatus(status), fMessage(std::move(message)) {}

  [[nodiscard]] ExitStatus Status() const noexcept { return fStatus; }
  [[nodiscard]] const std::string& Message() const noexcept { return fMessage; }
  [[nodiscard]] const char* what() const noexcept override { return fMessage.c_str(); }

 private:
  ExitStatus fStatus;
  std::string fMessage;
};

}  // namespace kelscore
