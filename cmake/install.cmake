# Installing, uninstalling and packing.
#
#   cmake --install BUILD [--prefix DIR]      programs, man pages, completions, documents, examples
#   cmake --build BUILD --target uninstall    removes what the last install put there, but folders such as bin
#   cpack --config BUILD/CPackConfig.cmake    a Debian package, BUILD/kivom_*.deb
#
# The documents keep the layout of the project (docs, examples), so that their links and commands hold.
include(GNUInstallDirs)
set(KIVOM_DOCS ${CMAKE_INSTALL_DATAROOTDIR}/doc/kivom)
set(KIVOM_EXECUTE OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

find_program(KIVOM_GZIP gzip DOC "Compresses the man pages")

# Packs what a command prints. -n leaves time and name out: the same text gives the same file.
function(kivom_pack packed depends)
  add_custom_command(OUTPUT ${packed} DEPENDS ${depends} VERBATIM
    COMMAND ${ARGN} > ${packed}.text
    COMMAND ${KIVOM_GZIP} -9nc ${packed}.text > ${packed}
    COMMAND ${CMAKE_COMMAND} -E rm ${packed}.text)
endfunction()

# Installs a command's man page and completions. The page is made with the program's target where there is one: who has
# built that alone can install, too.
function(kivom_install command)
  set(page ${CMAKE_SOURCE_DIR}/docs/${command}.1)
  if(KIVOM_GZIP)
    set(packed ${CMAKE_BINARY_DIR}/${command}.1.gz)
    kivom_pack(${packed} ${page} cat ${page})
    add_custom_target(man_page_${command} ALL DEPENDS ${packed})
    if(TARGET ${command})
      add_dependencies(${command} man_page_${command})
    endif()
    set(page ${packed})
  endif()
  install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  set(completions ${CMAKE_SOURCE_DIR}/completions)
  install(FILES ${completions}/${command}.bash DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/bash-completion/completions
    RENAME ${command})
  install(FILES ${completions}/${command}.fish DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/fish/vendor_completions.d)
  # KIVOM_ZSH: known when it is installed.
  install(FILES ${completions}/_${command} DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/zsh/\${KIVOM_ZSH}")
endfunction()

# Zsh looks for what packages bring in another folder than for what an administrator installs.
install(CODE "
  set(KIVOM_ZSH site-functions)
  if(CMAKE_INSTALL_PREFIX MATCHES \"/usr/?$\")
    set(KIVOM_ZSH vendor-completions)
  endif()")

kivom_install(KIVOm)
install(TARGETS KIVOm RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
if(TARGET kivodeck)
  kivom_install(kivodeck)
  install(TARGETS kivodeck RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
kivom_install(kivorender) # view/ installs the command itself

# The documents -------------------------------------------------------------------------------------------
# The README as it is installed: without the lines between "<!-- source only -->" and "<!-- end of source only -->",
# and with the text of the comments that begin with "<!-- installed only".
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/README.md)
file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/installed)
execute_process(COMMAND sed -e [[/^<!-- source only -->$/,/^<!-- end of source only -->$/d]]
    -e [[/^<!-- installed only$/,/^-->$/{ /^<!-- installed only$/d; /^-->$/d; }]] ${CMAKE_SOURCE_DIR}/README.md
  OUTPUT_FILE ${CMAKE_BINARY_DIR}/installed/README.md COMMAND_ERROR_IS_FATAL ANY)
install(FILES ${CMAKE_BINARY_DIR}/installed/README.md ${CMAKE_SOURCE_DIR}/CHANGELOG.md ${CMAKE_CURRENT_LIST_DIR}/copyright
  DESTINATION ${KIVOM_DOCS} COMPONENT documents)
install(DIRECTORY ${CMAKE_SOURCE_DIR}/docs ${CMAKE_SOURCE_DIR}/examples DESTINATION ${KIVOM_DOCS} COMPONENT documents
  FILES_MATCHING PATTERN "*.md" PATTERN "*.png" PATTERN "*.inp" PATTERN "*.geo"
  PATTERN "make/*.py" PERMISSIONS ${KIVOM_EXECUTE}
  PATTERN "__pycache__" EXCLUDE
  PATTERN "how-it-works.md" EXCLUDE) # for those who have the source

# What the last install put in place, DESTDIR included. CMake's own list will not do: cpack replaces it by the list of
# what it puts into its folder of packages in the making.
set(KIVOM_INSTALLED ${CMAKE_BINARY_DIR}/installed.txt)
install(CODE "
  set(root \"\$ENV{DESTDIR}\")
  if(root)
    get_filename_component(root \"\${root}\" ABSOLUTE)
  endif()
  if(NOT \"\${root}\${CMAKE_INSTALL_PREFIX}/\" MATCHES \"/_CPack_Packages/\")
    list(TRANSFORM CMAKE_INSTALL_MANIFEST_FILES PREPEND \"\${root}\" OUTPUT_VARIABLE installed)
    list(JOIN installed \"\\n\" installed)
    file(WRITE \"${KIVOM_INSTALLED}\" \"\${installed}\\n\")
  endif()" ALL_COMPONENTS)
configure_file(${CMAKE_CURRENT_LIST_DIR}/uninstall.cmake.in ${CMAKE_BINARY_DIR}/uninstall.cmake @ONLY)
add_custom_target(uninstall COMMAND ${CMAKE_COMMAND} -P ${CMAKE_BINARY_DIR}/uninstall.cmake)

# The Debian package --------------------------------------------------------------------------------------
# Nobody reads mail at this address: who gives a package to others names themselves.
set(KIVOM_PACKAGE_CONTACT "KIVOm maintainers <kivom@example.org>" CACHE STRING "Maintainer that the package names")
set(CPACK_GENERATOR DEB)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}) # wherever cpack is started
set(CPACK_PACKAGE_NAME kivom)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT ${KIVOM_PACKAGE_CONTACT})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "translator from Abaqus input decks to the KIVO solver's mesh file")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"KIVOm translates nodes, triangles, tetrahedra, sets and surfaces of an Abaqus
input deck into the mesh file of the KIVO solver. It corrects the orientation
of elements, gives the elements of groups whose names start with \"C_\" nodes
of their own, and can also write the mesh as VTK files.
.
kivodeck reports what the translator would lose, rewrites a deck as a plain
one that is translated completely, and checks the mesh.
.
kivorender draws the mesh as a PNG picture. It needs python3-vtk9,
python3-numpy and, where there is no screen, xvfb and xauth.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS ${KIVOM_EXECUTE})
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# With Python kivorender can say what else it needs. The rest is for pictures only, and python3-vtk9 brings half a
# gigabyte along.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS python3)
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "python3-vtk9, python3-numpy, xvfb, xauth, paraview")
if(KIVOM_STATIC)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS OFF) # it brings its libraries along
else()
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
endif()
# The list of changes in the form that Debian's tools read: in the package alone.
if(KIVOM_GZIP)
  set(changes ${CMAKE_BINARY_DIR}/debian/changelog.gz)
  set(made_of ${CMAKE_CURRENT_LIST_DIR}/debian-changelog ${CMAKE_SOURCE_DIR}/CHANGELOG.md)
  file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/debian)
  kivom_pack(${changes} "${made_of}" ${made_of} ${KIVOM_PACKAGE_CONTACT})
  add_custom_target(debian_changelog ALL DEPENDS ${changes})
  set(CPACK_INSTALLED_DIRECTORIES ${CMAKE_BINARY_DIR}/debian ${CPACK_PACKAGING_INSTALL_PREFIX}/${KIVOM_DOCS})
endif()
include(CPack)
