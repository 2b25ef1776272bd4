#pragma once
// Where the findings of a parse go while it runs on this thread. Fields that a parse left uncut in
// their segment's text and that are cut before the parse ends (a match list asks for one, say)
// record what the cut finds there, as they would have when their segment was read.

#include "validation/RecordedErrors.h"

namespace vantrelia {

class ParseFindingsScope {
 public:
  explicit ParseFindingsScope(RecordedErrors& errors) : previous(active) { active = &errors; }
  ~ParseFindingsScope() { active = previous; }
  ParseFindingsScope(const ParseFindingsScope&) = delete;
  ParseFindingsScope& operator=(const ParseFindingsScope&) = delete;

  // The findings of the innermost parse running on this thread, or null.
  static RecordedErrors* current() { return active; }

 private:
  RecordedErrors* previous;
  static thread_local RecordedErrors* active;
};

}  // namespace vantrelia
