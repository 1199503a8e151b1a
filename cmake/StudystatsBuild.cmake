# How everything here is compiled, and the functions that the folders' own lists call.

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "" FORCE)
endif()
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)

add_library(studystats_flags INTERFACE)
target_compile_options(studystats_flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow
                       $<$<COMPILE_LANGUAGE:CXX>:-Wconversion>)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(studystats_flags INTERFACE -Wno-restrict)  # false alarms on "text" + string (GCC bug 105651)
endif()
if(STUDYSTATS_WERROR)
  target_compile_options(studystats_flags INTERFACE -Werror)
endif()
if(STUDYSTATS_SANITIZE)
  # The loader resolves multiversioned functions before the address sanitizer is ready.
  set(STUDYSTATS_ONE_VERSION ON)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
  # Around the library, checks of pointers that the address sanitizer makes, too, are left to it: a quarter less to build.
  set(STUDYSTATS_FEWER_CHECKS -fno-sanitize=null,alignment,object-size,vptr)
endif()
target_include_directories(studystats_flags INTERFACE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)

# studystats_sources(FILE...): adds files of the calling folder to the library.
function(studystats_sources)
  foreach(file IN LISTS ARGN)
    set_property(GLOBAL APPEND PROPERTY STUDYSTATS_SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/${file})
  endforeach()
endfunction()

# The numerical contract in flags: products and sums are never fused, and kernels are vectorised in every build type
# that optimises (g++ 12 declines at -O2). Nobody reads errno after a square root: without it roots are vectorised, too,
# with the same values.
set(STUDYSTATS_CONTRACT_FLAGS -ffp-contract=off -fno-math-errno $<$<NOT:$<CONFIG:Debug>>:-O3>)

# studystats_compile(TARGET FLAG...): the library's sources, compiled once more as an object library.
function(studystats_compile target)
  get_property(sources GLOBAL PROPERTY STUDYSTATS_SOURCES)
  add_library(${target} OBJECT ${sources})
  target_link_libraries(${target} PRIVATE studystats_flags)
  target_compile_options(${target} PRIVATE ${STUDYSTATS_CONTRACT_FLAGS} ${ARGN})
  set_target_properties(${target} PROPERTIES CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
endfunction()

# libstudystats.so exports the public interface and nothing else; the archive holds the internal routines too.
function(studystats_library)
  studystats_compile(studystats_objects)
  if(STUDYSTATS_ONE_VERSION)
    target_compile_definitions(studystats_objects PRIVATE STUDYSTATS_ONE_VERSION)
  endif()
  foreach(kind SHARED STATIC)
    string(TOLOWER ${kind} suffix)
    add_library(studystats_${suffix} ${kind} $<TARGET_OBJECTS:studystats_objects>)
    set_target_properties(studystats_${suffix} PROPERTIES OUTPUT_NAME studystats EXPORT_NAME ${suffix}
                          LINKER_LANGUAGE CXX)
    target_include_directories(studystats_${suffix} INTERFACE
      $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
    target_compile_features(studystats_${suffix} INTERFACE cxx_std_20)
  endforeach()
  set_target_properties(studystats_shared PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
                        LINK_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/studystats.exports)
  target_link_options(studystats_shared PRIVATE
                      -Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/studystats.exports)
endfunction()

# studystats_test(NAME SOURCES FILE... [LIBRARIES LIBRARY...]): a GoogleTest program over the archive.
function(studystats_test name)
  cmake_parse_arguments(arg "" "" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE studystats_flags ${arg_LIBRARIES} studystats_static GTest::gtest_main)
  target_compile_options(${name} PRIVATE -ffp-contract=off ${STUDYSTATS_FEWER_CHECKS}
                         $<$<NOT:$<CONFIG:Debug>>:-O1>)  # compiled often, run briefly
  target_compile_definitions(${name} PRIVATE STUDYSTATS_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 120)
endfunction()
