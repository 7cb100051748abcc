set(ZO_PARSER_SOURCES
  zopath.h zopath.cpp
  cplsection.h cplsection.cpp
  cplsectionlist.h cplsectionlist.cpp
  cplclickinfo.h cplclickinfo.cpp
  cplsequenceinfo.h cplsequenceinfo.cpp
  cplcamerainfo.h cplcamerainfo.cpp
  cplsettingsfilewrapper.h cplsettingsfilewrapper.cpp
  cplpreferencekey.h
  cplpreferencekeylist.h cplpreferencekeylist.cpp
  cpllabeldataset.h cpllabeldataset.cpp
  siasetupinfo.h siasetupinfo.cpp
  textform_p.h textform.cpp
  parserconstants_p.h
  usersections_p.h usersections.cpp)
