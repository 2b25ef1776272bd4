#include "bench/BundledTextGenerator.h"

#include <cstdio>

namespace vantrelia::bench {

uint64_t BundledTextGenerator::next() {
  // splitmix64: fast, and the same on every platform.
  uint64_t z = (state += 0x9E3779B97F4A7C15ull);
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
  return z ^ (z >> 31);
}

int BundledTextGenerator::between(int low, int high) {
  return low + static_cast<int>(next() % static_cast<uint64_t>(high - low + 1));
}

std::string BundledTextGenerator::letters(int count) {
  std::string out;
  for (int i = 0; i < count; ++i) out += static_cast<char>('A' + between(0, 25));
  return out;
}

std::string BundledTextGenerator::digits(int count) {
  std::string out;
  for (int i = 0; i < count; ++i) out += static_cast<char>('0' + between(0, 9));
  return out;
}

std::string BundledTextGenerator::hl7Message(int number) {
  static const char* const kEvents[] = {"A01", "A04", "A08"};
  const char* event = kEvents[between(0, 2)];
  std::string m = "MSH|^~\\&|ADMIT|GENERAL HOSPITAL|LAB|GENERAL HOSPITAL|2026" + digits(10) + "||ADT^" + event +
                  "^ADT_A01|MSG" + std::to_string(number) + "|P|2.5\r";
  m += "EVN|" + std::string(event) + "|2026" + digits(10) + "\r";
  m += "PID|1||" + digits(8) + "^^^GH^MR~" + digits(9) + "^^^SSA^SS||" + letters(between(3, 12)) + "^" +
       letters(between(3, 9)) + "^" + letters(1) + "||19" + digits(6) + "|" + (between(0, 1) ? "F" : "M") + "\r";
  for (int i = 1, n = between(0, 2); i <= n; ++i) {
    m += "NK1|" + std::to_string(i) + "|" + letters(between(3, 10)) + "^" + letters(between(3, 8)) + "|SPO^Spouse\r";
  }
  m += "PV1|1|" + std::string(between(0, 1) ? "I" : "O") + "|WARD " + digits(2) + "\r";
  for (int i = 1, n = between(1, 6); i <= n; ++i) {
    m += "OBX|" + std::to_string(i) + "|NM|" + digits(4) + "-" + digits(1) + "^" + letters(between(5, 14)) +
         "^LN||" + digits(between(1, 3)) + "|mg^milligram|10-200|N|||F\r";
    if (between(0, 3) == 0) m += "NTE|1|L|" + letters(between(10, 60)) + "\r";
  }
  if (between(0, 1)) m += "AL1|1|DA|" + letters(3) + "^" + letters(between(5, 12)) + "\r";
  if (between(0, 1)) m += "DG1|1|I10|" + letters(1) + digits(3) + "^" + letters(between(5, 20)) + "||2026" + digits(4) + "|A\r";
  return m;
}

std::string BundledTextGenerator::x12Interchange(int number) {
  char control[16];
  std::snprintf(control, sizeof control, "%09d", number % 1000000000);
  std::string body = "ST*270*0001*005010X279A1~BHT*0022*13*" + digits(8) + "*2026" + digits(4) + "*" + digits(4) + "~";
  body += "HL*1**20*1~NM1*PR*2*" + letters(between(5, 20)) + "*****PI*" + digits(9) + "~";
  int segments = 4;
  const int subscribers = between(1, 4);
  for (int i = 0; i < subscribers; ++i) {
    body += "HL*" + std::to_string(i + 2) + "*1*22*0~TRN*1*" + digits(5) + "-" + digits(6) + "*" + digits(10) + "~";
    body += "NM1*IL*1*" + letters(between(3, 12)) + "*" + letters(between(3, 9)) + "****MI*" + digits(9) + "~";
    body += between(0, 1) ? "DMG*D8*19" + digits(6) + "*F~" : "EQ*30~";
    segments += 4;
  }
  body += "SE*" + std::to_string(segments + 1) + "*0001~";
  return "ISA*00*          *00*          *ZZ*SUBMITTER      *ZZ*PAYER          *261123*1015*^*00501*" +
         std::string(control) + "*0*P*:~GS*HS*SUBMITTER*PAYER*20261123*1015*1*X*005010X279A1~" + body +
         "GE*1*1~IEA*1*" + control + "~";
}

std::string BundledTextGenerator::edifactInterchange(int number) {
  const std::string reference = "REF" + std::to_string(number);
  std::string m = "UNA:+.? 'UNB+UNOC:3+" + letters(6) + ":14+" + letters(8) + ":14+261123:1015+" + reference + "'";
  m += "UNH+1+ORDERS:D:96A:UN'BGM+220+PO-" + digits(6) + "+9'DTM+137:2026" + digits(4) + ":102'";
  int segments = 3;
  if (between(0, 1)) {
    m += "FTX+AAI+++" + letters(between(5, 30)) + "?'S NOTE'";
    ++segments;
  }
  m += "NAD+BY+" + digits(13) + "::9'NAD+SU+" + digits(13) + "::9'";
  segments += 2;
  const int lines = between(1, 8);
  for (int i = 1; i <= lines; ++i) {
    m += "LIN+" + std::to_string(i) + "++" + digits(13) + ":SRS'QTY+21:" + std::to_string(between(1, 500)) + "'";
    segments += 2;
    if (between(0, 1)) {
      m += "PRI+AAA:" + std::to_string(between(1, 999)) + "." + digits(2) + "'";
      ++segments;
    }
  }
  m += "UNS+S'CNT+2:" + std::to_string(lines) + "'UNT+" + std::to_string(segments + 4) + "+1'UNZ+1+" + reference + "'";
  return m;
}

std::u16string BundledTextGenerator::generate(Standard standard, size_t characters) {
  std::u16string out;
  out.reserve(characters + 4096);
  for (int number = 1; out.size() < characters; ++number) {
    const std::string piece = standard == Standard::Hl7   ? hl7Message(number)
                              : standard == Standard::X12 ? x12Interchange(number)
                                                          : edifactInterchange(number);
    out.append(piece.begin(), piece.end());
  }
  return out;
}

}  // namespace vantrelia::bench
