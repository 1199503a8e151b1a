# What `cmake --install` puts where: headers, libraries, the command with its manual page and completions, and the files
# by which find_package(studystats) and pkg-config find them. The tree may be moved afterwards.
include(CMakePackageConfigHelpers)

set(STUDYSTATS_CONFIG_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/studystats)

# studystats_install_library(COMPONENT TARGET NAME): installs a target as studystats::NAME. Each component has an export
# file of its own, so that a program that links one of them needs nothing of the others.
function(studystats_install_library component target name)
  set_target_properties(${target} PROPERTIES EXPORT_NAME ${name})
  add_library(studystats::${name} ALIAS ${target})
  install(TARGETS ${target} EXPORT studystats-${component} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
          ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
  install(EXPORT studystats-${component} NAMESPACE studystats:: DESTINATION ${STUDYSTATS_CONFIG_DIR})
endfunction()

studystats_install_library(library studystats_shared studystats)
studystats_install_library(library_static studystats_static studystats_static)

if(STUDYSTATS_BUILD_HOST)
  studystats_install_library(host studystats_host_shared host)
  studystats_install_library(host_static studystats_host_static host_static)
  set_target_properties(studystats_host_shared PROPERTIES INSTALL_RPATH "$ORIGIN")

  # The archive's user looks for libcsv on the machine where it is linked.
  get_target_property(needs studystats_host_static INTERFACE_LINK_LIBRARIES)
  string(REPLACE "${LIBCSV}" "$<BUILD_INTERFACE:${LIBCSV}>$<INSTALL_INTERFACE:studystats::csv>" needs "${needs}")
  set_target_properties(studystats_host_static PROPERTIES INTERFACE_LINK_LIBRARIES "${needs}")

  install(TARGETS studystats_command DESTINATION ${CMAKE_INSTALL_BINDIR})
  # The command writes its manual page and completions itself, while it is built.
  install(DIRECTORY ${PROJECT_BINARY_DIR}/share/ DESTINATION ${CMAKE_INSTALL_DATADIR} OPTIONAL)
endif()

# Public headers; the friendly one only beside its library.
if(NOT STUDYSTATS_BUILD_HOST)
  set(without_host PATTERN host.h EXCLUDE PATTERN host EXCLUDE)
endif()
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/studystats DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        FILES_MATCHING PATTERN *.h ${without_host})
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE ${PROJECT_SOURCE_DIR}/README.md DESTINATION ${CMAKE_INSTALL_DOCDIR})

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/studystats-config.cmake.in studystats-config.cmake
                              INSTALL_DESTINATION ${STUDYSTATS_CONFIG_DIR} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(studystats-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/studystats-config.cmake ${PROJECT_BINARY_DIR}/studystats-config-version.cmake
        DESTINATION ${STUDYSTATS_CONFIG_DIR})

# pkg-config: the prefix is found from where the file lies.
file(RELATIVE_PATH STUDYSTATS_PREFIX_FROM_PC ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" STUDYSTATS_PREFIX_FROM_PC ${STUDYSTATS_PREFIX_FROM_PC})
set(pc_names studystats)
if(STUDYSTATS_BUILD_HOST)
  list(APPEND pc_names studystats_host)
endif()
foreach(name IN LISTS pc_names)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/${name}.pc.in ${PROJECT_BINARY_DIR}/${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
