#include "tool/MllpFraming.h"

namespace vantrelia::tool {

namespace {
constexpr char16_t kStart = 0x0B;
constexpr std::u16string_view kEnd = u"\x1C\r";
}  // namespace

MllpFraming MllpFraming::detect(std::u16string_view text) { return MllpFraming(!text.empty() && text[0] == kStart); }

std::u16string MllpFraming::strip(std::u16string_view text, OffsetMap& offsets) const {
  if (!framed) return std::u16string(text);
  std::u16string out;
  out.reserve(text.size());
  for (size_t at = 0; at < text.size();) {
    if (text[at] == kStart) at += 1;
    else if (text.substr(at, kEnd.size()) == kEnd) at += kEnd.size();
    else {
      out.push_back(text[at++]);
      continue;
    }
    offsets.settle(static_cast<int64_t>(out.size()), static_cast<int64_t>(at - out.size()));
  }
  return out;
}

std::u16string MllpFraming::frame(std::u16string_view message) const {
  if (!framed) return std::u16string(message);
  std::u16string out;
  out.reserve(message.size() + 3);
  out.push_back(kStart);
  out += message;
  out += kEnd;
  return out;
}

}  // namespace vantrelia::tool
