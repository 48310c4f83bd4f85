# Building blocks of the measured library.
#
#   zmo_library(<name> <source>...)      a shared object, its sources below zmo/src
#   zmo_family(<library> <family> [VECTORIZE_ONLY])
#                                        adds zmo/src/<library>/<family>.cpp (entry points, compiled
#                                        once) and <family>_kernels.cpp (compiled once a level)
#
# VECTORIZE_ONLY marks the kernels that measure alike at every level without the other loop
# transformations of -O3, which are 40 % of their compile time.
# The kernels of a library and level are the OBJECT library <library>_<level>.

set(ZMO_LEVELS sse2 sse42 avx2 avx512)
if(PSCV_SANITIZE)  # each kernel four times would be a third of the build
  set(ZMO_LEVELS sse2 avx2)
  target_compile_definitions(zmo_headers INTERFACE ZMO_EVERY_SECOND_LEVEL)
endif()
set(ZMO_FLAGS_sse2 -msse2)
set(ZMO_FLAGS_sse42 -msse4.2)
set(ZMO_FLAGS_avx2 -mavx2)
# 512-bit loops spend a narrow row in their tails.
set(ZMO_FLAGS_avx512 -mavx512f -mavx512cd -mavx512bw -mavx512dq -mavx512vl
                     -mprefer-vector-width=256)
# A Debug build, whose kernels nobody times, compiles them at its own level.
set(ZMO_OPTIMIZE $<$<NOT:$<CONFIG:Debug>>:-O3>)
set(ZMO_VECTORIZE_ONLY
    $<$<NOT:$<CONFIG:Debug>>:-O2>
    $<$<NOT:$<CONFIG:Debug>>:-ftree-vectorize>
    $<$<AND:$<NOT:$<CONFIG:Debug>>,$<CXX_COMPILER_ID:GNU>>:-fvect-cost-model=dynamic>)

function(zmo_library name)
  list(TRANSFORM ARGN PREPEND src/)
  add_library(${name} SHARED ${ARGN})
  target_link_libraries(${name} PUBLIC zmo_headers PRIVATE pscv_flags)
  target_include_directories(${name} PRIVATE src)
  target_compile_definitions(
    ${name} PRIVATE ZMO_VERSION="${PROJECT_VERSION}" ZMO_VERSION_MAJOR=${PROJECT_VERSION_MAJOR}
                    ZMO_VERSION_MINOR=${PROJECT_VERSION_MINOR})
  set_target_properties(
    ${name}
    PROPERTIES CXX_VISIBILITY_PRESET hidden
               VISIBILITY_INLINES_HIDDEN ON
               LINK_DEPENDS ${PROJECT_SOURCE_DIR}/zmo/zmo.map
               # The five find each other wherever they lie together.
               BUILD_WITH_INSTALL_RPATH ON
               INSTALL_RPATH "$ORIGIN")
  target_link_options(${name} PRIVATE -Wl,--enable-new-dtags -Wl,--as-needed
                      -Wl,--version-script=${PROJECT_SOURCE_DIR}/zmo/zmo.map)
  if(NOT PSCV_SANITIZE)
    target_link_options(${name} PRIVATE -Wl,-z,defs)
  endif()
  if(NOT name STREQUAL zmocore)
    target_link_libraries(${name} PRIVATE zmocore)
  endif()
  install(TARGETS ${name} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
endfunction()

# The kernels of one library at one level, and the check of their objects: a weak symbol, such as an
# inline function of a shared header, might be the one copy that the linker keeps for all levels.
function(zmo_level_objects library level)
  set(target ${library}_${level})
  add_library(${target} OBJECT)
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/zmo/src)
  target_link_libraries(${target} PRIVATE zmo_headers pscv_flags)
  target_compile_definitions(${target} PRIVATE ZMO_LEVEL=${level})
  # -fno-math-errno only turns sqrtf into the instruction.
  target_compile_options(${target} PRIVATE ${ZMO_FLAGS_${level}} ${ZMO_OPTIMIZE} -fno-math-errno)
  set_target_properties(${target} PROPERTIES CXX_VISIBILITY_PRESET hidden)

  set(stamp ${CMAKE_CURRENT_BINARY_DIR}/${target}.checked)
  add_custom_command(
    OUTPUT ${stamp}
    COMMAND ${CMAKE_COMMAND} -DNM=${CMAKE_NM} -DSTAMP=${stamp} "-DOBJECTS=$<TARGET_OBJECTS:${target}>"
            -P ${PROJECT_SOURCE_DIR}/cmake/CheckWeakSymbols.cmake
    DEPENDS $<TARGET_OBJECTS:${target}> ${PROJECT_SOURCE_DIR}/cmake/CheckWeakSymbols.cmake
    COMMENT "Looking for weak symbols in ${target}"
    VERBATIM)
  add_custom_target(${target}_check DEPENDS ${stamp})
  add_dependencies(${library} ${target}_check)
  target_sources(${library} PRIVATE $<TARGET_OBJECTS:${target}>)
  # For tests that look into the tables of kernels, which no library exports.
  set_property(GLOBAL APPEND PROPERTY ZMO_KERNEL_TARGETS ${target})
endfunction()

function(zmo_family library family)
  cmake_parse_arguments(arg "VECTORIZE_ONLY" "" "" ${ARGN})
  set(kernels ${CMAKE_CURRENT_SOURCE_DIR}/src/${library}/${family}_kernels.cpp)
  if(arg_VECTORIZE_ONLY)
    set_source_files_properties(${kernels} PROPERTIES COMPILE_OPTIONS "${ZMO_VECTORIZE_ONLY}")
  endif()
  target_sources(${library} PRIVATE src/${library}/${family}.cpp)
  foreach(level IN LISTS ZMO_LEVELS)
    if(NOT TARGET ${library}_${level})
      zmo_level_objects(${library} ${level})
    endif()
    target_sources(${library}_${level} PRIVATE ${kernels})
  endforeach()
endfunction()
