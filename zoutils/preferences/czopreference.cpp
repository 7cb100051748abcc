#include "czopreference.h"

CZOPreference::~CZOPreference() = default;
