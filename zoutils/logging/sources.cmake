list(APPEND ZO_UTILS_SOURCES
  logging/czoslog.h logging/czoslog.cpp
  logging/zopreferencehooks.h logging/zopreferencehooks.cpp
  logging/zouserstats.h logging/zouserstats.cpp
)
list(APPEND ZO_UTILS_SOURCES logging/czoserrorhandler.h logging/czoserrorhandler.cpp logging/zoappstate_p.h logging/zoappstate.cpp)
