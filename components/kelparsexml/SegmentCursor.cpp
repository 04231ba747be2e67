#include "components/kelparsexml/SegmentCursor.h"

#include <utility>

namespace KelXML_1_3 {

SegmentCursor::SegmentCursor(const Element& segmentation, ElementStream* stream) noexcept
    : fStream(stream != nullptr && segmentation && stream->Segmentation() == segmentation ? stream : nullptr) {
  if (fStream == nullptr) fNext = segmentation.Child("Segment");
}

Element SegmentCursor::Next() {
  return fStream != nullptr ? fStream->NextPiece() : std::exchange(fNext, fNext.Next("Segment"));
}

}  // namespace KelXML_1_3
