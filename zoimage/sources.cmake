set(ZO_IMAGE_SOURCES
  cilimage.h cilimage.cpp
  zosdisplayrange.h zosdisplayrange.cpp)
