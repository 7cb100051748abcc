list(APPEND ZO_UTILS_SOURCES
  plots/zosplotdefs.h
  plots/zosplotscale.h plots/zosplotscale.cpp
  plots/czosxyplot.h plots/czosxyplot.cpp
  plots/plots.qrc
)
