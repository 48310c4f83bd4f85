# cmake -DNM=<nm> -DLIBRARY=<file> -DHEADER=<file> -P exports.cmake
execute_process(COMMAND ${NM} -D --defined-only ${LIBRARY} OUTPUT_VARIABLE symbols
                COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^\n ]+\n" exported "${symbols}")
string(REPLACE "\n" "" exported "${exported}")

# The library's header and the headers of its groups, <stem>_<group>.h.
string(REGEX REPLACE "\\.h$" "_*.h" groups ${HEADER})
file(GLOB groups ${groups})
foreach(file IN LISTS groups ITEMS ${HEADER})
  file(READ ${file} part)
  string(APPEND text "${part}")
endforeach()
string(REGEX MATCHALL "ZMO_API [^;(]*[ *]zmo[A-Za-z0-9_]+\\(" declarations "${text}")
foreach(declaration IN LISTS declarations)
  string(REGEX REPLACE ".*[ *](zmo[A-Za-z0-9_]+)\\($" "\\1" name "${declaration}")
  list(APPEND declared ${name})
endforeach()
if(HEADER MATCHES "zmocore")
  # The level object, which the other four libraries read.
  list(APPEND declared zmoCpuLevel)
endif()

list(SORT exported)
list(SORT declared)
if(NOT declared OR NOT exported STREQUAL declared)
  message(FATAL_ERROR "${LIBRARY} exports\n  ${exported}\nbut ${HEADER} declares\n  ${declared}")
endif()
