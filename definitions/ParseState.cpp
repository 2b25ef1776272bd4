#include "definitions/ParseState.h"

#include <algorithm>

namespace vantrelia {

void ParseState::settleCandidates(std::vector<char>& seen) {
  candidates.clear();
  for (const ParseTransition& transition : transitions) {
    const auto target = static_cast<size_t>(transition.target->getIndex());
    if (target >= seen.size()) seen.resize(target + 1, 0);
    if (seen[target]) continue;
    seen[target] = 1;
    candidates.emplace_back(transition.key, transition.target);
  }
  // Back to all clear for the next state, touching only what this one set.
  for (const auto& candidate : candidates) seen[static_cast<size_t>(candidate.second->getIndex())] = 0;
  std::stable_sort(candidates.begin(), candidates.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
}

void settleCandidates(const StateTable& table) {
  std::vector<char> seen(table.size(), 0);
  for (const auto& state : table) state->settleCandidates(seen);
}

}  // namespace vantrelia
