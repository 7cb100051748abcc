#include "zoaliases.h"

namespace ZO {
DB::~DB() = default;
PF::~PF() = default;
PR::~PR() = default;
UF::~UF() = default;
} // namespace ZO
