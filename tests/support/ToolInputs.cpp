#include "support/ToolInputs.h"

#include "support/ReadFile.h"
#include "support/ToolRun.h"

namespace vantrelia::testing {

std::string exampleText(const std::string& name) { return readFile(sourcePath("examples/" + name)); }

std::string replaceAll(std::string text, const std::string& from, const std::string& to) {
  for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
  return text;
}

std::string toLatin1(const std::string& utf8) {
  std::string out;
  for (size_t i = 0; i < utf8.size(); ++i) {
    const auto byte = static_cast<unsigned char>(utf8[i]);
    if (byte == 0xC3 && i + 1 < utf8.size()) out.push_back(static_cast<char>(static_cast<unsigned char>(utf8[++i]) + 0x40));
    else out.push_back(static_cast<char>(byte));
  }
  return out;
}

std::string toUtf16LE(const std::string& utf8) {
  std::string out = "\xFF\xFE";
  for (const char c : toLatin1(utf8)) out += {c, '\0'};
  return out;
}

}  // namespace vantrelia::testing
