#pragma once
// Where the validation walk stands: the walk carries one of these down by reference and overwrites
// it as it goes, and every finding below segment level copies its position from it.

#include <cstdint>
#include <map>
#include <memory>
#include <string>

namespace vantrelia {

class ValidationLocation {
 public:
  // Only a walk started on a message or a message set counts segments by tag; elsewhere the
  // sequence number of a finding stays as it was.
  explicit ValidationLocation(bool countSegments = false);

  // Sets the segment being walked and, when segments are counted and the number is a real one,
  // counts its tag: the first segment with a tag gets sequence number 1.
  void enterSegment(int32_t number, const char16_t* tag);
  // Back outside any segment; the sequence number stays for whoever reads it next.
  void leaveSegment();

  // Steps into the child at 1-based position p of a composite or an array. The first two levels
  // go to componentNumber and subComponentNumber; levels below those are only counted, so that
  // leaving them doesn't clear a number that belongs to a level above.
  void enterComponent(int32_t position);
  void leaveComponent();

  bool countsSegments() const { return countSegments; }

  // Texts are not owned: whoever sets them keeps them alive until the next record is made.
  const char* path = "";
  const char* numericalPath = "";
  int32_t segmentNumber = -1;
  const char16_t* segmentID = u"";
  int32_t segmentSequenceNumber = -1;
  int32_t fieldPosition = -1;
  int32_t fieldRepetition = -1;
  int32_t componentNumber = -1;
  int32_t subComponentNumber = -1;
  int32_t deeperLevels = 0;

 private:
  bool countSegments;
  // Made at the first segment counted: every message parsed makes a location that counts, and
  // most never enter a segment through it.
  std::unique_ptr<std::map<std::u16string, int32_t>> segmentCounts;
};

}  // namespace vantrelia
