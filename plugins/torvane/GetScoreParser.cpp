#include <exception>
#include <istream>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <xercesc/dom/DOMDocument.hpp>
#include <xercesc/dom/DOMElement.hpp>
#include <xercesc/util/XMLString.hpp>

#include "components/kelparsexml/ElementStream.h"
#include "components/kelparsexml/ElementTree.h"
#include "plugins/torvane/DocumentReader.h"
#include "scoring/common/IKelScore.h"
#include "scoring/common/IKelScoreParser.h"
#include "scoring/common/KelDiagnostics.h"
#include "scoring/common/KelExport.h"

namespace Torvane {
namespace {

using KelCommon_1_3::IKelScore;
using KelCommon_1_3::KelDiagnostics;
using KelXML_1_3::ElementStream;
using KelXML_1_3::ElementTree;
using KelXML_1_3::KelSettings;
using KelXML_1_3::KelVarList;
using xercesc::DOMDocument;
using xercesc::DOMElement;

std::string WithoutLine(const std::string& reason) {
  constexpr std::string_view kLine = " line ";
  const std::size_t begin = reason.find(kLine);
  if (begin == std::string::npos) return reason;
  const std::size_t end = reason.find_first_not_of("0123456789", begin + kLine.size());
  return reason.substr(0, begin) + (end == std::string::npos ? std::string() : reason.substr(end));
}

// A refused document is asked for twice, and a DOM knows no lines: the same reason with its line isn't given up.
void Report(const std::string& reason) {
  if (WithoutLine(KelDiagnostics::Last()) != WithoutLine(reason)) KelDiagnostics::Report(reason);
}

// Runs one entry of the contract. Nothing that is thrown leaves the plug-in: the answer is null, and the reason is for
// the host to ask.
template <typename Make>
IKelScore* Guard(Make&& make) noexcept {
  try {
    try {
      return make().release();
    } catch (const std::exception& error) {
      Report(error.what());
    } catch (...) {
      Report("The model can't be read, for an unknown reason");
    }
  } catch (...) {  // there is no memory for a reason
  }
  return nullptr;
}

// A local name of Xerces lacks in documents that were parsed without namespaces.
std::string LocalName(const DOMElement& element) {
  char* const text = xercesc::XMLString::transcode(element.getNodeName());
  std::string name = text == nullptr ? std::string() : text;
  xercesc::XMLString::release(&const_cast<char*&>(text));
  return name.substr(name.find(':') + 1);  // npos + 1 is 0
}

// The search for a model finds elements at any depth. Only the first one of its name right below the root is a model
// of the document: anything deeper is a member of an ensemble, and scoring it alone would be wrong.
void CheckIsModel(const DOMElement& root, const DOMElement& model, const std::string& modelType) {
  const DOMElement* child = root.getFirstElementChild();
  while (child != nullptr && LocalName(*child) != modelType) child = child->getNextElementSibling();
  if (child != &model) throw PmmlError("The document's element <" + modelType + "> isn't its model");
}

class ScoreParser final : public KelScoring_20::IKelScoreParser {
 public:
  IKelScore* CreateScorer(KelSettings& settings, KelVarList& varList, DOMDocument* document,
                          DOMElement* model) override {
    return Guard([&]() -> std::unique_ptr<IKelScore> {
      const std::string modelType = ReadModelType(settings);
      const DOMElement* const root = document == nullptr ? nullptr : document->getDocumentElement();
      if (root == nullptr || model == nullptr) throw PmmlError("There is no document");
      CheckIsModel(*root, *model, modelType);
      const auto tree = ElementTree::FromDom(*root, modelType);
      return MakeScorer(tree->Root(), modelType, settings, varList);
    });
  }

  IKelScore* CreateScorer(KelSettings& settings, KelVarList& varList, std::istream& stream) override {
    return Guard([&]() -> std::unique_ptr<IKelScore> {
      const std::string modelType = ReadModelType(settings);
      stream.clear();
      stream.seekg(0);
      const auto elements = ElementStream::Open(stream, modelType);
      return MakeScorer(elements->Root(), modelType, settings, varList, elements.get());
    });
  }
};

}  // namespace
}  // namespace Torvane

/// The plug-in's one symbol. Null if there is no memory.
extern "C" KEL_EXPORT KelScoring_20::IKelScoreParser* GetScoreParser() {
  try {
    return new Torvane::ScoreParser;
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
