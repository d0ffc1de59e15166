# The debugger's view of the library: the list of result codes is taken from the header, so that it
# stands once. gdb looks for the file beside the library, and for a library of the system itself
# (prefix /usr) in its own folder.
set(codes_header ${PROJECT_SOURCE_DIR}/include/portinglayer/result_codes.h)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${codes_header})
file(READ ${codes_header} codes_text)
string(REGEX MATCHALL "CODE\\(PERR_[A-Z_]+, -?[0-9]+" codes "${codes_text}")
set(PORTINGLAYER_GDB_CODES "")
foreach(code IN LISTS codes)
  string(REGEX REPLACE "CODE\\(([A-Z_]+), (.*)" "    \\2: \"\\1\",\n" code "${code}")
  string(APPEND PORTINGLAYER_GDB_CODES "${code}")
endforeach()
configure_file(${CMAKE_CURRENT_LIST_DIR}/gdb_printers.py.in
  ${PROJECT_BINARY_DIR}/gdb_printers.py @ONLY)

set(gdb_folder ${CMAKE_INSTALL_LIBDIR})
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  set(gdb_folder ${CMAKE_INSTALL_DATADIR}/gdb/auto-load${CMAKE_INSTALL_FULL_LIBDIR})
endif()
set(gdb_name libtalvl.portinglayer.so.${PROJECT_VERSION}-gdb.py)
get_target_property(kind portinglayer TYPE)
if(NOT kind STREQUAL SHARED_LIBRARY)  # within a program, gdb is told: source FILE
  set(gdb_folder ${CMAKE_INSTALL_DATADIR}/portinglayer)
  set(gdb_name gdb_printers.py)
endif()
install(FILES ${PROJECT_BINARY_DIR}/gdb_printers.py DESTINATION ${gdb_folder} RENAME ${gdb_name}
  COMPONENT development)
