#pragma once
// Deterministic wire text of many messages for the sets of the bundled definition: HL7 admissions
// with composites, repeats and observations; X12 eligibility inquiries, one interchange each; and
// EDIFACT purchase orders, one interchange each. Values vary from message to message; the same seed
// gives the same text.

#include <cstddef>
#include <cstdint>
#include <string>

namespace vantrelia::bench {

class BundledTextGenerator {
 public:
  enum class Standard { Hl7, X12, Edifact };

  explicit BundledTextGenerator(uint64_t seed = 0xB0DD1ED2026ull) : state(seed) {}

  // Whole messages of the standard, appended until the text has at least `characters` characters.
  std::u16string generate(Standard standard, size_t characters);

 private:
  uint64_t next();
  int between(int low, int high);  // inclusive
  std::string letters(int count);
  std::string digits(int count);
  std::string hl7Message(int number);
  std::string x12Interchange(int number);
  std::string edifactInterchange(int number);

  uint64_t state;
};

}  // namespace vantrelia::bench
