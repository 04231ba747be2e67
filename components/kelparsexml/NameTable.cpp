#include "components/kelparsexml/NameTable.h"

#include <utility>

#include "components/kelparsexml/Utf8.h"

namespace KelXML_1_3 {

NameTable::Id NameTable::Intern(const char16_t* name, Id guess) { return Is(name, guess) ? guess : FindOrAdd(name); }

NameTable::Id NameTable::FindOrAdd(const char16_t* name) {
  std::string text = ToUtf8(name);
  if (const auto found = fIds.find(text); found != fIds.end()) return found->second;
  const auto id = static_cast<Id>(fNames.size());
  fNames.push_back(fTexts.emplace_back(std::move(text)));
  fIds.emplace(fNames.back(), id);
  return id;
}

}  // namespace KelXML_1_3
