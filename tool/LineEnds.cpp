#include "tool/LineEnds.h"

namespace vantrelia::tool {

namespace {

// The segment terminator an X12 or EDIFACT header declares at its fixed place; 0 for HL7 and the
// rest, whose segments end in CR.
char16_t declaredTerminator(std::u16string_view text) {
  constexpr size_t kIsaTerminator = 105, kUnaTerminator = 8;
  if (text.starts_with(u"ISA") && text.size() > kIsaTerminator) return text[kIsaTerminator];
  if (text.starts_with(u"UNA") && text.size() > kUnaTerminator) return text[kUnaTerminator];
  if (text.starts_with(u"UNB")) return u'\'';
  return 0;
}

}  // namespace

LineEnds LineEnds::detect(std::u16string_view text) {
  const char16_t terminator = declaredTerminator(text);
  if (terminator == u'\r' || terminator == u'\n') return LineEnds(AsDefined, u"", 0);
  const auto breakAt = [&](size_t at) { return std::u16string(text.substr(at, text.substr(at, 2) == u"\r\n" ? 2 : 1)); };
  if (terminator != 0) {
    // Only a break after the first segment says the file has one after each; a single break at the
    // end of the file is skipped text like any other.
    const size_t first = text.find(terminator, text.starts_with(u"UNA") ? 8 : 0);
    if (first == std::u16string_view::npos || first + 1 >= text.size()) return LineEnds(AsDefined, u"", 0);
    const char16_t next = text[first + 1];
    LineEnds found = next == u'\r' || next == u'\n' ? LineEnds(AfterTerminator, breakAt(first + 1), terminator)
                                                     : LineEnds(AsDefined, u"", 0);
    // Line breaks after the last segment beyond those after every segment, which the definitions
    // would read as one more segment.
    const size_t last = text.find_last_not_of(u"\r\n");
    if (last == std::u16string_view::npos || text[last] != terminator) return found;
    const std::u16string_view tail = text.substr(last + 1);
    found.trailing = tail.substr(tail.starts_with(found.lineBreak) ? found.lineBreak.size() : 0);
    return found;
  }
  const size_t at = text.find_first_of(u"\r\n");
  if (at == std::u16string_view::npos) return LineEnds(AsDefined, u"", 0);
  const std::u16string lineBreak = breakAt(at);
  if (lineBreak == u"\r") return LineEnds(AsDefined, u"", 0);
  return LineEnds(InsteadOfCr, lineBreak, u'\r');
}

const char* LineEnds::name() const {
  if (style == AsDefined) return "as defined";
  if (lineBreak == u"\n") return "LF";
  if (lineBreak == u"\r\n") return "CR LF";
  return "CR";
}

std::u16string LineEnds::strip(std::u16string_view text, OffsetMap& offsets) const {
  if (!trailing.empty() && text.ends_with(trailing)) text.remove_suffix(trailing.size());
  if (style == AsDefined) {
    offsets.settle(static_cast<int64_t>(text.size()), static_cast<int64_t>(trailing.size()));
    return std::u16string(text);
  }
  std::u16string out;
  out.reserve(text.size());
  for (size_t at = 0; at < text.size();) {
    const bool breakHere = text.substr(at, lineBreak.size()) == lineBreak;
    if (breakHere && style == InsteadOfCr) {
      out.push_back(u'\r');
      at += lineBreak.size();
      offsets.settle(static_cast<int64_t>(out.size()), static_cast<int64_t>(at - out.size()));
    } else if (breakHere && style == AfterTerminator && at > 0 && text[at - 1] == terminator) {
      at += lineBreak.size();
      offsets.settle(static_cast<int64_t>(out.size()), static_cast<int64_t>(at - out.size()));
    } else {
      out.push_back(text[at++]);
    }
  }
  offsets.settle(static_cast<int64_t>(out.size()), static_cast<int64_t>(text.size() + trailing.size() - out.size()));
  return out;
}

std::u16string LineEnds::restore(std::u16string_view text) const {
  if (style == AsDefined) return std::u16string(text);
  std::u16string out;
  out.reserve(text.size() + text.size() / 16);
  for (const char16_t unit : text) {
    if (style == InsteadOfCr && unit == u'\r') {
      out += lineBreak;
      continue;
    }
    out.push_back(unit);
    if (style == AfterTerminator && unit == terminator) out += lineBreak;
  }
  return out;
}

}  // namespace vantrelia::tool
