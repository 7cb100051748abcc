#include "zoimageglobal.h"
int zoimageAbiVersion() { return 1; }
