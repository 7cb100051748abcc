#include "czoutilityfns.h"

CZOUtilityFns::~CZOUtilityFns() = default;
