#pragma once

#include <string>
#include <vector>

#include "tests/plugins/torvane/ModelHarness.h"

namespace TorvaneTest {

/// What documents of ensembles are put together from. The fields are those of the harness.

/// Of a "Segmentation": models without a result are passed over.
inline constexpr char kSkip[] = "missingPredictionTreatment=\"skipSegment\"";

std::string Schema(const std::string& fields);
std::string Fields(const std::vector<std::string>& names);
/// Gives intercept + field; missing if the field is. `head` is what stands before the table.
std::string Linear(const std::string& intercept, const std::string& field = "", const std::string& head = "");
/// Gives the score with probabilities of yes, no and maybe; missing if `predicate` isn't true.
std::string Leaf(const std::string& score, const std::vector<std::string>& shares = {},
                 const std::string& predicate = "<True/>", const std::string& head = "");
std::string When(const std::string& field, const std::string& comparison, const std::string& value);
std::string Segment(const std::string& model, const std::string& attributes = "",
                    const std::string& predicate = "<True/>");
std::string Segmentation(const std::string& method, const std::string& segments, const std::string& further = "");
std::string Nested(const std::string& function, const std::string& body, const std::string& schema = "");
std::string Predicted(const std::string& name);
Document Ensemble(const std::string& function, const std::string& body);
/// The result of a segment of a "selectAll".
std::string Part(const ValueRecord& out, const std::string& id);

}  // namespace TorvaneTest
