list(APPEND ZO_UTILS_SOURCES
  data/czoimagequeue.h data/czoimagequeue.cpp
  data/czoscsvparser.h data/czoscsvparser.cpp
)
