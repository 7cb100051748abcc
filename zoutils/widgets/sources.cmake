# The forms are compiled here rather than by AUTOUIC so that their headers land
# in the library's build folder, which is on its public include path: the
# widgets inherit their form classes, so users of the headers need them too.
qt5_wrap_ui(ZO_WIDGETS_FORMS
  widgets/czosprogressbar.ui
  widgets/czosstatusprogressbar.ui
)
set_source_files_properties(
  widgets/czosprogressbar.h widgets/czosprogressbar.cpp
  widgets/czosstatusprogressbar.h widgets/czosstatusprogressbar.cpp
  PROPERTIES SKIP_AUTOUIC ON)
list(APPEND ZO_UTILS_SOURCES
  ${ZO_WIDGETS_FORMS}
  widgets/czosprogressbar.h widgets/czosprogressbar.cpp
  widgets/czosstatusprogressbar.h widgets/czosstatusprogressbar.cpp
  widgets/czotreemenucombobox.h widgets/czotreemenucombobox.cpp
  widgets/zowidgets.qrc
  widgets/czosfiledialog.h widgets/czosfiledialog.cpp
)
