#include "Platform/InternetUtils.h"

#include "Utils/Logging.h"

#include <QHash>
#include <QSocketNotifier>

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

InternetUtils::InternetUtils()
{
    // Listen first, then look: a change between the two is not lost.
    mSocket = ::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE);
    sockaddr_nl address{};
    address.nl_family = AF_NETLINK;
    address.nl_groups = RTMGRP_LINK | RTMGRP_IPV4_IFADDR | RTMGRP_IPV6_IFADDR;
    if (mSocket >= 0 && ::bind(mSocket, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0) {
        mNotifier = new QSocketNotifier(mSocket, QSocketNotifier::Read, this);
        connect(mNotifier, &QSocketNotifier::activated, this, &InternetUtils::onRouteEvent);
    } else {
        qCWarning(lcSystem) << "no route notifications: the network state is read once";
        if (mSocket >= 0) {
            ::close(mSocket);
            mSocket = -1;
        }
    }
    mOnline = isOnline(currentInterfaces());
}

InternetUtils::InternetUtils(std::function<QList<Interface>()> interfaces)
    : mInterfaces(std::move(interfaces))
{
    mOnline = isOnline(mInterfaces());
}

InternetUtils::~InternetUtils()
{
    delete mNotifier;
    if (mSocket >= 0) {
        ::close(mSocket);
    }
}

void InternetUtils::onRouteEvent()
{
    // The messages only say that something changed; the state is read afresh.
    char buffer[8192];
    while (::recv(mSocket, buffer, sizeof(buffer), 0) > 0) {
    }
    refresh();
}

void InternetUtils::refresh()
{
    const bool online = isOnline(mInterfaces());
    if (online != mOnline) {
        mOnline = online;
        qCInfo(lcSystem) << (online ? "network up" : "network down");
        emit signalInternetStateChange(online);
    }
}

bool InternetUtils::isOnline(const QList<Interface>& interfaces)
{
    for (const Interface& i : interfaces) {
        if (i.up && i.running && !i.loopback && i.hasGlobalAddress) {
            return true;
        }
    }
    return false;
}

QList<InternetUtils::Interface> InternetUtils::currentInterfaces()
{
    QHash<QString, Interface> byName;
    ifaddrs* all = nullptr;
    if (::getifaddrs(&all) != 0) {
        return {};
    }
    for (ifaddrs* a = all; a != nullptr; a = a->ifa_next) {
        const QString name = QString::fromLocal8Bit(a->ifa_name);
        Interface& i = byName[name];
        i.name = name;
        i.up = i.up || (a->ifa_flags & IFF_UP) != 0;
        i.running = i.running || (a->ifa_flags & IFF_RUNNING) != 0;
        i.loopback = i.loopback || (a->ifa_flags & IFF_LOOPBACK) != 0;
        if (a->ifa_addr == nullptr) {
            continue;
        }
        if (a->ifa_addr->sa_family == AF_INET) {
            // 169.254/16 is what an interface gives itself when no network answered.
            const auto* in4 = reinterpret_cast<const sockaddr_in*>(a->ifa_addr);
            if ((ntohl(in4->sin_addr.s_addr) & 0xffff0000u) != 0xa9fe0000u) {
                i.hasGlobalAddress = true;
            }
        } else if (a->ifa_addr->sa_family == AF_INET6) {
            const auto* in6 = reinterpret_cast<const sockaddr_in6*>(a->ifa_addr);
            if (!IN6_IS_ADDR_LINKLOCAL(&in6->sin6_addr) && !IN6_IS_ADDR_LOOPBACK(&in6->sin6_addr)) {
                i.hasGlobalAddress = true;
            }
        }
    }
    ::freeifaddrs(all);
    return byName.values();
}
