# How the rooms of the house become libraries and headers. Everything is globbed: a file that is added is built.
set(TARVIK_HEADERS_DIR ${CMAKE_BINARY_DIR}/include)
file(MAKE_DIRECTORY ${TARVIK_HEADERS_DIR}/Tarvik)
foreach(room core text crypto system net ui)
  file(CREATE_LINK ${PROJECT_SOURCE_DIR}/${room} ${TARVIK_HEADERS_DIR}/Tarvik/${room} SYMBOLIC)
endforeach()
file(CREATE_LINK ${PROJECT_SOURCE_DIR}/platform/support ${TARVIK_HEADERS_DIR}/Tarvik/support SYMBOLIC)

set(TARVIK_SOURCE_ENDINGS c cpp m mm)

# tarvik_glob(VARIABLE FOLDER...): the sources directly in the folders
function(tarvik_glob variable)
  set(found)
  foreach(folder ${ARGN})
    foreach(ending ${TARVIK_SOURCE_ENDINGS})
      file(GLOB some CONFIGURE_DEPENDS ${folder}/*.${ending})
      list(APPEND found ${some})
    endforeach()
  endforeach()
  set(${variable} ${found} PARENT_SCOPE)
endfunction()

# tarvik_sources(VARIABLE ROOM...): the sources of toolkit rooms
function(tarvik_sources variable)
  list(TRANSFORM ARGN PREPEND ${PROJECT_SOURCE_DIR}/ OUTPUT_VARIABLE folders)
  tarvik_glob(found ${folders})
  set(${variable} ${found} PARENT_SCOPE)
endfunction()

# tarvik_platform_sources(VARIABLE ONLY|EXCEPT FRAMEWORK...): the sources of the platform's frameworks
function(tarvik_platform_sources variable mode)
  file(GLOB folders LIST_DIRECTORIES true CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/platform/*)
  set(chosen)
  foreach(folder ${folders})
    get_filename_component(framework ${folder} NAME)
    if((mode STREQUAL ONLY AND framework IN_LIST ARGN) OR (mode STREQUAL EXCEPT AND NOT framework IN_LIST ARGN))
      list(APPEND chosen ${folder})
    endif()
  endforeach()
  tarvik_glob(found ${chosen})
  set(${variable} ${found} PARENT_SCOPE)
endfunction()

# tarvik_platform_subdirectories(): a framework that needs a library or builds a tool says so in its own CMakeLists.txt
function(tarvik_platform_subdirectories)
  file(GLOB lists CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/platform/*/CMakeLists.txt)
  foreach(list ${lists})
    get_filename_component(folder ${list} DIRECTORY)
    add_subdirectory(${folder})
  endforeach()
endfunction()

function(tarvik_library name)
  add_library(${name} SHARED ${ARGN})
  set_target_properties(${name} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
                        LINKER_LANGUAGE CXX)
  target_include_directories(${name} PUBLIC
    $<BUILD_INTERFACE:${TARVIK_HEADERS_DIR}>
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/platform/include>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/Tarvik/platform>)
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})  # <room>/private headers
  target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:tarvik_build>)
  # Our repairs of the platform's functions are what our own code calls, in whatever order a host links.
  target_link_options(${name} PRIVATE -Wl,-Bsymbolic-functions -Wl,--no-undefined)
  # A host that only sends a category's messages refers to no symbol of the library: it is linked all the same.
  target_link_options(${name} INTERFACE $<INSTALL_INTERFACE:-Wl,--no-as-needed>)
endfunction()

# tarvik_executable(NAME SOURCE...): a program of ours (rpath needs the C++ linker)
function(tarvik_executable name)
  add_executable(${name} ${ARGN})
  if(TARVIK_SANITIZE)
    target_sources(${name} PRIVATE ${PROJECT_SOURCE_DIR}/cmake/SanitizerDefaults.cpp)
  endif()
  set_target_properties(${name} PROPERTIES LINKER_LANGUAGE CXX)
  target_link_libraries(${name} PRIVATE tarvik_build)
endfunction()

function(tarvik_write_umbrella file)
  set(text "#pragma once\n")
  foreach(header ${ARGN})
    string(APPEND text "#include <${header}>\n")
  endforeach()
  file(CONFIGURE OUTPUT ${TARVIK_HEADERS_DIR}/${file} CONTENT "${text}" @ONLY)
endfunction()

# tarvik_umbrella(FILE ROOM...): one header that includes every public header of the rooms
function(tarvik_umbrella file)
  set(headers)
  if(file STREQUAL Tarvik/TarvikUI.h)
    set(headers Tarvik/Tarvik.h)
  endif()
  foreach(room ${ARGN})
    file(GLOB some RELATIVE ${PROJECT_SOURCE_DIR} CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${room}/*.h)
    list(TRANSFORM some PREPEND Tarvik/)
    list(APPEND headers ${some})
  endforeach()
  tarvik_write_umbrella(${file} ${headers})
endfunction()

# tarvik_platform_umbrella(FRAMEWORK): <FRAMEWORK/FRAMEWORK.h> from the framework's headers
function(tarvik_platform_umbrella framework)
  file(GLOB headers RELATIVE ${PROJECT_SOURCE_DIR}/platform/include CONFIGURE_DEPENDS
       ${PROJECT_SOURCE_DIR}/platform/include/${framework}/*.h)
  tarvik_write_umbrella(${framework}/${framework}.h ${headers})
endfunction()
