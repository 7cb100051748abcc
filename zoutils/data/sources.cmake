list(APPEND ZO_UTILS_SOURCES
  data/czoimagequeue.h data/czoimagequeue.cpp
  data/czoscsvparser.h data/czoscsvparser_p.h data/czoscsvparser.cpp
)
if(ZO_AVX2)
  list(APPEND ZO_UTILS_SOURCES data/czoscsvparser_avx2.cpp)
  set_source_files_properties(data/czoscsvparser_avx2.cpp PROPERTIES COMPILE_OPTIONS -mavx2)
endif()
