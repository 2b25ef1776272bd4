#pragma once
// `vantrelia new`: an empty message of a definition, filled with the values given, written out.

#include <ostream>
#include <string>
#include <vector>

#include "tool/PathAssignment.h"

namespace vantrelia::tool {

class NewCommand {
 public:
  // `pcf` empty for the bundled default.
  static int run(const std::string& pcf, const std::string& messageName, const std::vector<PathAssignment>& assignments,
                 std::ostream& out);
};

}  // namespace vantrelia::tool
