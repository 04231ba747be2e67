#pragma once

#include <string>
#include <vector>

#include "scoring/common/KelSettings.h"
#include "tools/kelscore/Arguments.h"
#include "tools/kelscore/Console.h"
#include "tools/kelscore/ModelField.h"

namespace kelscore {

/// A member of a composite model as people know it.
struct Member {
  std::string id;                ///< of an ensemble
  std::vector<std::string> key;  ///< of a split model
  std::string path;
};

/// The members that the arguments name, or else the settings, in the order of their documents; none for a single
/// document. Settings may name documents that the library doesn't read, or identifiers that it doesn't look at: that
/// is told.
[[nodiscard]] std::vector<Member> FindMembers(const ModelArguments& arguments, const KelXML_1_3::KelSettings& settings,
                                              Console& console);

/// Tells of identifiers that stand twice. The library takes them, and the later member's outputs replace the others.
void WarnOfIdentifiers(const std::vector<Member>& members, Console& console);

/// Writes an ensemble or a split model of the arguments into the settings. Keys become values as the split fields of
/// a table do. Tells of keys that the library takes, and that never pick their member: one that stands twice, and one
/// that no record can have. Throws `Failure` (bad usage) for a key that is no value of its field.
void AddMembers(const ModelArguments& arguments, const std::vector<ModelField>& fields,
                KelXML_1_3::KelSettings& settings, Console& console);

}  // namespace kelscore
