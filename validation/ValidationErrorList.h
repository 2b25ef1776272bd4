#pragma once
// The findings of one parse or validation, in the order they were made: stored parse findings
// first, then the walk's in tree order. Nothing is sorted or removed once added.

#include <vector>

#include "validation/ValidationError.h"

namespace vantrelia {

class ValidationErrorList {
 public:
  void add(const ValidationError& error) { errors.push_back(error); }
  void add(ValidationError&& error) { errors.push_back(std::move(error)); }

  int count() const { return static_cast<int>(errors.size()); }
  bool empty() const { return errors.empty(); }
  // Throws BadParameter for an index outside the list.
  const ValidationError& get(int index) const;

  std::vector<ValidationError>::const_iterator begin() const { return errors.begin(); }
  std::vector<ValidationError>::const_iterator end() const { return errors.end(); }

 private:
  std::vector<ValidationError> errors;
};

}  // namespace vantrelia
