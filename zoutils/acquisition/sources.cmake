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
# The read-noise loop for AVX2, chosen at run time; built where GCC or Clang
# target x86-64, which may not assume AVX2 anywhere else (ZO_AVX2: the data
# folder builds its AVX2 file under the same condition).
if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang" AND CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
  list(APPEND ZO_UTILS_SOURCES acquisition/ccdcorrections_avx2.cpp)
  set_source_files_properties(acquisition/ccdcorrections_avx2.cpp PROPERTIES COMPILE_OPTIONS -mavx2)
  set(ZO_AVX2 ON)
endif()
