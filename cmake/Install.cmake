# The installed product: libraries, headers, pkg-config modules, CMake package. (Commands and tools install themselves.)
# The components are the Debian packages: see Packages.cmake.
#   include/Tarvik/Tarvik.h            the umbrella            include/Tarvik/<room>/*.h
#   include/Tarvik/platform/Carbon/... the platform's headers, found under their own names through the modules' flags
install(TARGETS tarvik tarvik_gnustep_base tarvik_gnustep_gui EXPORT TarvikTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT libtarvik NAMELINK_COMPONENT libtarvik-dev)
if(TARGET tarvik-ui)
  install(TARGETS tarvik-ui EXPORT TarvikTargets
          LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT libtarvik-ui NAMELINK_COMPONENT libtarvik-dev)
endif()
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME libtarvik-dev)
set_target_properties(tarvik PROPERTIES EXPORT_NAME Tarvik)
if(TARGET tarvik-ui)
  set_target_properties(tarvik-ui PROPERTIES EXPORT_NAME UI)
endif()

foreach(room core text crypto system net ui)
  install(DIRECTORY ${room} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/Tarvik OPTIONAL FILES_MATCHING
          PATTERN "*.h" PATTERN private EXCLUDE)
endforeach()
install(DIRECTORY platform/support DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/Tarvik FILES_MATCHING PATTERN "*.h")
install(DIRECTORY platform/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/Tarvik/platform FILES_MATCHING PATTERN "*.h")
install(DIRECTORY ${TARVIK_HEADERS_DIR}/Carbon DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/Tarvik/platform)
install(FILES ${TARVIK_HEADERS_DIR}/Tarvik/Tarvik.h ${TARVIK_HEADERS_DIR}/Tarvik/TarvikUI.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/Tarvik)

include(CMakePackageConfigHelpers)
set(package ${CMAKE_INSTALL_LIBDIR}/cmake/Tarvik)
configure_package_config_file(cmake/TarvikConfig.cmake.in TarvikConfig.cmake INSTALL_DESTINATION ${package})
write_basic_package_version_file(TarvikConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(EXPORT TarvikTargets NAMESPACE Tarvik:: DESTINATION ${package})
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/TarvikConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/TarvikConfigVersion.cmake
        DESTINATION ${package})

list(JOIN TARVIK_OBJC_FLAGS " " TARVIK_OBJC_FLAGS_TEXT)
# The modules find the prefix from their own place, so that an installed tree can be moved.
file(RELATIVE_PATH TARVIK_PC_TO_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" TARVIK_PC_TO_PREFIX "${TARVIK_PC_TO_PREFIX}")
set(modules tarvik-c tarvik)
if(TARGET tarvik-ui)
  list(APPEND modules tarvik-ui)
endif()
foreach(module ${modules})
  configure_file(cmake/${module}.pc.in ${module}.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${module}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
