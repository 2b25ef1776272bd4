#pragma once
#include <cstdint>

#include "foundation/Enumerations.h"

namespace vantrelia {

// The severity of one error number in one message set.
class ValidationErrorSettingDefn {
 public:
  ValidationErrorSettingDefn() = default;
  ValidationErrorSettingDefn(int32_t number, EVErrType severity) : errorType(severity), errorNumber(number) {}
  virtual ~ValidationErrorSettingDefn() = default;

  EVErrType getErrorType() const { return errorType; }
  void setErrorType(EVErrType severity) { errorType = severity; }
  int32_t getErrorNumber() const { return errorNumber; }

 private:
  EVErrType errorType = qxVESIgnore;
  int32_t errorNumber = 0;
};

}  // namespace vantrelia
