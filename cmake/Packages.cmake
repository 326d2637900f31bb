# Debian packages, one a component, made by scripts/package:
#   libtarvik      the library, with the tools it runs     libtarvik-ui   what needs AppKit
#   libtarvik-dev  headers, pkg-config and CMake modules   tarvik         the command         shelf   the application
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "The Tarvik team <tarvik@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_COMPONENTS_ALL libtarvik libtarvik-ui libtarvik-dev tarvik shelf)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_BINARY_DIR})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)  # the linker's cache is renewed when they are installed
set(CPACK_STRIP_FILES ON)

function(package component summary section) # [DEPENDS component...]
  cmake_parse_arguments(PARSE_ARGV 3 own "" "" DEPENDS)
  string(TOUPPER ${component} name)
  set(CPACK_DEBIAN_${name}_PACKAGE_NAME ${component} PARENT_SCOPE)
  set(CPACK_DEBIAN_${name}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(CPACK_DEBIAN_${name}_DESCRIPTION "${summary}" PARENT_SCOPE)
  set(CPACK_COMPONENT_${name}_DEPENDS ${own_DEPENDS} PARENT_SCOPE)
endfunction()
package(libtarvik "${PROJECT_DESCRIPTION}: the library" libs)
package(libtarvik-ui "${PROJECT_DESCRIPTION}: windows, tables, panels" libs DEPENDS libtarvik)
package(libtarvik-dev "${PROJECT_DESCRIPTION}: for developers" libdevel DEPENDS libtarvik libtarvik-ui)
package(tarvik "The toolkit's functions as a command" utils DEPENDS libtarvik)
package(shelf "A catalogue of disk images" utils DEPENDS libtarvik-ui)
# What is run, not linked: the makers and mounters of disk images.
set(CPACK_DEBIAN_LIBTARVIK_PACKAGE_RECOMMENDS "squashfs-tools, squashfuse, fuse2fs, curl")
set(CPACK_DEBIAN_LIBTARVIK-DEV_PACKAGE_DEPENDS "libgnustep-base-dev, libgnustep-gui-dev")
set(CPACK_DEBIAN_LIBTARVIK-DEV_PACKAGE_RECOMMENDS "gobjc++")
set(CPACK_DEBIAN_LIBTARVIK-DEV_PACKAGE_SHLIBDEPS OFF)
include(CPack)
