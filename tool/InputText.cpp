#include "tool/InputText.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>

namespace vantrelia::tool {

namespace {
constexpr size_t kHeadLength = 16;
}  // namespace

InputText InputText::read(const std::string& name) {
  if (name == "-") {
    std::ostringstream all;
    all << std::cin.rdbuf();
    return InputText("-", all.str());
  }
  std::ifstream file(name, std::ios::binary);
  if (!file) throw InputError(name + ": " + std::strerror(errno));
  std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  if (file.bad()) throw InputError(name + ": " + std::strerror(errno));
  return InputText(name, std::move(bytes));
}

InputText::InputText(std::string inputName, std::string inputBytes)
    : name(std::move(inputName)), bytes(std::move(inputBytes)), encoding(TextEncoding::detect(bytes)),
      framing(MllpFraming::detect(u"")), lineEnds(LineEnds::detect(u"")) {
  const std::u16string decoded = encoding.decode(bytes, byteOffsets);
  framing = MllpFraming::detect(decoded);
  const std::u16string unframed = framing.strip(decoded, frameOffsets);
  lineEnds = LineEnds::detect(unframed);
  text = lineEnds.strip(unframed, lineOffsets);
  head = text.substr(0, kHeadLength);
}

int64_t InputText::byteOffset(int64_t position) const {
  return byteOffsets.map(frameOffsets.map(lineOffsets.map(position)));
}

std::string InputText::encodeMessage(std::u16string_view written) const {
  return encoding.encode(framing.frame(lineEnds.restore(written)));
}

std::string InputText::encodeSkipped(std::u16string_view skipped) const {
  return encoding.encode(lineEnds.restore(skipped));
}

}  // namespace vantrelia::tool
