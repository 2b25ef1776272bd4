#pragma once
// Message files for the tool's tests, made from the bundled examples by changing what a user's
// files vary in: line ends, frames, encodings, text between messages.

#include <string>

namespace vantrelia::testing {

std::string exampleText(const std::string& name);
// Every `from` in the text replaced by `to`.
std::string replaceAll(std::string text, const std::string& from, const std::string& to);
// UTF-8 text of Latin-1 characters only, as Latin-1 bytes.
std::string toLatin1(const std::string& utf8);
// Text of ASCII and Latin-1 characters as UTF-16LE with its byte order mark.
std::string toUtf16LE(const std::string& utf8);

}  // namespace vantrelia::testing
