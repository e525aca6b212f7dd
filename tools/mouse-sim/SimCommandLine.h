#pragma once

#include "SimMouse.h"

#include <QCommandLineOption>

class QCommandLineParser;

// The options every simulator program takes: the socket, a script, the receiver's numbers and
// whether it starts pulled out.
class SimCommandLine {
public:
    SimCommandLine();

    // Call first thing: with standard input closed, the next file opened (the display
    // connection) would take its number and be read as commands.
    static void guardStandardInput();

    void addTo(QCommandLineParser* parser) const;
    // false with the reason when the values do not make sense or the script cannot be read.
    bool read(const QCommandLineParser& parser, SimMouse::Options* options, QString* error) const;

private:
    QCommandLineOption mScript;
    QCommandLineOption mVid;
    QCommandLineOption mPid;
    QCommandLineOption mUnplugged;
};
