# The version text built into the program: the project's version, and "git describe" of the source
# tree when it is a git checkout. Configuring again after a commit refreshes it.
set(ENTPRCREQ_VERSION_TEXT "${PROJECT_VERSION}")
find_package(Git QUIET)
if(GIT_FOUND)
  execute_process(COMMAND ${GIT_EXECUTABLE} describe --always --dirty --tags
                  WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
                  OUTPUT_VARIABLE ENTPRCREQ_GIT_DESCRIBE OUTPUT_STRIP_TRAILING_WHITESPACE
                  RESULT_VARIABLE ENTPRCREQ_GIT_RESULT ERROR_QUIET)
  if(ENTPRCREQ_GIT_RESULT EQUAL 0 AND ENTPRCREQ_GIT_DESCRIBE)
    string(APPEND ENTPRCREQ_VERSION_TEXT " (${ENTPRCREQ_GIT_DESCRIBE})")
    execute_process(COMMAND ${GIT_EXECUTABLE} rev-parse --absolute-git-dir
                    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
                    OUTPUT_VARIABLE ENTPRCREQ_GIT_DIR OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
    if(EXISTS "${ENTPRCREQ_GIT_DIR}/logs/HEAD")
      set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${ENTPRCREQ_GIT_DIR}/logs/HEAD")
    endif()
  endif()
endif()
configure_file(${PROJECT_SOURCE_DIR}/cmake/version.cpp.in ${PROJECT_BINARY_DIR}/generated/version.cpp @ONLY)
