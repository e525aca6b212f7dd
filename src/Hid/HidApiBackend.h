#pragma once

#include "Hid/HidBackend.h"

// The real USB path: hidapi over hidraw.
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
};
