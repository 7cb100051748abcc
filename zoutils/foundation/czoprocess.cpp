#include "czoprocess.h"

CZOProcess::~CZOProcess() = default;
