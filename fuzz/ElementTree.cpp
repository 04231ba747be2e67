// Reads the bytes as a document and asks each element everything.

#include "components/kelparsexml/ElementTree.h"

#include <cstdint>
#include <cstdlib>
#include <functional>
#include <sstream>
#include <string>
#include <vector>
#include <xercesc/util/PlatformUtils.hpp>

#include "components/kelparsexml/PmmlArray.h"

namespace {

using KelXML_1_3::Element;
using KelXML_1_3::PmmlError;

void Try(const std::function<void()>& read) {
  try {
    read();
  } catch (const PmmlError&) {
  }
}

void Ask(const Element& element) {
  for (int i = 0; i < element.AttributeCount(); ++i) {
    const std::string_view name = element.AttributeName(i);
    if (element.Attribute(name) != element.AttributeValue(i)) std::abort();
    Try([&] { (void)element.Number(name); });
    Try([&] { (void)element.Integer(name); });
    Try([&] { (void)element.Boolean(name, false); });
  }
  Try([&] { (void)KelXML_1_3::ReadStringArray(element); });
  Try([&] { (void)KelXML_1_3::ReadNumberArray(element); });
}

void Walk(const Element& root) {
  std::vector<Element> waiting{root};
  while (!waiting.empty()) {
    const Element element = waiting.back();
    waiting.pop_back();
    Ask(element);
    for (Element child = element.FirstChild(); child; child = child.NextSibling()) waiting.push_back(child);
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  xercesc::XMLPlatformUtils::Initialize();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::istringstream stream(std::string(reinterpret_cast<const char*>(data), size));
  const char* const modelName = size % 2 == 0 ? "" : "TreeModel";
  Try([&] { Walk(KelXML_1_3::ElementTree::Read(stream, modelName)->Root()); });
  return 0;
}
