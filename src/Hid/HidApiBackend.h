#pragma once

#include "Hid/HidBackend.h"

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
