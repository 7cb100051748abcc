list(APPEND ZO_UTILS_SOURCES preferences/czopreference.h preferences/czopreference.cpp)
