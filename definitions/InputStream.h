#pragma once
// The definition file's field forms, read in order from an underlying byte source.
//
// All multi-byte numbers are big-endian. Texts carry a u16 length; narrow texts are cut at the
// first zero byte, wide ones at the first zero unit, but every byte of the length is consumed.

#include <cstddef>
#include <cstdint>
#include <string>

#include "definitions/Guid.h"
#include "foundation/TRVString.h"

namespace vantrelia {

class InputStream {
 public:
  virtual ~InputStream() = default;

  // The next raw byte. Throws InvalidFile "Unexpected end of input file" past the end.
  virtual uint8_t readByte() = 0;
  // Fills count bytes. The default goes through readByte; a buffered source does better.
  virtual void readBytes(uint8_t* target, size_t count);

  InputStream& read(kestrel::TRVString<char16_t>& value);  // text8w
  InputStream& read(std::u16string& value);                // text8w
  InputStream& read(kestrel::TRVString<char>& value);      // text8
  InputStream& read(Guid& value);
  InputStream& read(std::string& value);                   // text8
  InputStream& read(unsigned char& value);                 // byte
  InputStream& read(unsigned short& value);                // u16
  InputStream& read(unsigned int& value);                  // i32
  InputStream& read(int& value);                           // i32
  InputStream& read(bool& value);                          // bool
  int readInt();                                           // i32
  InputStream& readCount(int& value);                      // count: 1, 3 or 7 bytes
  InputStream& readDouble(double& value);                  // double
  InputStream& readWide(kestrel::TRVString<char16_t>& value);  // text16
  InputStream& readWide(std::u16string& value);                // text16
  // textv: text8w before the version that widened value texts, text16 from it on.
  InputStream& readTextV(kestrel::TRVString<char16_t>& value, int version);

  uint16_t readU16();
  int readCount();

 private:
  std::string readText8();
  std::u16string readText16();
};

}  // namespace vantrelia
