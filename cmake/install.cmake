# Installing, uninstalling and packing.
#
#   cmake --install BUILD [--prefix DIR]      programs, man pages, documents, examples
#   cmake --build BUILD --target uninstall    removes what the last install put there, but folders such as bin
#   cpack --config BUILD/CPackConfig.cmake    a Debian package
#
# The documents keep the layout of the project (docs, examples, tools), so that their links and commands hold.
include(GNUInstallDirs)
set(KIVOM_DOCS ${CMAKE_INSTALL_DATAROOTDIR}/doc/kivom)

find_program(KIVOM_GZIP gzip DOC "Compresses the man pages")

# Installs a program with its man page. The page is made with the program: who has built that alone can install, too.
function(kivom_install program)
  set(page ${CMAKE_SOURCE_DIR}/docs/${program}.1)
  if(KIVOM_GZIP)
    set(packed ${CMAKE_BINARY_DIR}/${program}.1.gz)
    # -n leaves time and name out: the same text gives the same file.
    add_custom_command(OUTPUT ${packed} COMMAND gzip -9nc ${page} > ${packed} DEPENDS ${page} VERBATIM)
    add_custom_target(man_page_${program} ALL DEPENDS ${packed})
    add_dependencies(${program} man_page_${program})
    set(page ${packed})
  endif()
  install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  install(TARGETS ${program} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endfunction()

kivom_install(KIVOm)
if(TARGET kivodeck)
  kivom_install(kivodeck)
endif()
install(FILES ${CMAKE_SOURCE_DIR}/README.md ${CMAKE_SOURCE_DIR}/CHANGELOG.md
  DESTINATION ${KIVOM_DOCS})
install(FILES ${CMAKE_SOURCE_DIR}/tests/cases/README.md DESTINATION ${KIVOM_DOCS}/tests/cases)
install(FILES ${CMAKE_CURRENT_LIST_DIR}/copyright DESTINATION ${KIVOM_DOCS})
install(DIRECTORY ${CMAKE_SOURCE_DIR}/docs ${CMAKE_SOURCE_DIR}/examples DESTINATION ${KIVOM_DOCS}
  FILES_MATCHING PATTERN "*.md" PATTERN "*.1" PATTERN "*.png" PATTERN "*.inp" PATTERN "*.geo"
  PATTERN "make/*.py" PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE
  PATTERN "__pycache__" EXCLUDE)

configure_file(${CMAKE_CURRENT_LIST_DIR}/uninstall.cmake.in ${CMAKE_BINARY_DIR}/uninstall.cmake @ONLY)
add_custom_target(uninstall COMMAND ${CMAKE_COMMAND} -P ${CMAKE_BINARY_DIR}/uninstall.cmake)

# The Debian package --------------------------------------------------------------------------------------
set(KIVOM_PACKAGE_CONTACT "KIVOm maintainers <kivom@localhost>" CACHE STRING "Maintainer that the package names")
set(CPACK_GENERATOR DEB)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_PACKAGE_NAME kivom)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT ${KIVOM_PACKAGE_CONTACT})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "translator from Abaqus input decks to the KIVO solver's mesh file")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Reads nodes, triangles, tetrahedra, sets and surfaces of an Abaqus input
deck, turns elements that are listed the wrong way round, gives the elements
of \"C_\" groups nodes of their own, and writes the mesh file of the KIVO
solver. On request it writes the mesh as VTK files, too. A second program,
kivodeck, tells of a deck what the translator will not hold.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
    WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "python3, paraview")
if(KIVOM_STATIC)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS OFF) # it brings its libraries along
else()
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
endif()
include(CPack)
