# CMake would take clang for Objective-C where it is installed; GNUstep on Debian is built for gcc's runtime.
foreach(pair "OBJC gcc" "OBJCXX g++")
  separate_arguments(pair)
  list(GET pair 0 language)
  list(GET pair 1 compiler)
  if(NOT DEFINED ENV{${language}} AND NOT DEFINED CMAKE_${language}_COMPILER)
    set(ENV{${language}} ${compiler})
  endif()
endforeach()
