# Delay-loading the system DLLs that are not KnownDLLs (gdiplus, comctl32, dwmapi, uxtheme).
#
# The loader looks for a DLL that a program imports beside the program first. The launcher lives
# in a game's folder, which users can often write to, so it imports none of these: they are
# loaded at the first call of one of their functions, after the launcher's entry has narrowed the
# DLL search to System32. The code calls the ordinary API all the same.
#
#   korvane_link_delay_loadable(<library> <dll>...)
#     <library> calls functions of each <dll> (named without ".dll"). A program linking it imports
#     the DLL the ordinary way, unless the program delay-loads it.
#   korvane_delay_load(<program> <dll>...)
#     <program> delay-loads each <dll> that its libraries call.
#
# MinGW: the delay import library is made by dlltool from cmake/delayload/<dll>.def, which lists
# exactly the functions the product calls, and the ordinary import library is left out: a function
# missing from the .def fails the link instead of bringing the ordinary import back. MSVC: the
# system's import library with /DELAYLOAD and delayimp.lib.
set(KORVANE_DELAYLOAD_DEFINITIONS ${CMAKE_CURRENT_LIST_DIR}/delayload)

function(korvane_link_delay_loadable library)
  foreach(dll IN LISTS ARGN)
    if(MSVC)
      target_link_libraries(${library} PUBLIC ${dll})
      continue()
    endif()
    if(NOT TARGET korvane_delay_${dll})
      set(definition ${KORVANE_DELAYLOAD_DEFINITIONS}/${dll}.def)
      if(NOT EXISTS ${definition})
        message(FATAL_ERROR "${definition} is missing: list in it the ${dll}.dll functions the product calls")
      endif()
      set(folder ${CMAKE_BINARY_DIR}/delayload)
      set(archive ${folder}/lib${dll}_delay.a)
      file(MAKE_DIRECTORY ${folder})
      # dlltool names its symbols after the archive path it is given: a bare name keeps the
      # build folder out of them.
      add_custom_command(OUTPUT ${archive}
        COMMAND ${CMAKE_DLLTOOL} --input-def ${definition} --dllname ${dll}.dll --output-delaylib lib${dll}_delay.a
        WORKING_DIRECTORY ${folder}
        DEPENDS ${definition}
        COMMENT "Making the delay-load library of ${dll}.dll"
        VERBATIM)
      add_custom_target(korvane_delay_${dll}_archive DEPENDS ${archive})
      add_library(korvane_delay_${dll} STATIC IMPORTED GLOBAL)
      set_target_properties(korvane_delay_${dll} PROPERTIES IMPORTED_LOCATION ${archive})
    endif()
    # Evaluated for the program being linked, so the delay library stands where the ordinary one
    # would, after the library that calls it.
    target_link_libraries(${library} PUBLIC
      "$<IF:$<IN_LIST:${dll},$<TARGET_PROPERTY:KORVANE_DELAY_LOAD>>,korvane_delay_${dll},${dll}>")
  endforeach()
endfunction()

function(korvane_delay_load program)
  set_property(TARGET ${program} APPEND PROPERTY KORVANE_DELAY_LOAD ${ARGN})
  foreach(dll IN LISTS ARGN)
    if(MSVC)
      target_link_options(${program} PRIVATE /DELAYLOAD:${dll}.dll)
      target_link_libraries(${program} PRIVATE delayimp)
    else()
      add_dependencies(${program} korvane_delay_${dll}_archive)
    endif()
  endforeach()
endfunction()
