#include "tools/kelscore/Console.h"

#include <cstdio>
#include <unistd.h>

namespace kelscore {
namespace {

constexpr std::chrono::milliseconds kProgressInterval(250);

void Write(const std::string& text) { std::fwrite(text.data(), 1, text.size(), stderr); }

}  // namespace

Console::Console()
    : fTerminal(::isatty(STDERR_FILENO) == 1), fNextProgress(std::chrono::steady_clock::now() + kProgressInterval) {}

void Console::Tell(const std::string& text) {
  ClearProgress();
  Write("kelscore: " + text + "\n");
}

void Console::ShowProgress(std::uint64_t rows) {
  if (!fTerminal || std::chrono::steady_clock::now() < fNextProgress) return;
  fNextProgress = std::chrono::steady_clock::now() + kProgressInterval;
  Write(std::string("\r").append(std::to_string(rows)).append(" rows"));
  fProgressShown = true;
}

void Console::ClearProgress() {
  if (fProgressShown) Write("\r\x1b[K");
  fProgressShown = false;
}

}  // namespace kelscore
