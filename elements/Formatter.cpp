#include "elements/Formatter.h"

namespace vantrelia {

Formatter::~Formatter() = default;

}  // namespace vantrelia
