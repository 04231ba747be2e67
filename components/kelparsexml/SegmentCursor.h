#pragma once

#include "components/kelparsexml/ElementStream.h"
#include "components/kelparsexml/ElementTree.h"
#include "scoring/common/KelExport.h"

namespace KelXML_1_3 {

/// Walks the "Segment" children of a "Segmentation", whether they stand in a tree or come from a stream one at a time,
/// so that the builder of an ensemble is written once.
///
///   SegmentCursor cursor(segmentation, stream);
///   for (Element segment = cursor.Next(); segment; segment = cursor.Next()) { ... }
class KEL_EXPORT SegmentCursor {
 public:
  /// The segments come from `stream` if `segmentation` is the one that it cuts into pieces (they then can be walked
  /// once), else they are children of `segmentation`. A null `stream` is a tree that stands as a whole. The stream must
  /// outlive the cursor.
  explicit SegmentCursor(const Element& segmentation, ElementStream* stream = nullptr) noexcept;

  /// The next segment; no element behind the last. Assume that the one before is gone, with its texts. Throws as
  /// `ElementStream::NextPiece` does.
  Element Next();

 private:
  ElementStream* fStream;  // null if the segments are in a tree
  Element fNext;           // in a tree
};

}  // namespace KelXML_1_3
