#include "iawarnings.h"

IAWarnings *IAWarnings::GetIAWarnings()
{
    // Deliberately leaked: callers may still read the flags during static destruction.
    static IAWarnings *const instance = new IAWarnings;
    return instance;
}
