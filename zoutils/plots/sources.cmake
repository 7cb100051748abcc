list(APPEND ZO_UTILS_SOURCES
  plots/zosplotdefs.h
  plots/zosplotscale.h plots/zosplotscale.cpp
  plots/zosplotlines.h plots/zosplotlines.cpp
  plots/czosplotcore.h plots/czosplotcore.cpp plots/czosplotcoreio.cpp
  plots/czosplotpainter.h plots/czosplotpainter.cpp
  plots/czosplotinteraction.h plots/czosplotinteraction.cpp
  plots/czosxyplot.h plots/czosxyplot.cpp
  plots/czosglxyplot.h plots/czosglxyplot.cpp
  plots/plots.qrc
)
# The curve reduction runs over every point of every line on each repaint.
set_source_files_properties(plots/zosplotscale.cpp PROPERTIES COMPILE_OPTIONS "-O3")
