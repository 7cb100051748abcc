list(APPEND ZO_UTILS_SOURCES acquisition/czoutilityfns.h acquisition/czoutilityfns.cpp)
