# Installs the systemd unit with ExecStart pointing at the program where this installation put it
# (the prefix is known only at install time: 'cmake --install --prefix', or /usr in the package).
file(READ "${ENTPRCREQ_UNIT_SOURCE}" unit)
string(REPLACE "ExecStart=/usr/bin/entprcreq" "ExecStart=${CMAKE_INSTALL_PREFIX}/${ENTPRCREQ_BINDIR}/entprcreq"
       unit "${unit}")
file(WRITE "${ENTPRCREQ_UNIT_STAGING}/entprcreq.service" "${unit}")
file(INSTALL "${ENTPRCREQ_UNIT_STAGING}/entprcreq.service"
     DESTINATION "${CMAKE_INSTALL_PREFIX}/lib/systemd/system")
