#pragma once
// The severity of every error number as one message tree sees it. The separator list of a tree owns
// one; checks read it before they make a finding.

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "foundation/Enumerations.h"
#include "validation/ValidationErrorNumbers.h"

namespace vantrelia {

class MessageSetDefn;
class ValidationErrorSettingDefn;

class SeverityTable {
 public:
  // Starts with the severities of a fresh separator list.
  SeverityTable();

  // A set that inherits its settings takes them from the parent's list when there is one, all
  // numbers at once; otherwise from its own records.
  void reload(const MessageSetDefn& set, const SeverityTable* parent);
  // Takes the first records by position, whatever numbers they carry: a record's place, not its
  // number, decides which number it sets. Places without a record keep their severity.
  void loadFrom(const std::vector<ValidationErrorSettingDefn>& settings);

  // Callers that take a number from a host check it first. A number outside the table reads as an
  // error, as every finding is until a setting says otherwise, and writing one changes nothing. A
  // severity written here isn't checked, and is read back as written.
  EVErrType get(int32_t number) const { return inRange(number) ? severities[index(number)] : qxVESError; }
  void set(int32_t number, EVErrType type) {
    if (inRange(number)) severities[index(number)] = type;
  }

  bool reports(int32_t number, bool includeWarnings) const { return isReported(get(number), includeWarnings); }

  bool operator==(const SeverityTable&) const = default;

 private:
  static bool inRange(int32_t number) { return number >= verr::kFirst && number <= verr::kLast; }
  static std::size_t index(int32_t number) { return static_cast<std::size_t>(number - verr::kFirst); }

  std::array<EVErrType, verr::kCount> severities;
};

}  // namespace vantrelia
