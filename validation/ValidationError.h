#pragma once
// One finding about the data of a message: what is wrong, under which number and severity, and
// where. A value: lists copy it, hosts get copies.

#include <cstdint>
#include <string>

#include "foundation/Enumerations.h"

namespace vantrelia {

class ValidationLocation;

class ValidationError {
 public:
  // A finding about a message, message set, group or repeat item: no segment or field position.
  ValidationError(std::string path, std::u16string error, int32_t errorNumber, EVErrType errorType);
  // A finding of the parser, which knows the segment but not the field.
  ValidationError(std::string path, std::u16string error, int32_t errorNumber, int32_t segmentNumber,
                  std::string numericalPath, EVErrType errorType, std::u16string segmentID,
                  int32_t segmentSequenceNumber);
  // A finding below segment level, placed where the walk stands.
  ValidationError(const ValidationLocation& location, std::u16string error, int32_t errorNumber,
                  EVErrType errorType);
  virtual ~ValidationError() = default;
  ValidationError(const ValidationError&) = default;
  ValidationError& operator=(const ValidationError&) = default;
  ValidationError(ValidationError&&) = default;
  ValidationError& operator=(ValidationError&&) = default;

  const std::string& getPath() const { return path; }
  // Replaying a stored parse finding puts the path of its element in front.
  void setPath(std::string newPath) { path = std::move(newPath); }
  // The text as raised, which may carry more than the number's description.
  const std::u16string& getError() const { return error; }
  int32_t getSegmentNumber() const { return segmentNumber; }
  const std::string& getNumericalPath() const { return numericalPath; }
  int32_t getErrorNumber() const { return errorNumber; }
  // The severity in force when the finding was made, kept even if the setting changes later.
  EVErrType getErrorType() const { return errorType; }
  const std::u16string& getSegmentID() const { return segmentID; }
  int32_t getSegmentSequenceNumber() const { return segmentSequenceNumber; }
  int32_t getFieldPosition() const { return fieldPosition; }
  int32_t getFieldRepetition() const { return fieldRepetition; }
  int32_t getComponentNumber() const { return componentNumber; }
  int32_t getSubComponentNumber() const { return subComponentNumber; }

 private:
  std::string path;
  std::u16string error;
  int32_t segmentNumber = -1;
  std::string numericalPath;
  int32_t errorNumber;
  EVErrType errorType;
  std::u16string segmentID;
  int32_t segmentSequenceNumber = -1;
  int32_t fieldPosition = -1;
  int32_t fieldRepetition = -1;
  int32_t componentNumber = -1;
  int32_t subComponentNumber = -1;
};

}  // namespace vantrelia
