set(ZO_IMAGE_SOURCES zoimageglobal.h zoimageglobal.cpp)
