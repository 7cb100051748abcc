list(APPEND ZO_UTILS_SOURCES acquisition/czoutilityfns.h acquisition/czoutilityfns.cpp)
list(APPEND ZO_UTILS_SOURCES acquisition/iawarnings.h acquisition/iawarnings.cpp acquisition/zoutilsresources.qrc)
