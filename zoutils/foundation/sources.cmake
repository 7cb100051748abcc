list(APPEND ZO_UTILS_SOURCES
  foundation/enums/zoenums.h
  foundation/zoconstants.h
  foundation/generalutilities.h foundation/generalutilities.cpp
  foundation/czosutilitylibrary.h foundation/czosutilitylibrary.cpp
  foundation/zoplatform.h foundation/zoplatform.cpp foundation/zocpu_p.h
  foundation/czodatabase.h foundation/czodatabase.cpp
  foundation/czoprocess.h foundation/czoprocess.cpp
)
