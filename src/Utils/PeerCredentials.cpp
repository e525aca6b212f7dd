#include "Utils/PeerCredentials.h"

#include <sys/socket.h>
#include <unistd.h>

namespace PeerCredentials {

qint64 peerUid(qintptr descriptor)
{
    ucred credentials{};
    socklen_t length = sizeof(credentials);
    if (descriptor < 0 ||
        ::getsockopt(static_cast<int>(descriptor), SOL_SOCKET, SO_PEERCRED, &credentials, &length) != 0 ||
        length != sizeof(credentials)) {
        return -1;
    }
    return static_cast<qint64>(credentials.uid);
}

bool isSameUser(qintptr descriptor)
{
    return peerUid(descriptor) == static_cast<qint64>(::geteuid());
}

}  // namespace PeerCredentials
