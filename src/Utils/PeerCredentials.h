#pragma once

#include <QtGlobal>

// Who is at the other end of a connected Unix socket, as the kernel tells it (SO_PEERCRED):
// the local sockets of the program talk only to processes of the same user.
namespace PeerCredentials {

// The peer's user id, or -1 when the descriptor is no connected Unix socket.
qint64 peerUid(qintptr descriptor);

// The peer runs as this process's (effective) user; a peer that cannot be told is not.
bool isSameUser(qintptr descriptor);

}  // namespace PeerCredentials
