#include "components/kelparsexml/PmmlError.h"

namespace KelXML_1_3 {

PmmlError::PmmlError(const std::string& reason) : std::runtime_error(reason) {}
PmmlError::~PmmlError() = default;

}  // namespace KelXML_1_3
