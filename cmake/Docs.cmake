# The API reference (target "docs", when doxygen is found): HTML made from the
# comments of the library's public headers (those that declare what
# libvorn.so exports) and of the platform headers, into build/<preset>/docs.
# A first run over the public headers alone fails on any exported function or
# type without its comment; the reference run fails on any other warning.
find_package(Doxygen QUIET)
find_program(AWK awk)
if(NOT DOXYGEN_FOUND OR NOT AWK)
  message(STATUS "doxygen or awk not found: no docs target")
  return()
endif()

file(GLOB headers ${PROJECT_SOURCE_DIR}/Vorn/*.h)
set(public)
foreach(header IN LISTS headers)
  file(STRINGS ${header} exports REGEX "VORN_EXPORT" LIMIT_COUNT 1)
  if(exports)
    list(APPEND public ${header})
  endif()
endforeach()
list(JOIN public " " public)

set(VORN_DOCS_DIR ${CMAKE_BINARY_DIR}/docs)
set(VORN_DOCS_INPUT "${public} ${PROJECT_SOURCE_DIR}/platform ${PROJECT_SOURCE_DIR}/docs/mainpage.dox")
configure_file(${PROJECT_SOURCE_DIR}/docs/Doxyfile.in ${VORN_DOCS_DIR}/Doxyfile @ONLY)
file(WRITE ${VORN_DOCS_DIR}/Doxyfile-exports
  "@INCLUDE = ${VORN_DOCS_DIR}/Doxyfile\n"
  "INPUT = ${public}\n"
  "OUTPUT_DIRECTORY = ${VORN_DOCS_DIR}/exports\n"
  "WARN_IF_UNDOCUMENTED = YES\n"
  "GENERATE_HTML = NO\n"
  "GENERATE_XML = YES\n")
add_custom_target(docs
  COMMAND Doxygen::doxygen ${VORN_DOCS_DIR}/Doxyfile-exports
  COMMAND Doxygen::doxygen ${VORN_DOCS_DIR}/Doxyfile
  COMMAND ${CMAKE_COMMAND} -E echo "API reference: ${VORN_DOCS_DIR}/html/index.html"
  WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
  COMMENT "API reference (doxygen)"
  VERBATIM)
