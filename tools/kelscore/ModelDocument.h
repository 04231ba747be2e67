#pragma once

#include <string>
#include <vector>

#include "scoring/common/KelVarList.h"
#include "tools/kelscore/ModelField.h"

namespace kelscore {

/// What can be known of one document without its scorer.
struct ModelDocument {
  std::string path;
  std::string element;  ///< of the model; empty if it has none that is listed, as are the others then
  std::string name;
  std::string id;
  std::string function;
  std::string algorithm;
  std::string pmmlVersion;
  std::string application;
  std::string applicationVersion;
  std::string ensembleMethod;        ///< empty when the document holds no segments
  KelXML_1_3::KelVarList variables;  ///< with their roles
  DataFields dataFields;
  std::vector<std::string> derivedFields;  ///< of the transformation dictionary
};

/// Reads a document's head and dictionaries. One that can't be read leaves the parts empty that come behind its
/// fault: whether it makes a model is for the library to say. The XML platform must be up.
[[nodiscard]] ModelDocument ReadModelDocument(const std::string& path, const std::vector<std::string>& modelElements);

}  // namespace kelscore
