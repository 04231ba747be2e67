// Reads the bytes as a document by segments and as a whole: both must give the same, or fail for the same reason.

#include "components/kelparsexml/ElementStream.h"

#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>
#include <xercesc/util/PlatformUtils.hpp>

#include "components/kelparsexml/SegmentCursor.h"

namespace {

using KelXML_1_3::Element;
using KelXML_1_3::ElementStream;
using KelXML_1_3::ElementTree;
using KelXML_1_3::PmmlError;
using KelXML_1_3::SegmentCursor;

constexpr char kModel[] = "MiningModel";

Element FindSegmentation(const Element& root) { return root.Child(kModel).Child("Segmentation"); }

void Describe(const Element& element, std::string& text) {
  text.append("<").append(element.Name()).append(" ").append(std::to_string(element.Line()));
  for (int i = 0; i < element.AttributeCount(); ++i) {
    text.append(" ").append(element.AttributeName(i)).append("=").append(element.AttributeValue(i));
  }
  text.append(">").append(element.Text());
}

void DescribeAll(const Element& root, std::string& text) {
  std::vector<Element> waiting{root};
  while (!waiting.empty()) {
    const Element element = waiting.back();
    waiting.pop_back();
    Describe(element, text);
    for (Element child = element.FirstChild(); child; child = child.NextSibling()) waiting.push_back(child);
  }
}

void DescribeSegments(SegmentCursor cursor, std::string& text) {
  for (Element segment = cursor.Next(); segment; segment = cursor.Next()) DescribeAll(segment, text);
}

// The segments, or why there are none to be had. What was read of a document that fails later doesn't count.
std::string ReadStream(const std::string& document) {
  std::istringstream stream(document);
  try {
    const auto elements = ElementStream::Open(stream, kModel);
    std::string text;
    DescribeSegments(SegmentCursor(FindSegmentation(elements->Root()), elements.get()), text);
    Describe(FindSegmentation(elements->Root()), text);
    std::string rest;
    DescribeAll(elements->Root(), rest);
    return text;
  } catch (const PmmlError& error) {
    return error.what();
  }
}

std::string ReadTree(const std::string& document) {
  std::istringstream stream(document);
  try {
    const auto tree = ElementTree::Read(stream, kModel);
    std::string text;
    DescribeSegments(SegmentCursor(FindSegmentation(tree->Root())), text);
    Describe(FindSegmentation(tree->Root()), text);
    return text;
  } catch (const PmmlError& error) {
    return error.what();
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  xercesc::XMLPlatformUtils::Initialize();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string document(reinterpret_cast<const char*>(data), size);
  if (ReadStream(document) != ReadTree(document)) std::abort();
  return 0;
}
