#pragma once

#include <cstddef>
#include <string>

namespace Documents {

/// A PMML 4.2 document of about that many bytes: a random forest that classifies, `trees` segments of the same number
/// of nodes, as a training tool writes it: the split on each node, a distribution on each leaf. The same arguments give
/// the same text.
std::string Forest(std::size_t bytes, int trees);

}  // namespace Documents
