#include "scoring/common/KelDisplay.h"

#include <atomic>
#include <iostream>

namespace KelDisplay_1_3 {
namespace {

std::atomic<std::ostream*> redirected{nullptr};

std::ostream& Stream() {
  std::ostream* const stream = redirected.load();
  return stream != nullptr ? *stream : std::cout;
}

}  // namespace

void DisplayS(const std::string& label, const std::string& text) { Stream() << label << ": " << text << '\n'; }

// Through text, because a stream may group digits after its locale.
void DisplayI(const std::string& label, int number) { DisplayS(label, std::to_string(number)); }

void DisplayText(int level, const std::string& text) {
  for (int i = 0; i < level; ++i) Stream() << "  ";
  Stream() << text;
}

void SetDisplayStream(std::ostream* stream) { redirected = stream; }

}  // namespace KelDisplay_1_3
