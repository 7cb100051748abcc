# Fails when a library file includes a header of a higher layer. The layers,
# lowest first (an include may name a header of its own layer or a lower one):
#   foundation < zoparser, zoimage < logging < preferences
#              < acquisition, data, plots < widgets
# Every library folder is on the include path, so a header is known by its file
# name alone. apps/, tests/, bench/ and fuzz/ may include anything.
# Run as: cmake -DZO_ROOT=<source folder> -P cmake/ZoLayerCheck.cmake

if(NOT ZO_ROOT)
  set(ZO_ROOT "${CMAKE_CURRENT_LIST_DIR}/..")
endif()
get_filename_component(ZO_ROOT "${ZO_ROOT}" ABSOLUTE)

# One entry per layer, lowest first; folders of one layer joined by "|".
set(layers
  "zoutils/foundation"
  "zoparser|zoimage"
  "zoutils/logging"
  "zoutils/preferences"
  "zoutils/acquisition|zoutils/data|zoutils/plots"
  "zoutils/widgets")

set(problems)
set(files)
set(rank 0)
foreach(layer ${layers})
  string(REPLACE "|" ";" folders "${layer}")
  foreach(folder ${folders})
    file(GLOB_RECURSE found RELATIVE "${ZO_ROOT}" "${ZO_ROOT}/${folder}/*.h" "${ZO_ROOT}/${folder}/*.cpp")
    foreach(path ${found})
      get_filename_component(name "${path}" NAME)
      if(DEFINED "where_${name}")
        # Flat include paths cannot tell two files of one name apart.
        list(APPEND problems "  ${path}: has the same name as ${where_${name}}")
      endif()
      set("rank_${name}" ${rank})
      set("where_${name}" "${path}")
      set("rank_of_${path}" ${rank})
      list(APPEND files "${path}")
    endforeach()
  endforeach()
  math(EXPR rank "${rank} + 1")
endforeach()

set(includes 0)
foreach(path ${files})
  file(STRINGS "${ZO_ROOT}/${path}" lines REGEX "^[ \t]*#[ \t]*include[ \t]*[<\"]")
  foreach(line ${lines})
    if(NOT line MATCHES "include[ \t]*[<\"]([^\">]+)[\">]")
      continue()
    endif()
    get_filename_component(name "${CMAKE_MATCH_1}" NAME)
    if(NOT DEFINED "rank_${name}") # Qt, the system, generated headers
      continue()
    endif()
    math(EXPR includes "${includes} + 1")
    if(rank_${name} GREATER rank_of_${path})
      list(APPEND problems
        "  ${path}: includes ${name} (${where_${name}}, layer ${rank_${name}}), above its own layer ${rank_of_${path}}")
    endif()
  endforeach()
endforeach()

list(LENGTH files count)
if(problems)
  string(REPLACE ";" "\n" problems "${problems}")
  message(FATAL_ERROR "Includes that point up the layers (0 foundation, 1 zoparser and zoimage, 2 logging, "
    "3 preferences, 4 acquisition, data and plots, 5 widgets):\n${problems}")
endif()
message(STATUS "${count} files, ${includes} includes of library headers, all pointing down")
