#include "components/kelparsexml/ElementTree.h"

#include "components/kelparsexml/ElementStorage.h"

namespace KelXML_1_3 {

ElementTree::ElementTree() : fStorage(std::make_unique<Storage>()) {}
ElementTree::~ElementTree() = default;

Element ElementTree::Root() const noexcept { return {this, 0}; }

std::string_view Element::Name() const noexcept {
  if (fTree == nullptr) return {};
  const ElementTree::Storage& storage = *fTree->fStorage;
  return storage.names.Get(storage.elements[fIndex].name);
}

std::optional<std::string_view> Element::Attribute(std::string_view name) const noexcept {
  if (fTree == nullptr) return std::nullopt;
  const ElementTree::Storage& storage = *fTree->fStorage;
  const std::size_t end = storage.AttributesEnd(fIndex);
  for (std::size_t i = storage.elements[fIndex].firstAttribute; i != end; ++i) {
    const AttributeRecord& attribute = storage.attributes[i];
    if (storage.names.Get(attribute.name) == name) return storage.texts.Get(attribute.value);
  }
  return std::nullopt;
}

int Element::AttributeCount() const noexcept {
  if (fTree == nullptr) return 0;
  const ElementTree::Storage& storage = *fTree->fStorage;
  return static_cast<int>(storage.AttributesEnd(fIndex) - storage.elements[fIndex].firstAttribute);
}

std::string_view Element::AttributeName(int index) const noexcept {
  if (index < 0 || index >= AttributeCount()) return {};
  const ElementTree::Storage& storage = *fTree->fStorage;
  const std::size_t first = storage.elements[fIndex].firstAttribute;
  return storage.names.Get(storage.attributes[first + static_cast<std::size_t>(index)].name);
}

std::string_view Element::AttributeValue(int index) const noexcept {
  if (index < 0 || index >= AttributeCount()) return {};
  const ElementTree::Storage& storage = *fTree->fStorage;
  const std::size_t first = storage.elements[fIndex].firstAttribute;
  return storage.texts.Get(storage.attributes[first + static_cast<std::size_t>(index)].value);
}

std::string_view Element::Text() const noexcept {
  if (fTree == nullptr) return {};
  return fTree->fStorage->texts.Get(fTree->fStorage->elements[fIndex].text);
}

int Element::Line() const noexcept {
  return fTree == nullptr ? 0 : static_cast<int>(fTree->fStorage->elements[fIndex].line);
}

Element Element::FirstChild() const noexcept {
  if (fTree == nullptr || fTree->fStorage->elements[fIndex].hasChildren == 0) return {};
  return {fTree, fIndex + 1};
}

Element Element::NextSibling() const noexcept {
  if (fTree == nullptr) return {};
  const std::uint32_t next = fTree->fStorage->elements[fIndex].nextSibling;
  return next == 0 ? Element() : Element(fTree, next);
}

Element Element::Child(std::string_view name) const noexcept {
  const Element child = FirstChild();
  return !child || child.Is(name) ? child : child.Next(name);
}

Element Element::Next(std::string_view name) const noexcept {
  Element sibling = NextSibling();
  while (sibling && !sibling.Is(name)) sibling = sibling.NextSibling();
  return sibling;
}

}  // namespace KelXML_1_3
