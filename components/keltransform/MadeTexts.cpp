#include "components/keltransform/MadeTexts.h"

namespace KelTransformNS {

MadeTexts& MadeTexts::OfThisThread() {
  thread_local MadeTexts texts;
  return texts;
}

void MadeTexts::ReleaseTo(std::size_t mark) noexcept {
  while (fOpen > mark) {
    std::string& text = fTexts[--fOpen];
    fBytes -= text.size();
    if (text.capacity() > kMaxKeptBytes) std::string().swap(text);
  }
}

std::string& MadeTexts::Next() {
  if (fOpen == fTexts.size()) fTexts.emplace_back();
  fTexts[fOpen].clear();
  return fTexts[fOpen];
}

}  // namespace KelTransformNS
