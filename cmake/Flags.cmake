# The one place of compiler flags.
#   tarvik_gnustep_base   what a host of libtarvik needs (exported: usage requirements of Tarvik::Tarvik)
#   tarvik_gnustep_gui    the same with AppKit
#   tarvik_build          how our own code is compiled
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_INSTALL_RPATH $ORIGIN/../${CMAKE_INSTALL_LIBDIR})

find_program(CCACHE ccache)
if(CCACHE)
  foreach(language C CXX OBJC OBJCXX)
    set(CMAKE_${language}_COMPILER_LAUNCHER ${CCACHE})
  endforeach()
endif()

find_program(GNUSTEP_CONFIG gnustep-config REQUIRED)
function(tarvik_gnustep_query variable option)
  execute_process(COMMAND ${GNUSTEP_CONFIG} ${option} OUTPUT_VARIABLE output
                  OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  separate_arguments(output UNIX_COMMAND "${output}")
  # The user's own folders, optimisation and dependency files are not a host's business.
  list(REMOVE_ITEM output -MMD -MP -g -O2 -Wall -fPIC -DGSWARN -DGSDIAGNOSE)
  list(REMOVE_DUPLICATES output)
  list(FILTER output EXCLUDE REGEX "^-[IL]")
  set(${variable} ${output} PARENT_SCOPE)
endfunction()
tarvik_gnustep_query(TARVIK_OBJC_FLAGS --objc-flags)

add_library(tarvik_gnustep_base INTERFACE)
target_compile_options(tarvik_gnustep_base INTERFACE
  "$<$<COMPILE_LANGUAGE:OBJC,OBJCXX>:${TARVIK_OBJC_FLAGS}>"
  # CMAKE_OBJCXX_STANDARD is ignored for g++.
  "$<$<COMPILE_LANGUAGE:OBJCXX>:-std=c++20;-Wno-subobject-linkage>")
target_include_directories(tarvik_gnustep_base SYSTEM INTERFACE /usr/include/GNUstep)
target_link_libraries(tarvik_gnustep_base INTERFACE gnustep-base objc)
add_library(tarvik_gnustep_gui INTERFACE)
target_link_libraries(tarvik_gnustep_gui INTERFACE gnustep-gui tarvik_gnustep_base)

add_library(tarvik_build INTERFACE)
target_compile_options(tarvik_build INTERFACE
  -Wall -Wextra "$<$<BOOL:${TARVIK_WERROR}>:-Werror>"
  "$<$<COMPILE_LANGUAGE:OBJC>:-std=gnu17>"
  # Without it C++ objects as instance variables are neither constructed nor destroyed.
  "$<$<COMPILE_LANGUAGE:OBJCXX>:-fobjc-call-cxx-cdtors>")
target_link_options(tarvik_build INTERFACE -Wl,--as-needed)
if(TARVIK_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=address,undefined)
endif()
if(TARVIK_COVERAGE)
  add_compile_options(--coverage)
  add_link_options(--coverage)
endif()
