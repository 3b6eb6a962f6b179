# Every page shows what is true: its decks and commands are run, its output is compared.
if(KIVOM_PYTHON)
  if(TARGET kivodeck)
    set(second --second $<TARGET_FILE:kivodeck>)
  endif()
  add_test(NAME docs.pages
    COMMAND ${KIVOM_PYTHON} ${CMAKE_CURRENT_LIST_DIR}/docs/run_docs.py --program $<TARGET_FILE:KIVOm> ${second}
            --renderer ${CMAKE_BINARY_DIR}/kivorender --docs ${CMAKE_SOURCE_DIR}/docs --source ${CMAKE_SOURCE_DIR}
            ${CMAKE_SOURCE_DIR}/examples/README.md ${CMAKE_SOURCE_DIR}/README.md)
  set_tests_properties(docs.pages PROPERTIES TIMEOUT 300)
  add_test(NAME docs.run_docs COMMAND ${KIVOM_PYTHON} -B ${CMAKE_CURRENT_LIST_DIR}/docs/test_run_docs.py)
  add_test(NAME docs.installed COMMAND ${KIVOM_PYTHON} -B ${CMAKE_CURRENT_LIST_DIR}/docs/installed.py
    ${PROJECT_SOURCE_DIR} ${PROJECT_BINARY_DIR} ${PROJECT_VERSION})
else()
  message(STATUS "No Python: the pages of the documents are not tested")
endif()
