#pragma once
// The cutting of a field's text from the stream where the field's class decides it: custom types
// (whose allowed separators don't end the value, and whose escapes keep separators inside them),
// arrays, and variable fields of whatever type their key chose. Segments, composites and repeats
// cut these fields here, and hand every field its token through `give`.

#include <cstdint>

namespace vantrelia {

class FieldBase;
class ParserStream;
class RecordedErrors;
class SeparatorList;
class ValidationLocation;
struct ParserToken;

class TypedFieldReader {
 public:
  // Cuts the text of `field` into `token`, by its class. `separatorActive` tells whether the
  // owner's separator at this place is in force; without it `maxLength` bounds the read. Returns
  // true when the field read itself from the stream, and there is no token to give it.
  static bool read(FieldBase& field, ParserStream& stream, ParserToken& token, SeparatorList& list,
                   bool separatorActive, int32_t maxLength, bool useGeneric, RecordedErrors& errors,
                   ValidationLocation& location);

  // Hands a token to the field: a primitive takes its text (as a view where the text outlives the
  // field), any other field reads it as a stream. An empty token leaves the field as it is.
  static void give(FieldBase& field, const ParserToken& token, RecordedErrors& errors, ValidationLocation& location);
};

}  // namespace vantrelia
