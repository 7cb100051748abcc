list(APPEND ZO_UTILS_SOURCES acquisition/czoutilityfns.h acquisition/czoutilityfns.cpp)
# The ZO:: aliases name classes up to this layer, so they live here.
list(APPEND ZO_UTILS_SOURCES acquisition/zoaliases.h acquisition/zoaliases.cpp)
list(APPEND ZO_UTILS_SOURCES acquisition/iawarnings.h acquisition/iawarnings.cpp acquisition/zoutilsresources.qrc)
list(APPEND ZO_UTILS_SOURCES
  acquisition/setupmatching.h acquisition/setupmatching.cpp
  acquisition/ccdcorrections.h acquisition/ccdcorrections_p.h acquisition/ccdcorrections.cpp
  acquisition/clickinfoconstruction.h acquisition/clickinfoconstruction.cpp
  acquisition/autobkglist.h acquisition/autobkglist.cpp
)
