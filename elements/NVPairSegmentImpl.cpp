#include "elements/NVPairSegmentImpl.h"

#include <string>

#include "definitions/FieldDefn.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/SegmentDefn.h"
#include "definitions/SeparatorDefn.h"
#include "elements/FactorySettings.h"
#include "elements/FieldBase.h"
#include "elements/ParseFindings.h"
#include "foundation/BadParameter.h"
#include "parsing/ParserToken.h"
#include "parsing/SeparatorList.h"
#include "parsing/StringParserStream.h"
#include "validation/ValidationErrorNumbers.h"
#include "validation/ValidationLocation.h"

namespace vantrelia {

namespace {

constexpr uint32_t kBetweenFields =
    SeparatorList::kWriteInitiator | SeparatorList::kWriteSeparator | SeparatorList::kWriteTerminator;

}  // namespace

std::u16string NVPairSegmentImpl::nameValueText() const {
  const SegmentDefn::SpecialSeparator* separator = segmentDefn->getNameValueSeparator();
  if (!separator) return {};
  if (separator->SpecialSeparatorType == qxSepString) return separator->SpecialSeparatorString.str();
  return std::u16string(separators->getSeparatorValue(separator->SpecialSeparatorType));
}

// ----- reading

bool NVPairSegmentImpl::parseSegmentFields(ParserStream& stream, RecordedErrors& errors, uint32_t& status,
                                           ValidationLocation& location) {
  SeparatorList& list = *separators;
  bool lastFieldFilled = true;
  uint32_t endMask = 0;
  if (!beginSegmentParse(stream, status, lastFieldFilled, endMask)) return false;
  const bool useGeneric = usesGenericParsing();
  // One token a pair, and no more pairs than the definition has fields.
  const int fieldCount = getFieldCount();
  bool popped = false;
  for (int i = 0; i < fieldCount; ++i) {
    if (stream.atEnd()) break;
    const bool delimited = openField(i == fieldCount - 1, popped);
    ParserToken token;
    token.useView = true;
    const int32_t limit = list.isSeparatorActive(SeparatorList::kCurrent) ? 0 : segmentDefn->getField(i).getMaxLength();
    readPlainToken(stream, token, limit, true, useGeneric);
    if (!token.characters().empty()) parseFieldValue(token.characters(), errors, location);
    if (delimited && !consumeFieldSeparator(i, stream, errors, location, useGeneric, lastFieldFilled)) break;
    if (list.atOuterSeparator(stream, popped ? 0 : 1)) break;
  }
  location.fieldPosition = -1;
  if (!popped) list.popSeparator();
  if (!matchFields()) {
    status = kNotThisSegment;
    return false;
  }
  finishSegmentParse(stream, endMask, useGeneric, status, errors, location);
  return true;
}

void NVPairSegmentImpl::parseFieldValue(std::u16string_view token, RecordedErrors& errors,
                                        ValidationLocation& location) {
  const std::u16string between = nameValueText();
  size_t place = std::u16string_view::npos;
  if (!between.empty()) {
    place = token.find(between);
  } else {
    // Names longest first: the longest name that begins the token is the one.
    for (const auto& name : segmentDefn->getSortedFieldNames()) {
      if (token.substr(0, name.view().size()) == name.view()) {
        place = name.view().size();
        break;
      }
    }
  }
  if (place == 0) {
    ParseFindings::record(errors, this, *separators, location, verr::kNameValueNameMissing);
    return;
  }
  if (place == std::u16string_view::npos) {
    // A bare name: the field is there, empty.
    namedField(token, errors, location);
    return;
  }
  FieldBase* field = namedField(token.substr(0, place), errors, location);
  const size_t valueAt = place + between.size();
  if (!field || valueAt >= token.size()) return;
  const std::u16string_view value = token.substr(valueAt);
  StringParserStream valueStream(value.data(), static_cast<int32_t>(value.size()));
  uint32_t moreFollows = 0;
  field->parseElement(valueStream, errors, moreFollows, location);
}

FieldBase* NVPairSegmentImpl::namedField(std::u16string_view name, RecordedErrors& errors,
                                         ValidationLocation& location) {
  std::string narrowName;
  for (const char16_t c : name) narrowName += c < 0x80 ? static_cast<char>(c) : '?';
  try {
    return static_cast<FieldBase*>(getElementAt(narrowName.c_str()));
  } catch (const BadParameter&) {
    // A name the definition doesn't know loses its pair, not the rest of the segment.
    ParseFindings::record(errors, this, *separators, location, verr::kNameValueFieldNotFound, name);
    return nullptr;
  }
}

// ----- writing

bool NVPairSegmentImpl::writeElement(SeparatorList& list, bool minimize, int32_t& counter) {
  SegmentWrite write;
  const WriteStart start = beginSegmentWrite(list, counter, write);
  if (start != WriteStart::kFields) return start == WriteStart::kWritten;
  const std::u16string between = nameValueText();
  const bool outputDefaults = FactorySettings::hasFlag(getMessageSetDefn(), qxOutputDefaultValuesForOptionalFields);
  bool fixedLevel = !list.isSeparatorActive(SeparatorList::kCurrent) || list.isLevelFixedWidth();
  bool needSeparator = true;
  list.writeSeparator(SeparatorList::kWriteInitiator, SeparatorList::kCurrent);
  for (int i = 0; i <= write.lastField; ++i) {
    if (i != 0 && needSeparator) list.writeSeparator(kBetweenFields, SeparatorList::kCurrent);
    needSeparator = true;
    const auto writeName = [&] {
      const std::string_view narrowName = segmentDefn->getField(i).getName().view();
      list.writeData(std::u16string(narrowName.begin(), narrowName.end()));
      list.writeData(between);
    };
    FieldBase* field = fieldAt(i);
    if (field && !field->isEmpty()) {
      writeName();
      field->writeField(!write.fixedSegment, list, minimize, counter);
      continue;
    }
    if (minimize || !(outputDefaults || isFieldRequired(i) || fixedLevel)) {
      needSeparator = false;
      continue;
    }
    // A pair that must show writes its default through a field made for it.
    writeName();
    std::unique_ptr<FieldBase> temporary = makeField(i);
    temporary->writeField(false, list, false, counter);
    if (fixedLevel && !segmentDefn->isFixedWidth() && list.isSeparatorActive(SeparatorList::kCurrent) && !list.isLevelFixedWidth()) {
      fixedLevel = false;
    }
  }
  if (!getMessageSetDefn() || !getMessageSetDefn()->getTrimSegments()) {
    for (int i = write.lastField + 1; i < getFieldCount(); ++i) list.writeSeparator(kBetweenFields, SeparatorList::kCurrent);
  }
  endSegmentWrite(list);
  return true;
}

}  // namespace vantrelia
