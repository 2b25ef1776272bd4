#pragma once
// One input of a message command, from its bytes to the text the reader parses and back: the
// encoding, MLLP frames and line ends are taken off on the way in, and each written message gets
// them again on the way out.

#include <cstdint>
#include <stdexcept>
#include <string>

#include "tool/LineEnds.h"
#include "tool/MllpFraming.h"
#include "tool/OffsetMap.h"
#include "tool/TextEncoding.h"

namespace vantrelia::tool {

// A file that can't be read; the text is the reason, after the file's name.
class InputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class InputText {
 public:
  // A file path, or "-" for standard input. Throws InputError.
  static InputText read(const std::string& name);
  // Bytes already in hand, under a name for messages.
  InputText(std::string name, std::string bytes);

  const std::string& getName() const { return name; }
  const std::string& getBytes() const { return bytes; }
  // What the reader parses; handed over once, as the reader takes it.
  std::u16string takeText() { return std::move(text); }
  // The first characters of the text the reader parses, to choose a definition by.
  const std::u16string& getHead() const { return head; }
  // The byte of the input at a position of the text the reader parses.
  int64_t byteOffset(int64_t position) const;

  // Written message text, or skipped text, as bytes in the input's own form.
  std::string encodeMessage(std::u16string_view written) const;
  std::string encodeSkipped(std::u16string_view skipped) const;
  // The bytes that go before everything written: the byte order mark the input had.
  std::string prefix() const { return std::string(encoding.bom(bytes)); }
  // The bytes that go after everything written: line breaks the file ended in.
  std::string suffix() const { return encoding.encode(lineEnds.getTrailing()); }

 private:
  std::string name;
  std::string bytes;
  TextEncoding encoding;
  MllpFraming framing;
  LineEnds lineEnds;
  // The reader's positions back through line ends and frames to decoded units, then to bytes.
  OffsetMap lineOffsets, frameOffsets, byteOffsets;
  std::u16string text;
  std::u16string head;
};

}  // namespace vantrelia::tool
