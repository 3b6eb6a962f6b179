# The rooms, each with a test program of its own. Most link a system whose files live in memory and whose services
# fail on demand.
foreach(room allocate scan names sort lookup store rows line exchange order find handover sections reader maps translate output vtk
        fakesystem)
  kivom_test(${room}_test LINK kivom_fakesystem)
endforeach()

foreach(room cards model generators assemble)
  kivom_test(deck_${room}_test LINK kivom_deck kivom_fakesystem)
endforeach()

kivom_test(flatten_split_test LINK kivom_flatten)

kivom_test(frame_test)

# Random decks through the program and the plain translation; by hand: random_decks_test --count 20000 --seed 1000.
add_executable(random_decks_test random_decks_test.cpp)
target_link_libraries(random_decks_test PRIVATE kivom_fakesystem)
add_test(NAME random_decks COMMAND random_decks_test)

# Random doubles as number fields; by hand: random_fields_test --count 100000000 --seed 2.
add_executable(random_fields_test random_fields_test.cpp)
target_link_libraries(random_fields_test PRIVATE kivom_core kivom_fakesystem)
add_test(NAME random_fields COMMAND random_fields_test)

kivom_test(layers_test LINK kivom_core)
target_compile_definitions(layers_test PRIVATE KIVOM_SOURCES="${PROJECT_SOURCE_DIR}")

kivom_test(driver_test LINK kivom_core kivom_fakesystem)
target_compile_definitions(driver_test PRIVATE KIVOM_PROGRAM="$<TARGET_FILE:KIVOm>")
add_dependencies(driver_test KIVOm)

# The reader of the mesh file, over what the program wrote in the whole-run cases.
kivom_test(meshfile_test LINK kivom_meshfile kivom_system)
target_sources(meshfile_test PRIVATE support/printmesh.cpp)
target_compile_definitions(meshfile_test PRIVATE KIVOM_CASES="${CMAKE_CURRENT_SOURCE_DIR}/cases")

# What judges the mesh file.
kivom_test(audit_test LINK kivom_audit kivom_fakesystem)
target_compile_definitions(audit_test PRIVATE KIVOM_CASES="${CMAKE_CURRENT_SOURCE_DIR}/cases"
  KIVOM_EXAMPLES="${PROJECT_SOURCE_DIR}/examples")

kivom_test(account_findings_test LINK kivom_account kivom_deck kivom_core kivom_system)
target_compile_definitions(account_findings_test PRIVATE
  KIVOM_PROGRAM="$<TARGET_FILE:KIVOm>" KIVOM_FINDINGS="${CMAKE_CURRENT_SOURCE_DIR}/findings")
add_dependencies(account_findings_test KIVOm)

kivom_test(account_decks_test LINK kivom_account kivom_deck kivom_core kivom_system)
target_compile_definitions(account_decks_test PRIVATE KIVOM_FINDINGS="${CMAKE_CURRENT_SOURCE_DIR}/findings")

# The second program, where it is built.
if(TARGET kivodeck)
  # Random decks; by hand: check_random_test --count 20000 --seed 1000.
  add_executable(check_random_test check_random_test.cpp ../kivodeck/report.cpp)
  target_link_libraries(check_random_test PRIVATE kivom_account kivom_fakesystem nlohmann_json::nlohmann_json)
  add_test(NAME check_random COMMAND check_random_test)
  add_executable(flatten_random_test flatten_random_test.cpp ../kivodeck/flat.cpp ../kivodeck/report.cpp)
  target_link_libraries(flatten_random_test PRIVATE kivom_account kivom_flatten kivom_fakesystem nlohmann_json::nlohmann_json)
  add_test(NAME flatten_random COMMAND flatten_random_test)
  kivom_test(flatten_decks_test LINK kivom_account kivom_flatten kivom_fakesystem)
  target_sources(flatten_decks_test PRIVATE ../kivodeck/flat.cpp)
  kivom_test(kivodeck_test LINK nlohmann_json::nlohmann_json)
  target_sources(kivodeck_test PRIVATE ../kivodeck/terminal.cpp)
  target_compile_definitions(kivodeck_test PRIVATE KIVODECK_PROGRAM="$<TARGET_FILE:kivodeck>"
    KIVOM_FINDINGS="${CMAKE_CURRENT_SOURCE_DIR}/findings" KIVODECK_VERSION="${PROJECT_VERSION}")
  add_dependencies(kivodeck_test kivodeck)
  kivom_test(kivodeck_files_test SLOW LINK nlohmann_json::nlohmann_json)
  target_compile_definitions(kivodeck_files_test PRIVATE KIVODECK_PROGRAM="$<TARGET_FILE:kivodeck>"
    KIVODECK_SANITIZED=$<BOOL:${KIVOM_SANITIZE}>)
  add_dependencies(kivodeck_files_test kivodeck)
  kivom_test(kivodeck_audit_test LINK nlohmann_json::nlohmann_json)
  set(memory 2000000) # kilobytes
  if(KIVOM_SANITIZE)
    set(memory unlimited) # sanitizers set much more apart than they use
  endif()
  target_compile_definitions(kivodeck_audit_test PRIVATE KIVODECK_PROGRAM="$<TARGET_FILE:kivodeck>" KIVOM_MEMORY="${memory}")
  add_dependencies(kivodeck_audit_test kivodeck)
  add_test(NAME docs.findings
    COMMAND ${KIVOM_PYTHON} ${CMAKE_SOURCE_DIR}/tools/make-findings-pages --check $<TARGET_FILE:kivodeck>)
endif()

# The measures of shape, beside the VTK library's.
add_executable(qualityvalues vtk/qualityvalues.cpp)
target_link_libraries(qualityvalues PRIVATE kivom_audit)
