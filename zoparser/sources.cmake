set(ZO_PARSER_SOURCES zopath.h zopath.cpp)
