# The installed package: Fringix::DAXFringix, which talks to heads, and Fringix::scan, from pictures to points.
include(${CMAKE_CURRENT_LIST_DIR}/FringixTargets.cmake)

# The exported targets name the import libraries of MinGW; Microsoft's linker has its own, in the same folder.
if(MSVC)
  foreach(library DAXFringix fringix-scan)
    string(REPLACE "fringix-" "" name ${library})
    set_target_properties(Fringix::${name} PROPERTIES IMPORTED_IMPLIB ${CMAKE_CURRENT_LIST_DIR}/../../${library}.lib
      IMPORTED_IMPLIB_RELWITHDEBINFO ${CMAKE_CURRENT_LIST_DIR}/../../${library}.lib)
  endforeach()
endif()

set(Fringix_DAXFringix_FOUND TRUE)
set(Fringix_scan_FOUND TRUE)
foreach(component ${Fringix_FIND_COMPONENTS})
  if(Fringix_FIND_REQUIRED_${component} AND NOT Fringix_${component}_FOUND)
    set(Fringix_FOUND FALSE)
    set(Fringix_NOT_FOUND_MESSAGE "Fringix has no component ${component}, but DAXFringix and scan")
  endif()
endforeach()
