#include "validation/ValidationError.h"

#include <utility>

#include "validation/ValidationLocation.h"

namespace vantrelia {

ValidationError::ValidationError(std::string path, std::u16string error, int32_t errorNumber, EVErrType errorType)
    : path(std::move(path)), error(std::move(error)), errorNumber(errorNumber), errorType(errorType) {}

ValidationError::ValidationError(std::string path, std::u16string error, int32_t errorNumber, int32_t segmentNumber,
                                 std::string numericalPath, EVErrType errorType, std::u16string segmentID,
                                 int32_t segmentSequenceNumber)
    : path(std::move(path)),
      error(std::move(error)),
      segmentNumber(segmentNumber),
      numericalPath(std::move(numericalPath)),
      errorNumber(errorNumber),
      errorType(errorType),
      segmentID(std::move(segmentID)),
      segmentSequenceNumber(segmentSequenceNumber) {}

ValidationError::ValidationError(const ValidationLocation& location, std::u16string error, int32_t errorNumber,
                                 EVErrType errorType)
    : path(location.path ? location.path : ""),
      error(std::move(error)),
      segmentNumber(location.segmentNumber),
      numericalPath(location.numericalPath ? location.numericalPath : ""),
      errorNumber(errorNumber),
      errorType(errorType),
      segmentID(location.segmentID ? location.segmentID : u""),
      segmentSequenceNumber(location.segmentSequenceNumber),
      fieldPosition(location.fieldPosition),
      fieldRepetition(location.fieldRepetition),
      componentNumber(location.componentNumber),
      subComponentNumber(location.subComponentNumber) {}

}  // namespace vantrelia
