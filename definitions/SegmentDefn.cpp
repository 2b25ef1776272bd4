#include "definitions/SegmentDefn.h"

#include <algorithm>

#include "definitions/InputStream.h"
#include "definitions/PcfMessages.h"
#include "definitions/PcfVersion.h"
#include "foundation/InvalidFile.h"
#include "foundation/TextConversion.h"

namespace vantrelia {

SegmentDefn::SegmentDefn() = default;
SegmentDefn::~SegmentDefn() = default;

ESegmentType SegmentDefn::getSegmentType() const {
  if (flags & kFieldPresenceIndicator) return qxSegTypeFieldPresenceIndicator;
  if (flags & kNameValuePair) return qxSegTypeNameValuePair;
  return qxSegTypeNormal;
}

const SegmentDefn::SpecialSeparator* SegmentDefn::getSpecialSeparator() const {
  return getSegmentType() == qxSegTypeNameValuePair ? getNameValueSeparator() : getPresenceSeparator();
}

void SegmentDefn::load(MessageSetDefn& owner, InputStream& stream, int version, FieldUpdates& updates) {
  set = &owner;
  stream.read(Name).read(Tag).read(SpecialSeparatorString).read(SeparatorType);
  bool fixedWidth = false;
  stream.read(fixedWidth);
  FixedWidth = fixedWidth ? 1 : 0;
  stream.read(id);
  // Old files name a segment by its tag when they give none.
  if (version < pcf::kEmptyTagStaysEmpty && Tag.empty()) Tag = widenSigned(Name.view());
  readFields(owner, stream, version, updates);
  matches = MatchDefn::loadList(stream, version);

  readRulesAndFlags(stream, version);
  readSpecialRecords(stream, version);
  if (flags & kHasVariableField) workOutVariableKeys(true);
}

void SegmentDefn::readSpecialRecords(InputStream& stream, int version) {
  if (version >= pcf::kSpecialRecords) {
    bool presenceIndicator = false;
    stream.read(presenceIndicator);
    if (presenceIndicator) {
      flags |= kFieldPresenceIndicator;
      SpecialSeparator& separator = presenceSeparator.emplace(SpecialSeparator{});
      stream.read(separator.SpecialSeparatorType);
      stream.readWide(separator.SpecialSeparatorString);
    }
  }
  if (version >= pcf::kFileHeader) {
    bool nameValuePair = false;
    stream.read(nameValuePair);
    if (nameValuePair) {
      flags |= kNameValuePair;
      SpecialSeparator& separator = nameValueSeparator.emplace(SpecialSeparator{});
      stream.read(separator.SpecialSeparatorType);
      // Unlike the indicator's, this text is there only for a separator given as a string.
      if (separator.SpecialSeparatorType == qxSepString) stream.readWide(separator.SpecialSeparatorString);
    }
  }
}

const std::vector<SegmentDefn::WideText>& SegmentDefn::getSortedFieldNames() const {
  if (const auto* ready = sortedFieldNamesReady.load(std::memory_order_acquire)) return *ready;
  ScopedLock lock(sortedFieldNamesLock);
  if (!sortedFieldNames) {
    auto names = std::make_unique<std::vector<WideText>>();
    names->reserve(fields.size());
    for (const auto& field : fields) names->emplace_back(widenSigned(field->getName().view()));
    // Longest first, so that a name that begins another is tried after it.
    std::sort(names->begin(), names->end(), [](const WideText& a, const WideText& b) {
      if (a.length() != b.length()) return a.length() > b.length();
      return a.view() < b.view();
    });
    sortedFieldNames = std::move(names);
    sortedFieldNamesReady.store(sortedFieldNames.get(), std::memory_order_release);
  }
  return *sortedFieldNames;
}

const SegmentDefn::PathIndexes& SegmentDefn::indexesOfPath(
    std::string_view path, PathIndexes (*resolve)(const SegmentDefn&, std::string_view)) const {
  ScopedLock lock(resolvedPathsLock);
  for (const auto& [known, indexes] : resolvedPaths) {
    if (known == path) return indexes;
  }
  // The paths asked for are the message type fields of the sets, a few per segment.
  return resolvedPaths.emplace_back(std::string(path), resolve(*this, path)).second;
}

const SegmentTextShape& SegmentDefn::getTextShape() const {
  if (const auto* ready = textShapeReady.load(std::memory_order_acquire)) return *ready;
  // The lock of the field names serves: both are made once, from the fields alone.
  ScopedLock lock(sortedFieldNamesLock);
  if (!textShape) {
    textShape = std::make_unique<SegmentTextShape>(*this, nullptr);
    textShapeReady.store(textShape.get(), std::memory_order_release);
  }
  return *textShape;
}

}  // namespace vantrelia
