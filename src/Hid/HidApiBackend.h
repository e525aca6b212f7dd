#pragma once

#include "Hid/HidBackend.h"

#include <functional>

// How a handle waits for a report: on watch (a second reader of the same node) and on wakeup,
// then takes it through take (hidapi's read, never waiting). Apart from hidapi for the tests.
struct HidReportWait {
    using Take = std::function<int(unsigned char* buffer, int length)>;

    int watch = -1;
    int wakeup = -1;
    // hidapi may be reports ahead of the watch (one came between the two opens): after a report
    // it is asked again before the wait, so that none waits for the next to come.
    bool mayHoldMore = false;

    int read(const Take& take, unsigned char* buffer, int length, int milliseconds);
};

// The real USB path: hidapi over hidraw. Beside hidapi's descriptor each handle keeps a second
// one on the same node, only to wait on: hidraw hands every report to each reader, so the read
// loop can wait for a report (or for wake()) with no time limit and then take it from hidapi.
class HidApiBackend : public HidBackend {
public:
    ~HidApiBackend() override;

    bool init() override;
    QList<Interface> enumerate() override;
    Handle openPath(const QString& path) override;
    int readTimeout(Handle handle, unsigned char* buffer, int length, int milliseconds) override;
    int write(Handle handle, const unsigned char* data, int length) override;
    void close(Handle handle) override;
    QString error(Handle handle) override;
    QString deviceFolder() const override;
    bool canWake(Handle handle) override;
    void wake(Handle handle) override;
};
