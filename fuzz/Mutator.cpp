#include "fuzz/Mutator.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

#include "components/kelparsexml/ElementTree.h"

namespace KelFuzz {
namespace {

constexpr std::size_t kMostChanges = 6;
// A document that grows beyond this is no longer taken more of.
constexpr std::size_t kMostElements = 5'000;

const char* const kNumbers[] = {"0",
                                "-0",
                                "1",
                                "-1",
                                "2",
                                "3",
                                "7",
                                "0.5",
                                "1.5",
                                "-2.5",
                                "1e-9",
                                "1e300",
                                "-1e300",
                                "1e400",
                                "5e-324",
                                "1.7976931348623157e308",
                                "-1.7976931348623157e308",
                                "2147483647",
                                "2147483648",
                                "-2147483648",
                                "4294967295",
                                "4294967296",
                                "9007199254740993",
                                "18446744073709551616",
                                "NaN",
                                "INF",
                                "-INF",
                                "1000000",
                                "0x10",
                                "1,5",
                                "",
                                " 1 "};

const char* const kWords[] = {"",
                              "true",
                              "false",
                              "yes",
                              "no",
                              "string",
                              "integer",
                              "double",
                              "float",
                              "date",
                              "dateTime",
                              "continuous",
                              "ordinal",
                              "categorical",
                              "missing",
                              "*",
                              "3.0",
                              "3.2",
                              "4.0",
                              "4.2",
                              "4.4",
                              "regression",
                              "1 2 3",
                              "\"a b\"",
                              "\n",
                              "x",
                              "y",
                              "clustering",
                              "classification",
                              "\xF0\x9F\x8D\x80"};

template <typename T, std::size_t kCount>
const T& PickOf(Random& random, const T (&items)[kCount]) {
  return items[random.Below(kCount)];
}

bool IsNumber(const std::string& text) { return KelXML_1_3::ParsePmmlNumber(text).has_value(); }

std::vector<std::string> Split(const std::string& text) {
  std::vector<std::string> items(1);
  for (const char c : text) {
    if (c == ' ' || c == '\n' || c == '\t' || c == '\r') {
      if (!items.back().empty()) items.emplace_back();
    } else {
      items.back() += c;
    }
  }
  if (items.back().empty()) items.pop_back();
  return items;
}

std::string Join(const std::vector<std::string>& items) {
  std::string text;
  for (const std::string& item : items) text.append(text.empty() ? "" : " ").append(item);
  return text;
}

bool Contains(Markup& outer, const Markup* inner) {
  const std::vector<Markup*> elements = AllElements(outer);
  return std::find(elements.begin(), elements.end(), inner) != elements.end();
}

}  // namespace

// Only what is in the root is pointed to: the root itself moves when the list of donors grows.
void Mutator::AddDonor(Markup document) {
  Donor& donor = fDonors.emplace_back();
  donor.root = std::move(document);
  donor.elements = AllElements(donor.root);
  donor.elements.erase(donor.elements.begin());
  if (donor.elements.empty()) fDonors.pop_back();
}

void Mutator::Mutate(Markup& root) {
  for (std::size_t count = 1 + fRandom.Below(kMostChanges); count > 0; --count) MutateOnce(root);
}

void Mutator::MutateOnce(Markup& root) {
  using Change = void (Mutator::*)(Elements&);
  // Those that stand there twice are done more often: they keep documents nearer to ones that can be scored.
  static constexpr Change kChanges[] = {&Mutator::ChangeAttribute,
                                        &Mutator::ChangeAttribute,
                                        &Mutator::ChangeAttribute,
                                        &Mutator::ChangeAttribute,
                                        &Mutator::ChangeText,
                                        &Mutator::ChangeText,
                                        &Mutator::DeleteAttribute,
                                        &Mutator::TakeAttribute,
                                        &Mutator::TakeAttribute,
                                        &Mutator::DeleteChild,
                                        &Mutator::DoubleChild,
                                        &Mutator::SwapElements,
                                        &Mutator::TakeElement,
                                        &Mutator::TakeElement,
                                        &Mutator::InsertElement,
                                        &Mutator::Rename,
                                        &Mutator::Nest};
  Elements elements = AllElements(root);
  (this->*PickOf(fRandom, kChanges))(elements);
}

void Mutator::ChangeAttribute(Elements& elements) {
  for (int attempt = 0; attempt < 8; ++attempt) {
    Markup* const element = fRandom.Pick(elements);
    if (element->attributes.empty()) continue;
    auto& [name, value] = fRandom.Pick(element->attributes);
    value = ChangedValue(elements, name, value);
    return;
  }
}

std::string Mutator::ChangedValue(Elements& elements, const std::string& attribute, const std::string& value) {
  switch (fRandom.Below(8)) {
    case 0:
      return PickOf(fRandom, kWords);
    case 1:
      return PickOf(fRandom, kNumbers);
    case 2:
      return value.substr(0, fRandom.Below(value.size() + 1));
    case 3:
      return value + value;
    default:
      return IsNumber(value) && fRandom.OneIn(2) ? PickOf(fRandom, kNumbers) : WordOf(elements, attribute);
  }
}

// A value that the attribute, or one that names a field, has elsewhere.
std::string Mutator::WordOf(Elements& elements, const std::string& attribute) {
  std::string word = PickOf(fRandom, kWords);
  const std::string wanted = attribute == "field" || attribute == "fieldName" ? "name" : attribute;
  for (int attempt = 0; attempt < 40; ++attempt) {
    const Markup* const element = fRandom.Pick(DonorElements(elements));
    for (const auto& [name, value] : element->attributes) {
      if (name == wanted || name == attribute) word = value;
    }
  }
  return word;
}

void Mutator::DeleteAttribute(Elements& elements) {
  Markup* const element = fRandom.Pick(elements);
  if (element->attributes.empty()) return;
  element->attributes.erase(element->attributes.begin() +
                            static_cast<std::ptrdiff_t>(fRandom.Below(element->attributes.size())));
}

// An attribute that an element of the same name has elsewhere.
void Mutator::TakeAttribute(Elements& elements) {
  Markup* const element = fRandom.Pick(elements);
  const Markup* const other = PickNamed(DonorElements(elements), element->name);
  if (other == nullptr || other->attributes.empty()) return;
  const auto attribute = fRandom.Pick(other->attributes);
  for (auto& [name, value] : element->attributes) {
    if (name != attribute.first) continue;
    value = attribute.second;
    return;
  }
  element->attributes.push_back(attribute);
}

void Mutator::ChangeText(Elements& elements) {
  Elements withText;
  std::copy_if(elements.begin(), elements.end(), std::back_inserter(withText),
               [](const Markup* element) { return !element->text.empty(); });
  if (withText.empty()) return ChangeAttribute(elements);
  std::string& text = fRandom.Pick(withText)->text;
  std::vector<std::string> items = Split(text);
  if (items.empty()) {
    text = PickOf(fRandom, kNumbers);
    return;
  }
  const std::size_t place = fRandom.Below(items.size());
  switch (fRandom.Below(4)) {
    case 0:
      items.erase(items.begin() + static_cast<std::ptrdiff_t>(place));
      break;
    case 1:
      items.push_back(items[place]);
      break;
    case 2:
      items.resize(place);
      break;
    default:
      items[place] = IsNumber(items[place]) ? PickOf(fRandom, kNumbers) : PickOf(fRandom, kWords);
  }
  text = Join(items);
}

void Mutator::DeleteChild(Elements& elements) {
  Markup* const parent = PickParent(elements);
  if (parent == nullptr) return;
  parent->children.erase(parent->children.begin() +
                         static_cast<std::ptrdiff_t>(fRandom.Below(parent->children.size())));
}

void Mutator::DoubleChild(Elements& elements) {
  Markup* const parent = PickParent(elements);
  if (parent == nullptr || elements.size() > kMostElements) return;
  const Markup copy = fRandom.Pick(parent->children);
  const std::size_t count = fRandom.OneIn(8) ? 20 : 1;
  parent->children.insert(
      parent->children.begin() + static_cast<std::ptrdiff_t>(fRandom.Below(parent->children.size() + 1)), count, copy);
}

void Mutator::SwapElements(Elements& elements) {
  Markup* const one = fRandom.Pick(elements);
  Markup* const parent = PickParent(elements);
  Markup* const other =
      fRandom.OneIn(2) || parent == nullptr ? fRandom.Pick(elements) : &fRandom.Pick(parent->children);
  if (Contains(*one, other) || Contains(*other, one)) return;
  std::swap(*one, *other);
}

// Another element of the same name instead of one.
void Mutator::TakeElement(Elements& elements) {
  Markup* const element = fRandom.Pick(elements);
  if (element == elements.front() || elements.size() > kMostElements) return;
  const Markup* const other = PickNamed(DonorElements(elements), element->name);
  if (other != nullptr && !Contains(*element, other)) *element = Markup(*other);
}

// An element among the children of another one, where elements of its name stand elsewhere if possible.
void Mutator::InsertElement(Elements& elements) {
  Markup* const parent = fRandom.Pick(elements);
  if (elements.size() > kMostElements) return;
  Markup* const model = PickNamed(DonorElements(elements), parent->name);
  const Markup copy = model != nullptr && !model->children.empty() && !fRandom.OneIn(4)
                          ? fRandom.Pick(model->children)
                          : *fRandom.Pick(DonorElements(elements));
  parent->children.insert(
      parent->children.begin() + static_cast<std::ptrdiff_t>(fRandom.Below(parent->children.size() + 1)), copy);
}

void Mutator::Rename(Elements& elements) { fRandom.Pick(elements)->name = fRandom.Pick(DonorElements(elements))->name; }

// A copy of an element inside itself.
void Mutator::Nest(Elements& elements) {
  Markup* const element = fRandom.Pick(elements);
  if (element == elements.front() || elements.size() > kMostElements) return;
  const Markup copy = *element;
  for (Markup& child : element->children) {
    if (child.name != element->name) continue;
    child = copy;
    return;
  }
  element->children.push_back(copy);
}

Markup* Mutator::PickNamed(Elements& elements, const std::string& name) {
  const std::size_t start = fRandom.Below(elements.size());
  for (std::size_t i = 0; i < elements.size(); ++i) {
    Markup* const element = elements[(start + i) % elements.size()];
    if (element->name == name) return element;
  }
  return nullptr;
}

Markup* Mutator::PickParent(Elements& elements) {
  for (int attempt = 0; attempt < 20; ++attempt) {
    Markup* const element = fRandom.Pick(elements);
    if (!element->children.empty()) return element;
  }
  return nullptr;
}

// Those of the document itself as often as those of others.
Mutator::Elements& Mutator::DonorElements(Elements& own) {
  return fDonors.empty() || fRandom.OneIn(2) ? own : fRandom.Pick(fDonors).elements;
}

}  // namespace KelFuzz
