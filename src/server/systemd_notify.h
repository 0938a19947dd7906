// Telling systemd about the service's state (a unit with Type=notify): one datagram to the unix
// socket named by $NOTIFY_SOCKET, such as "READY=1\nSTATUS=serving on ...". Without that variable
// (not started by systemd) nothing is sent.
#pragma once

#include <string>

namespace ent {

// Sends `state`. Returns false when there is no socket to send to or the send failed; a service
// goes on either way.
bool NotifySystemd(const std::string& state);

}  // namespace ent
