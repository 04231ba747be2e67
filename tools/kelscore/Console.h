#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace kelscore {

/// What the program says on standard error: lines for failures and warnings, and the progress of a long run when that
/// is a terminal. One thread uses it at a time.
class Console {
 public:
  Console();

  /// Writes "kelscore: ", the text and a line feed, in one piece.
  void Tell(const std::string& text);
  /// Shows how far a run is, a few times per second.
  void ShowProgress(std::uint64_t rows);
  /// Takes the progress away.
  void ClearProgress();

 private:
  bool fTerminal;
  bool fProgressShown = false;
  std::chrono::steady_clock::time_point fNextProgress;
};

}  // namespace kelscore
