#include "ServiceSet.h"

#include <QJsonArray>
#include <QtTest>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <thread>
#include <vector>

namespace {

// One HTTP/1.1 exchange on a fresh connection; the whole answer, or empty when refused.
std::string roundTrip(quint16 port, const std::string& request)
{
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    std::string answer;
    if (::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 &&
        ::send(fd, request.data(), request.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(request.size())) {
        char buffer[4096];
        for (ssize_t n; (n = ::recv(fd, buffer, sizeof buffer, 0)) > 0;) {
            answer.append(buffer, static_cast<size_t>(n));
        }
    }
    ::close(fd);
    return answer;
}

std::string upload(int client, int n)
{
    const std::string body = "{\"ip\":0,\"src\":\"c" + std::to_string(client) + "-" + std::to_string(n) +
                             "\",\"dst\":\"\",\"from\":\"zh\",\"to\":\"zh\",\"type\":0}";
    return "POST /BelmorZorvaneV2Mac/textrecord/upload HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n"
           "Content-Type: application/json\r\nContent-Length: " +
           std::to_string(body.size()) + "\r\n\r\n" + body;
}

}  // namespace

// The HTTP stand-ins answer on threads of their own while the test thread switches faults and
// reads the upload log, as a test driving the application does.
class TestStandInLoad : public QObject {
    Q_OBJECT

private slots:
    void concurrentClientsWhileFaultsChange();
};

void TestStandInLoad::concurrentClientsWhileFaultsChange()
{
    ServiceSet services;
    services.setAllPortsFree();
    QString error;
    QVERIFY2(services.start(&error), qPrintable(error));
    const quint16 backend = services.port(ServiceSet::Backend);
    const quint16 lookup = services.port(ServiceSet::IpLookup);

    constexpr int kClients = 4;
    constexpr int kRequests = 15;
    std::atomic<int> answered{0};
    std::atomic<int> failed{0};
    std::vector<std::thread> clients;
    for (int c = 0; c < kClients; ++c) {
        clients.emplace_back([&, c] {
            for (int n = 0; n < kRequests; ++n) {
                const std::string reply = roundTrip(backend, upload(c, n));
                (reply.find("200 OK") != std::string::npos ? answered : failed)++;
                roundTrip(lookup,
                          "GET /service/getIpInfo.php?ip=10.0.0.1 HTTP/1.1\r\nHost: x\r\nConnection: "
                          "close\r\n\r\n");
            }
        });
    }
    // Faults that slow or break the other service, switched while the clients run.
    Fault& fault = services.fault(ServiceSet::IpLookup);
    for (int reads = 0; answered + failed < kClients * kRequests; ++reads) {
        fault.apply(reads % 2 ? QStringLiteral("delay=5") : QStringLiteral("malformed"), &error);
        (void)services.uploads().entries(QStringLiteral("/textrecord/upload"));  // read while written
        fault.clear();
        QTest::qWait(1);
    }
    for (std::thread& t : clients) {
        t.join();
    }
    QCOMPARE(failed.load(), 0);
    // Every upload is in the log once.
    const QJsonArray log = services.uploads().entries(QStringLiteral("/textrecord/upload"));
    QCOMPARE(log.size(), kClients * kRequests);
    QSet<QString> seen;
    for (const QJsonValue& entry : log) {
        seen.insert(
            entry.toObject().value(QLatin1String("body")).toObject().value(QLatin1String("src")).toString());
    }
    QCOMPARE(seen.size(), kClients * kRequests);
    services.stop();
}

QTEST_GUILESS_MAIN(TestStandInLoad)
#include "tst_standinload.moc"
