# What 'cmake --install' puts in place, and the Debian package built from it (scripts/package):
# the program and the one that runs its HTTP servers, the systemd unit and its user, the manual page and the bash completion.
include(GNUInstallDirs)

# The manual page, from the program's help texts.
add_custom_command(
  OUTPUT ${PROJECT_BINARY_DIR}/entprcreq.1
  COMMAND ${CMAKE_COMMAND} -DPROGRAM=$<TARGET_FILE:entprcreq> "-DVERSION=${PROJECT_VERSION}"
          -DOUT=${PROJECT_BINARY_DIR}/entprcreq.1 -P ${PROJECT_SOURCE_DIR}/cmake/manpage.cmake
  DEPENDS entprcreq ${PROJECT_SOURCE_DIR}/cmake/manpage.cmake
  COMMENT "Writing the manual page from the help texts")
add_custom_target(entprcreq_manpage ALL DEPENDS ${PROJECT_BINARY_DIR}/entprcreq.1)

install(TARGETS entprcreq RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
# Run by `entprcreq serve` and `entprcreq headoffice` (cli/main.cpp looks for it there).
install(TARGETS entprcreq-http RUNTIME DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/entprcreq)
install(FILES ${PROJECT_BINARY_DIR}/entprcreq.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${PROJECT_SOURCE_DIR}/packaging/entprcreq.bash-completion
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME entprcreq)
install(FILES ${PROJECT_SOURCE_DIR}/packaging/entprcreq.sysusers
        DESTINATION lib/sysusers.d RENAME entprcreq.conf)
install(CODE "set(ENTPRCREQ_UNIT_SOURCE \"${PROJECT_SOURCE_DIR}/packaging/entprcreq.service\")
              set(ENTPRCREQ_UNIT_STAGING \"${PROJECT_BINARY_DIR}\")
              set(ENTPRCREQ_BINDIR \"${CMAKE_INSTALL_BINDIR}\")")
install(SCRIPT ${PROJECT_SOURCE_DIR}/cmake/install_unit.cmake)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME entprcreq)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "entprcreq maintainers <entprcreq@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Report-request server for a repair shop's management database")
set(CPACK_DEBIAN_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "libsqliteodbc, tdsodbc")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/postinst)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
include(CPack)
