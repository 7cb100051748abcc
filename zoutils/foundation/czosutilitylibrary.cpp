#include "czosutilitylibrary.h"

int nZOSUtilityLibrary = 0;

int fnZOSUtilityLibrary()
{
    return 42;
}

CZOSUtilityLibrary::CZOSUtilityLibrary() = default;
