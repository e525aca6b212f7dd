#pragma once

#include <QString>

#include <atomic>

// What one stand-in service does wrong on purpose. Read by the threads that answer, set by
// the command line or a test at any time.
struct Fault {
    std::atomic<int> delayMs{0};              // every answer waits this long
    std::atomic<bool> refuse{false};          // the port does not listen
    std::atomic<bool> closeMidStream{false};  // the connection ends halfway through an answer
    std::atomic<int> errorCode{0};            // the service's own error form with this code; 0: none
    std::atomic<int> httpStatus{0};           // HTTP services: this status and an empty body; 0: none
    std::atomic<bool> malformed{false};       // answers that do not parse

    // One switch: "delay=MS", "refuse", "close", "error=CODE", "status=CODE", "malformed" or
    // "off" (all cleared). False with a reason for anything else.
    bool apply(const QString& text, QString* error);
    void clear();
    QString describe() const;
};
