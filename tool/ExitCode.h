#pragma once
// What the tool's exit status tells a script.

namespace vantrelia::tool {

struct ExitCode {
  static constexpr int kSuccess = 0;
  static constexpr int kUsageError = 1;
  // A file or definition that can't be read.
  static constexpr int kInputError = 2;
  // Some text was skipped or didn't parse; the rest was still processed. Also any other failure,
  // which still gets a line on stderr rather than an abort.
  static constexpr int kPartial = 3;
  // `write --check`: an output would differ from its input.
  static constexpr int kDiffers = 4;

  // The code that tells more: a usage error, then a file that can't be read, then a partial
  // parse, then a difference.
  static constexpr int worse(int a, int b) {
    constexpr int rank[] = {0, 4, 3, 2, 1};
    return rank[a] >= rank[b] ? a : b;
  }
};

}  // namespace vantrelia::tool
