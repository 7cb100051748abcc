list(APPEND ZO_UTILS_SOURCES
  preferences/czopreference.h preferences/czopreference.cpp
  preferences/czopreferencesignal.h preferences/czopreferencesignal.cpp
  preferences/cplpreferenceuser.h preferences/cplpreferenceuser.cpp
  preferences/cplpreferencemanager.h preferences/cplpreferencemanager.cpp
  preferences/czossettings.h preferences/czossettings.cpp
  preferences/czosuseriddialog.h preferences/czosuseriddialog.cpp preferences/czosuseriddialog.ui
  preferences/zopreferencetexts_p.h
)
