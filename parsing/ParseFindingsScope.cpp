#include "parsing/ParseFindingsScope.h"

namespace vantrelia {

thread_local RecordedErrors* ParseFindingsScope::active = nullptr;

}  // namespace vantrelia
