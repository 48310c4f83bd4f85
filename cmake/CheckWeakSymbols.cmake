# cmake -DNM=<nm> -DOBJECTS=<list> -DSTAMP=<file> -P CheckWeakSymbols.cmake
# Fails when an object defines a weak or unique symbol. DW.ref.* is no code of a level: it is the
# pointer to the language's personality routine, the same wherever it comes from.
file(REMOVE ${STAMP})
foreach(object IN LISTS OBJECTS)
  execute_process(COMMAND ${NM} --defined-only --demangle ${object}
                  OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL "[^\n]* [WwVvu] [^\n]*" weak "${symbols}")
  list(FILTER weak EXCLUDE REGEX " V DW\\.ref\\.")
  if(weak)
    list(JOIN weak "\n  " weak)
    message(FATAL_ERROR "${object} defines symbols that other levels could share:\n  ${weak}")
  endif()
endforeach()
file(TOUCH ${STAMP})
