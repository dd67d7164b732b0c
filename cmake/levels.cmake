# The same program for several levels of the processor: beside `program`, which is made for
# BRIVOK_CPU, a `program-<level>` for each of the list `levels`, which `program` continues as where
# the processor has that level (src/platform/processor_level.h).

# Each target keeps the level that it is compiled for.
define_property(TARGET PROPERTY BRIVOK_CPU INITIALIZE_FROM_VARIABLE BRIVOK_CPU)

# Makes the target `target`-<level>: the sources of `target`, what `target` has been told about them
# so far, and the libraries that it links, for the level as well.
function(brivok_copy_for_level target level)
  set(copy "${target}-${level}")
  if(TARGET "${copy}")
    return()
  endif()
  set(BRIVOK_CPU "${level}")
  get_target_property(folder ${target} SOURCE_DIR)
  get_target_property(sources ${target} SOURCES)
  list(TRANSFORM sources PREPEND "${folder}/" REGEX "^[^/]")
  get_target_property(type ${target} TYPE)
  if(type STREQUAL "EXECUTABLE")
    add_executable(${copy} ${sources})
  else()
    add_library(${copy} STATIC EXCLUDE_FROM_ALL ${sources})
  endif()

  foreach(property COMPILE_DEFINITIONS COMPILE_OPTIONS LINK_OPTIONS
      LINK_LIBRARIES INTERFACE_LINK_LIBRARIES)
    get_target_property(values ${target} ${property})
    if(NOT values)
      continue()
    endif()
    foreach(value IN LISTS values)
      if(property MATCHES "LIBRARIES" AND value MATCHES "^brivok_" AND NOT value STREQUAL brivok_flags)
        brivok_copy_for_level(${value} ${level})
        string(APPEND value "-${level}")
      endif()
      set_property(TARGET ${copy} APPEND PROPERTY ${property} "${value}")
    endforeach()
  endforeach()
endfunction()

# Makes the program for all `levels`. Whoever builds it builds these, so that none is out of date.
function(brivok_program_for_levels program)
  foreach(level IN LISTS levels)
    brivok_copy_for_level(${program} ${level})
    add_dependencies(${program} "${program}-${level}")
  endforeach()
endfunction()
