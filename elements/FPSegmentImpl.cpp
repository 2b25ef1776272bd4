#include "elements/FPSegmentImpl.h"

#include "definitions/CompositeDefn.h"
#include "definitions/FieldDefn.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/SegmentDefn.h"
#include "definitions/SeparatorDefn.h"
#include "elements/FactorySettings.h"
#include "elements/FieldBase.h"
#include "elements/ParseFindings.h"
#include "parsing/ParserStream.h"
#include "parsing/SeparatorList.h"
#include "validation/ValidationErrorNumbers.h"
#include "validation/ValidationLocation.h"

namespace vantrelia {

namespace {

constexpr uint32_t kBetweenFields =
    SeparatorList::kWriteInitiator | SeparatorList::kWriteSeparator | SeparatorList::kWriteTerminator;

}  // namespace

std::u16string FPSegmentImpl::indicatorText(const SeparatorList& list) const {
  const SegmentDefn::SpecialSeparator* indicator = segmentDefn->getPresenceSeparator();
  if (!indicator) return {};
  if (indicator->SpecialSeparatorType == qxSepString) return indicator->SpecialSeparatorString.str();
  return std::u16string(list.getSeparatorValue(indicator->SpecialSeparatorType));
}

void FPSegmentImpl::pushIndicatorLevel(SeparatorList& list) const {
  const SegmentDefn::SpecialSeparator* indicator = segmentDefn->getPresenceSeparator();
  if (!indicator) {
    list.pushSeparator(qxSepNone, {}, segmentDefn->isFixedWidth());
    return;
  }
  list.pushSeparator(static_cast<ESeparatorType>(indicator->SpecialSeparatorType),
                     indicator->SpecialSeparatorString.view(), segmentDefn->isFixedWidth());
}

bool FPSegmentImpl::readsOwnIndicator(int index) const {
  const FieldDefn& defn = segmentDefn->getField(index);
  const CompositeDefn* composite = defn.isComposite() ? defn.getComposite() : nullptr;
  const SegmentDefn::SpecialSeparator* indicator = segmentDefn->getPresenceSeparator();
  if (!composite || !indicator || composite->getCompositeType() != qxCompTypeFieldPresenceIndicator) return false;
  const int32_t type = composite->getSpecialSeparatorType();
  if (type != indicator->SpecialSeparatorType) return false;
  if (type != qxSepString) return true;
  return composite->getIndicatorSeparatorString().view() == indicator->SpecialSeparatorString.view() &&
         composite->getFieldCount() > 0 && composite->getField(0).hasFieldPresenceIndicator();
}

// ----- reading

bool FPSegmentImpl::parseSegmentFields(ParserStream& stream, RecordedErrors& errors, uint32_t& status,
                                       ValidationLocation& location) {
  SeparatorList& list = *separators;
  bool lastFieldFilled = true;
  uint32_t endMask = 0;
  if (!beginSegmentParse(stream, status, lastFieldFilled, endMask)) return false;
  pushIndicatorLevel(list);
  const std::u16string indicator = indicatorText(list);
  const bool useGeneric = usesGenericParsing();
  const int fieldCount = getFieldCount();
  // The indicator level, taken off for a composite that reads its own indicator; both levels,
  // taken off for a last field that runs to the end of the text.
  bool indicatorPopped = false;
  bool bothPopped = false;
  DeferredFields deferred;
  for (int i = 0; i < fieldCount; ++i) {
    if (stream.atEnd()) break;
    location.fieldPosition = i + 1;
    location.fieldRepetition = 1;
    if (indicatorPopped) {
      pushIndicatorLevel(list);
      indicatorPopped = false;
    }
    bool delimited = list.isSeparatorActive(fieldSeparator);
    if (i == fieldCount - 1) {
      if (!(separatorFlags(list, fieldSeparator) & SeparatorDefn::kTerminator)) delimited = false;
      if (!list.isSeparatorActive(qxSepSegment)) {
        list.popSeparator();
        list.popSeparator();
        bothPopped = true;
      }
    }
    const FieldDefn& defn = segmentDefn->getField(i);
    if (indicator.empty() || !stream.startsWith(indicator)) {
      // A field marked for an indicator is absent without one, and so is its separator.
      if (defn.hasFieldPresenceIndicator()) continue;
    } else if (readsOwnIndicator(i)) {
      if (!bothPopped) {
        list.popSeparator();
        indicatorPopped = true;
      }
    } else {
      stream.consume(indicator);
    }
    parseField(i, stream, errors, location, useGeneric, lastFieldFilled, deferred);
    if (delimited && !consumeFieldSeparator(i, stream, errors, location, useGeneric, lastFieldFilled)) break;
    const int ownLevels = bothPopped ? 0 : indicatorPopped ? 1 : 2;
    if (list.atOuterSeparator(stream, ownLevels)) break;
  }
  location.fieldPosition = -1;
  location.fieldRepetition = -1;
  if (!lastFieldFilled) ParseFindings::record(errors, this, list, location, verr::kUnnecessarySegmentSeparators);
  if (!bothPopped) {
    if (!indicatorPopped) list.popSeparator();
    list.popSeparator();
  }
  return closeFields(stream, errors, status, location, endMask, useGeneric, deferred);
}

// ----- writing

bool FPSegmentImpl::writeElement(SeparatorList& list, bool minimize, int32_t& counter) {
  SegmentWrite write;
  const WriteStart start = beginSegmentWrite(list, counter, write);
  if (start != WriteStart::kFields) return start == WriteStart::kWritten;
  const std::u16string indicator = indicatorText(list);
  const MessageSetDefn* set = getMessageSetDefn();
  const bool trimSegments = set && set->getTrimSegments();
  const bool outputDefaults = FactorySettings::hasFlag(set, qxOutputDefaultValuesForOptionalFields);
  const auto filled = [&](int index) {
    FieldBase* field = fieldAt(index);
    return field && !field->isEmpty();
  };
  bool fixedLevel = !list.isSeparatorActive(SeparatorList::kCurrent) || list.isLevelFixedWidth();
  bool mayOmitFill = !write.fixedSegment;
  bool needSeparator = true;
  list.writeSeparator(SeparatorList::kWriteInitiator, SeparatorList::kCurrent);
  for (int i = 0; i <= write.lastField; ++i) {
    if (i != 0 && needSeparator) list.writeSeparator(kBetweenFields, SeparatorList::kCurrent);
    needSeparator = true;
    if (segmentDefn->getField(i).hasFieldPresenceIndicator()) {
      // An absent field shows its indicator only where a marked field with a value follows before
      // any field without a mark; else it leaves nothing, not even a separator.
      bool due = filled(i);
      if (!due) {
        needSeparator = false;
        for (int k = i + 1; k <= write.lastField && segmentDefn->getField(k).hasFieldPresenceIndicator(); ++k) {
          if (filled(k)) {
            due = true;
            needSeparator = true;
            break;
          }
        }
      }
      if (due) {
        if (readsOwnIndicator(i)) {
          needSeparator = false;
        } else {
          list.writeData(indicator);
        }
      }
      if (!filled(i)) continue;
    }
    if (fixedLevel) mayOmitFill = i == write.lastField && trimSegments;
    const size_t before = list.getOutput().size();
    if (FieldBase* field = fieldAt(i)) {
      field->writeField(mayOmitFill, list, minimize, counter);
    } else if (minimize || !(isFieldRequired(i) || fixedLevel || (outputDefaults && fieldHasDefault(i)))) {
      continue;
    } else {
      // An absent field that must show writes its default or its fill through a node made for it.
      std::unique_ptr<FieldBase> temporary = makeField(i);
      temporary->writeField(mayOmitFill, list, false, counter);
      if (fixedLevel && !segmentDefn->isFixedWidth() && list.isSeparatorActive(SeparatorList::kCurrent) &&
          !list.isLevelFixedWidth()) {
        fixedLevel = false;
      }
    }
    if (list.getOutput().size() != before) needSeparator = true;
  }
  if (!trimSegments) {
    for (int i = write.lastField + 1; i < getFieldCount(); ++i) list.writeSeparator(kBetweenFields, SeparatorList::kCurrent);
  }
  endSegmentWrite(list);
  return true;
}

}  // namespace vantrelia
