#pragma once
// The severity of one error number in one message set.

#include <cstdint>

#include "foundation/Enumerations.h"

namespace vantrelia {

class InputStream;
class MVValidationErrorSettingImpl;

class ValidationErrorSettingDefn {
 public:
  ValidationErrorSettingDefn() = default;
  ValidationErrorSettingDefn(int32_t number, EVErrType severity) : errorType(severity), errorNumber(number) {}
  virtual ~ValidationErrorSettingDefn() = default;
  ValidationErrorSettingDefn(const ValidationErrorSettingDefn&) = default;
  ValidationErrorSettingDefn& operator=(const ValidationErrorSettingDefn&) = default;

  // Reads the number and a one-byte severity. Throws InvalidFile "Validation error type unknown"
  // for a severity of 3 or more.
  void load(InputStream& stream);

  EVErrType getErrorType() const { return errorType; }
  void setErrorType(EVErrType severity) { errorType = severity; }
  int32_t getErrorNumber() const { return errorNumber; }

  // The metadata object of this setting; the viewer owns it.
  MVValidationErrorSettingImpl* getView() const { return view; }
  void setView(MVValidationErrorSettingImpl* metaData) { view = metaData; }

 private:
  EVErrType errorType = qxVESIgnore;
  int32_t errorNumber = 0;
  MVValidationErrorSettingImpl* view = nullptr;
};

}  // namespace vantrelia
