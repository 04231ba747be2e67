#include "components/kelparsexml/NameTable.h"

#include "components/kelparsexml/Utf8.h"

namespace KelXML_1_3 {

NameTable::Id NameTable::Intern(const char16_t* name, Id guess) { return Is(name, guess) ? guess : FindOrAdd(name); }

// Unit by unit, so a name that isn't ASCII is never recognised here and takes the long way.
bool NameTable::Is(const char16_t* name, Id id) const noexcept {
  if (id >= fNames.size()) return false;
  for (const char c : fNames[id]) {
    if (*name++ != static_cast<char16_t>(c)) return false;
  }
  return *name == 0;
}

NameTable::Id NameTable::FindOrAdd(const char16_t* name) {
  std::string text = ToUtf8(name);
  if (const auto found = fIds.find(text); found != fIds.end()) return found->second;
  const auto id = static_cast<Id>(fNames.size());
  fIds.emplace(fNames.emplace_back(std::move(text)), id);
  return id;
}

}  // namespace KelXML_1_3
